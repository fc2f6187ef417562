#include "quoddle/text/internal/SegmentCounting.h"

#include <unicode/rbbi.h>
#include <unicode/uchar.h>
#include <unicode/uniset.h>
#include <unicode/utf16.h>

#include <array>

#include "quoddle/base/Precondition.h"
#include "quoddle/strings/TextBoundaries.h"

namespace quod::Text::internal {

IcuSegmentCount::IcuSegmentCount(const icu::Locale& locale)
    : characters_(newCharacterBreakIterator()), words_(newWordBreakIterator(locale)) {}

IcuSegmentCount::~IcuSegmentCount() { utext_close(&utext_); }

SelectionCount IcuSegmentCount::count(std::u16string_view text) {
    // ICU iterators count in int32_t; a longer text is a caller's mistake.
    QUOD_PRECONDITION(text.size() <= static_cast<std::size_t>(INT32_MAX), "text too long for ICU");
    UErrorCode status = U_ZERO_ERROR;
    utext_openUChars(&utext_, text.data(), static_cast<int64_t>(text.size()), &status);
    characters_->setText(&utext_, status);
    words_->setText(&utext_, status);
    QUOD_PRECONDITION(U_SUCCESS(status), "ICU break iterator unusable");
    SelectionCount count;
    characters_->first();
    while (characters_->next() != icu::BreakIterator::DONE)
        ++count.characters;
    int32_t start = words_->first();
    for (int32_t end = words_->next(); end != icu::BreakIterator::DONE;
         start = end, end = words_->next()) {
        if (holdsLetterOrDigit(text.substr(start, end - start))) ++count.words;
    }
    return count;
}

namespace {

// What the scan knows of a unit. A letter (ALetter) that is not a letter or digit to
// u_isalnum, such as ICU's "@", joins words without making one.
enum Class : uint8_t {
    letter,
    joiningSymbol,  // ALetter, not alphanumeric
    digit,
    connector,      // ExtendNumLet: "_"
    midLetter,      // joins letter to letter: ":" where the locale says so
    midNumLetter,   // joins letter to letter and digit to digit: "." and "'"
    midNumber,      // joins digit to digit: "," and ";"
    space,          // WSegSpace: runs of them are one segment
    carriageReturn,
    lineFeed,
    other,          // a segment of its own: punctuation, symbols, line separators
    unknown,        // for ICU to decide
};

// The scan's state after a unit: the last unit's role and whether the segment it ends holds a
// letter or digit (and so was counted). A mid-word punctuation mark after a letter or digit
// waits for the next unit to say whether it joins.
enum State : uint8_t {
    between,         // after a unit that stands alone: the next one starts a segment
    inSpaces,
    afterCr,
    afterCrLf,
    inWord,          // after a letter, the segment holds a letter or digit
    inSymbols,       // after a letter, the segment holds none (only "@")
    inNumber,
    connectedWord,   // after "_", the segment holds a letter or digit
    connectedNone,   // after "_", it holds none
    midAfterWord,    // a mid-letter mark after a letter; the segment holds a letter or digit
    midAfterSymbol,  // a mid-letter mark after "@" and no letter or digit
    midAfterNumber,  // a mid-number mark after a digit
    stateCount
};

constexpr bool holdsWord(uint8_t state) {
    return state == inWord || state == inNumber || state == connectedWord ||
           state == midAfterWord || state == midAfterNumber;
}

// A step: the next state in the low four bits, then "a word starts", "a line feed joins the
// carriage return before it" and "a segment starts at this unit".
constexpr uint8_t wordStarts = 16, joinsCr = 32, segmentStarts = 64;

constexpr uint8_t step(uint8_t state, uint8_t unitClass) {
    const bool wordlike = state == inWord || state == inSymbols || state == inNumber ||
                          state == connectedWord || state == connectedNone;
    const bool holds = holdsWord(state);
    const auto starting = [](uint8_t next) { return static_cast<uint8_t>(next | segmentStarts); };
    switch (unitClass) {
    case letter:
        if (wordlike || state == midAfterWord || state == midAfterSymbol)
            return holds ? uint8_t{inWord} : uint8_t{inWord | wordStarts};
        return starting(inWord | wordStarts);
    case joiningSymbol:
        if (wordlike || state == midAfterWord || state == midAfterSymbol)
            return holds ? inWord : inSymbols;
        return starting(inSymbols);
    case digit:
        if (wordlike || state == midAfterNumber)
            return holds ? uint8_t{inNumber} : uint8_t{inNumber | wordStarts};
        return starting(inNumber | wordStarts);
    case connector:
        if (wordlike) return holds ? connectedWord : connectedNone;
        return starting(connectedNone);
    case midLetter:
    case midNumLetter:
    case midNumber:
        // Pending: whether the mark joins is known at the next unit.
        if ((state == inWord || state == inSymbols) && unitClass != midNumber)
            return state == inWord ? midAfterWord : midAfterSymbol;
        if (state == inNumber && unitClass != midLetter) return midAfterNumber;
        return starting(between);
    case space:
        return state == inSpaces ? uint8_t{inSpaces} : starting(inSpaces);
    case carriageReturn:
        return starting(afterCr);
    case lineFeed:
        return state == afterCr ? afterCrLf | joinsCr : starting(between);
    default:
        return starting(between);
    }
}

constexpr std::array<uint8_t, stateCount * 16> steps = [] {
    std::array<uint8_t, stateCount * 16> table{};
    for (uint8_t state = 0; state < stateCount; ++state) {
        for (uint8_t unitClass = 0; unitClass < unknown; ++unitClass)
            table[state * 16 + unitClass] = step(state, unitClass);
    }
    return table;
}();

// Ideographs, kana and Hangul syllables come after; none of them is scanned.
constexpr char16_t scanLimit = 0x3000;

// The three sets of word rules in ICU 72's data: the root's, which every locale but the two
// below uses; Finnish and Swedish, where ":" joins letters ("S:t"); and en_US_POSIX, where "."
// joins only digits. Identified by an FNV-1a hash of the rules' source text.
enum class WordRules { root, colonJoinsLetters, posix };
constexpr uint64_t rootWordRules = 0x89bbc8b2b543729aULL;
constexpr uint64_t colonWordRules = 0x6d10a9a184d7b96cULL;
constexpr uint64_t posixWordRules = 0x98c6926da824d5adULL;
constexpr uint64_t characterRules = 0x60b5900baecb4506ULL;

}  // namespace

struct ScanClasses {
    std::array<uint8_t, scanLimit> of{};
};

namespace {

uint64_t rulesHash(const icu::BreakIterator& iterator) {
    const auto* rules = dynamic_cast<const icu::RuleBasedBreakIterator*>(&iterator);
    if (rules == nullptr) return 0;
    const icu::UnicodeString& text = rules->getRules();
    uint64_t hash = 14695981039346656037ULL;
    for (int32_t i = 0; i < text.length(); ++i) {
        hash ^= text.charAt(i);
        hash *= 1099511628211ULL;
    }
    return hash;
}

// From the Unicode properties the rules are written in, with the rules' own changes to them.
// A code point is scanned only when it is a cluster of its own on both sides unless a neighbour
// is not scanned (grapheme break Other, Control, CR or LF) and its word class is one the scan
// knows; the classes the rules treat apart (dictionary scripts, Hebrew letters, kana,
// ideographs) go to ICU.
ScanClasses buildClasses(WordRules rules) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeSet apart(
        u"[[:LineBreak=Complex_Context:][:Han:][:Hiragana:][:Ideographic:]"
        u"[\\p{Word_Break=Katakana}][\\p{Word_Break=Hebrew_Letter}][\\uac00-\\ud7a3]]",
        status);
    QUOD_PRECONDITION(U_SUCCESS(status), "ICU property data missing");
    ScanClasses classes;
    for (UChar32 c = 0; c < scanLimit; ++c) {
        uint8_t unitClass = unknown;
        const auto cluster = u_getIntPropertyValue(c, UCHAR_GRAPHEME_CLUSTER_BREAK);
        const bool single = cluster == U_GCB_OTHER || cluster == U_GCB_CONTROL ||
                            cluster == U_GCB_CR || cluster == U_GCB_LF;
        if (!U16_IS_SURROGATE(c) && single && !apart.contains(c)) {
            const bool alphanumeric = u_isalnum(c);
            switch (u_getIntPropertyValue(c, UCHAR_WORD_BREAK)) {
            case U_WB_ALETTER: unitClass = alphanumeric ? letter : joiningSymbol; break;
            case U_WB_NUMERIC: unitClass = alphanumeric ? digit : unknown; break;
            case U_WB_EXTENDNUMLET: unitClass = connector; break;
            case U_WB_MIDLETTER: unitClass = midLetter; break;
            case U_WB_MIDNUMLET:
            case U_WB_SINGLE_QUOTE: unitClass = midNumLetter; break;
            case U_WB_MIDNUM: unitClass = midNumber; break;
            case U_WB_WSEGSPACE: unitClass = space; break;
            case U_WB_CR: unitClass = carriageReturn; break;
            case U_WB_LF: unitClass = lineFeed; break;
            case U_WB_NEWLINE:
            case U_WB_OTHER:
            case U_WB_DOUBLE_QUOTE: unitClass = other; break;
            default: break;
            }
            // A word of one unit that the classes above would not count: leave it to ICU.
            if (alphanumeric && unitClass != letter && unitClass != digit) unitClass = unknown;
        }
        classes.of[c] = unitClass;
    }
    // $ALetter = [\p{Word_Break=ALetter} @] in all three.
    classes.of[u'@'] = joiningSymbol;
    // $MidLetter = [\p{Word_Break=MidLetter} - [\: \uFE55 \uFF1A]] but in Finnish and Swedish.
    if (rules != WordRules::colonJoinsLetters) classes.of[u':'] = other;
    // $MidNumLet = [\p{Word_Break=MidNumLet} - [.]]; $MidNum = [\p{Word_Break=MidNum} [.]].
    if (rules == WordRules::posix) classes.of[u'.'] = midNumber;
    return classes;
}

const ScanClasses* classesFor(const icu::BreakIterator& words) {
    switch (rulesHash(words)) {
    case rootWordRules: {
        static const ScanClasses classes = buildClasses(WordRules::root);
        return &classes;
    }
    case colonWordRules: {
        static const ScanClasses classes = buildClasses(WordRules::colonJoinsLetters);
        return &classes;
    }
    case posixWordRules: {
        static const ScanClasses classes = buildClasses(WordRules::posix);
        return &classes;
    }
    default: return nullptr;
    }
}

bool breaksLine(char16_t unit) {
    return unit == u'\n' || unit == 0x0B || unit == 0x0C || unit == 0x85 || unit == 0x2028 ||
           unit == 0x2029;
}

}  // namespace

SegmentCounter::SegmentCounter(const icu::Locale& locale, Path path) : icu_(locale), path_(path) {
    static const bool characterRulesKnown = [] {
        return rulesHash(*newCharacterBreakIterator()) == characterRules;
    }();
    if (path == Path::fastest && characterRulesKnown) classes_ = classesFor(icu_.wordIterator());
    reset();
}

void SegmentCounter::reset() {
    counted_ = {};
    consumed_ = 0;
    stretching_ = classes_ == nullptr;
    state_ = between;
    segmentStart_ = stretchStart_ = 0;
    probeRun_ = 0;
    afterCarriageReturn_ = false;
    carried_.clear();
}

int64_t SegmentCounter::scan(const char16_t* units, int64_t from, int64_t size) {
    const uint8_t* classes = classes_->of.data();
    uint32_t state = state_;
    int64_t words = 0, joined = 0;
    int64_t start = segmentStart_ - consumed_;
    int64_t at = from;
    for (; at < size; ++at) {
        const char16_t unit = units[at];
        const uint8_t unitClass = unit < scanLimit ? classes[unit] : uint8_t{unknown};
        if (unitClass == unknown) break;
        const uint8_t next = steps[state * 16 + unitClass];
        state = next & 15U;
        words += (next >> 4) & 1;
        joined += (next >> 5) & 1;
        start = (next & segmentStarts) != 0 ? at : start;
    }
    counted_.words += words;
    counted_.characters += at - from - joined;
    state_ = static_cast<uint8_t>(state);
    segmentStart_ = consumed_ + start;
    return at;
}

void SegmentCounter::enterStretch(int64_t at) {
    // The current segment was counted as the scan saw it; ICU counts it again with what follows.
    counted_.characters -= consumed_ + at - segmentStart_ - (state_ == afterCrLf ? 1 : 0);
    counted_.words -= holdsWord(state_) ? 1 : 0;
    stretchStart_ = segmentStart_;
    stretching_ = true;
    probeRun_ = 0;
    afterCarriageReturn_ = false;
}

// The first certain boundary at or after `from`, or -1: after a line break, which ends a
// segment in every set of word rules ICU has shipped, or where the scan would start a segment
// from the third unit it knows on (the rules look back two units).
int64_t SegmentCounter::findResume(const char16_t* units, int64_t from, int64_t size) {
    if (path_ == Path::icuOnly) return -1;
    for (int64_t at = from; at < size; ++at) {
        const char16_t unit = units[at];
        if (afterCarriageReturn_ && unit != u'\n') return at;
        afterCarriageReturn_ = unit == u'\r';
        if (breaksLine(unit)) return at + 1;
        const uint8_t unitClass =
            classes_ != nullptr && unit < scanLimit ? classes_->of[unit] : uint8_t{unknown};
        if (unitClass == unknown) {
            probeRun_ = 0;
            continue;
        }
        const uint8_t next = steps[(probeRun_ == 0 ? uint8_t{between} : probeState_) * 16 + unitClass];
        probeState_ = next & 15U;
        if (++probeRun_ >= 3 && (next & segmentStarts) != 0) return at;
    }
    return -1;
}

void SegmentCounter::countStretch(std::u16string_view text) {
    const SelectionCount stretch = icu_.count(text);
    counted_.characters += stretch.characters;
    counted_.words += stretch.words;
}

void SegmentCounter::add(std::u16string_view piece, bool last) {
    const char16_t* units = piece.data();
    const auto size = static_cast<int64_t>(piece.size());
    int64_t at = 0;
    while (at < size) {
        if (!stretching_) {
            at = scan(units, at, size);
            if (at < size) enterStretch(at);
            continue;
        }
        const int64_t resume = findResume(units, at, size);
        if (resume < 0) break;
        if (stretchStart_ < consumed_) {
            carried_.append(units, static_cast<std::size_t>(resume));
            countStretch(carried_);
            carried_.clear();
        } else {
            const int64_t start = stretchStart_ - consumed_;
            countStretch({units + start, static_cast<std::size_t>(resume - start)});
        }
        stretching_ = false;
        state_ = between;
        segmentStart_ = consumed_ + resume;
        at = resume;
    }
    const int64_t keepFrom = stretching_ ? stretchStart_ : segmentStart_;
    if (last) {
        if (stretching_) {
            if (keepFrom < consumed_) {
                carried_.append(units, piece.size());
                countStretch(carried_);
            } else {
                countStretch(piece.substr(static_cast<std::size_t>(keepFrom - consumed_)));
            }
            carried_.clear();
            stretchStart_ = consumed_ + size;
            stretching_ = classes_ == nullptr;
        }
    } else if (keepFrom >= consumed_) {
        carried_.assign(piece.substr(static_cast<std::size_t>(keepFrom - consumed_)));
    } else {
        carried_.append(piece);
    }
    consumed_ += size;
}

SelectionCount SegmentCounter::count() {
    if (!stretching_ || carried_.empty()) return counted_;
    const SelectionCount stretch = icu_.count(carried_);
    return {counted_.characters + stretch.characters, counted_.words + stretch.words};
}

}  // namespace quod::Text::internal
