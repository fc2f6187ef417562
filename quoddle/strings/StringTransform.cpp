#include "quoddle/strings/StringTransform.h"

#include <unicode/translit.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

#include "quoddle/base/Precondition.h"

namespace quod {
namespace {

// The ICU identifiers behind the platform's transform names; a "from" kind runs its "to" kind's
// transliterator in reverse.
constexpr char16_t toLatinId[] = u"Any-Latin";
constexpr char16_t stripDiacriticsId[] =
    u"NFD; [[[:Mn:]&[:Diacritic:]]-[:Grapheme_Link:]-[:ccc=0:]-[:ccc=8:]-[\\u0338]] Remove; NFC";
constexpr char16_t stripCombiningMarksId[] = u"NFD; [:Mn:] Remove; NFC";
constexpr char16_t xmlHexId[] = u"[^[:ASCII:]-[:C:]]; Any-Hex/XML";
constexpr char16_t unicodeNameId[] = u"[^[:ASCII:]-[:C:]]; Any-Name";

struct Binding {
    const char16_t* id;
    UTransDirection direction;
};

constexpr Binding bindings[StringTransform::caseCount] = {
    {toLatinId, UTRANS_FORWARD},
    {u"Latin-ASCII", UTRANS_FORWARD},
    {stripDiacriticsId, UTRANS_FORWARD},
    {stripCombiningMarksId, UTRANS_FORWARD},
    {xmlHexId, UTRANS_FORWARD},
    {xmlHexId, UTRANS_REVERSE},
    {u"Any-Hex/C", UTRANS_FORWARD},
    {u"Any-Hex/C", UTRANS_REVERSE},
    {u"Any-Hex/Perl", UTRANS_FORWARD},
    {u"Any-Hex/Perl", UTRANS_REVERSE},
    {u"Any-Publishing", UTRANS_FORWARD},
    {u"Any-Publishing", UTRANS_REVERSE},
    {unicodeNameId, UTRANS_FORWARD},
    {unicodeNameId, UTRANS_REVERSE},
    {u"Fullwidth-Halfwidth", UTRANS_FORWARD},
    {u"Fullwidth-Halfwidth", UTRANS_REVERSE},
    {u"Latin-Katakana", UTRANS_FORWARD},
    {u"Latin-Katakana", UTRANS_REVERSE},
    {u"Latin-Hiragana", UTRANS_FORWARD},
    {u"Latin-Hiragana", UTRANS_REVERSE},
    {u"Latin-Hangul", UTRANS_FORWARD},
    {u"Latin-Hangul", UTRANS_REVERSE},
    {u"Latin-Arabic", UTRANS_FORWARD},
    {u"Latin-Arabic", UTRANS_REVERSE},
    {u"Latin-Hebrew", UTRANS_FORWARD},
    {u"Latin-Hebrew", UTRANS_REVERSE},
    {u"Latin-Thai", UTRANS_FORWARD},
    {u"Latin-Thai", UTRANS_REVERSE},
    {u"Latin-Cyrillic", UTRANS_FORWARD},
    {u"Latin-Cyrillic", UTRANS_REVERSE},
    {u"Latin-Greek", UTRANS_FORWARD},
    {u"Latin-Greek", UTRANS_REVERSE},
    {u"Han-Latin", UTRANS_FORWARD},
    {u"Hiragana-Katakana", UTRANS_FORWARD},
};

// Opened transliterators of this thread; an entry stays empty when ICU cannot open that one, so
// the failure is not retried on every call either.
const icu::Transliterator* transliteratorFor(StringTransform::Kind kind) {
    // ICU fills its table of special inverses only when its registry first loads, so an early
    // reverse open could fail where a later one succeeds. Loading it up front makes every open
    // behave the same whatever ran before.
    static std::once_flag registryLoaded;
    std::call_once(registryLoaded, [] { icu::Transliterator::countAvailableIDs(); });

    struct Opened {
        bool tried = false;
        std::unique_ptr<icu::Transliterator> transliterator;
    };
    thread_local Opened opened[StringTransform::caseCount];
    Opened& entry = opened[static_cast<int>(kind)];
    if (!entry.tried) {
        entry.tried = true;
        const Binding& binding = bindings[static_cast<int>(kind)];
        UParseError parseError{};
        UErrorCode status = U_ZERO_ERROR;
        entry.transliterator.reset(icu::Transliterator::createInstance(
            icu::UnicodeString(binding.id), binding.direction, parseError, status));
        if (U_FAILURE(status)) entry.transliterator.reset();
    }
    return entry.transliterator.get();
}

}  // namespace

const std::array<StringTransform::Kind, StringTransform::caseCount> StringTransform::allCases = [] {
    std::array<Kind, caseCount> cases{};
    for (int raw = 0; raw < caseCount; ++raw)
        cases[raw] = static_cast<Kind>(raw);
    return cases;
}();

std::optional<StringTransform::Kind> StringTransform::kind(int64_t rawValue) {
    if (rawValue < 0 || rawValue >= caseCount) return std::nullopt;
    return static_cast<Kind>(rawValue);
}

std::optional<std::u16string> StringTransform::transformed(Kind kind, std::u16string_view text) {
    const icu::Transliterator* transliterator = transliteratorFor(kind);
    if (transliterator == nullptr) return std::nullopt;
    QUOD_PRECONDITION(text.size() <= static_cast<std::size_t>(INT32_MAX), "text too long for ICU");
    icu::UnicodeString buffer(text.data(), static_cast<int32_t>(text.size()));
    transliterator->transliterate(buffer);
    return std::u16string(buffer.getBuffer(), static_cast<std::size_t>(buffer.length()));
}

struct StringTransformStream::State {
    const icu::Transliterator* transliterator = nullptr;
    // The text not yet given out: what the rules may still read as context before the pending
    // part, then the pending part itself, from position.start on.
    icu::UnicodeString buffer;
    UTransPosition position{0, 0, 0, 0};
    int32_t givenOut = 0;  // buffer[0, givenOut) has been given out already
    // ICU's incremental mode decides some rules differently when the text stops in the middle of
    // a line (Han-Latin, for one, leaves out the space between syllables cut apart), so whole
    // lines go in, and the line that has not ended waits here.
    std::u16string unfinishedLine;

    void run(std::u16string_view lines) {
        QUOD_PRECONDITION(lines.size() <= static_cast<std::size_t>(INT32_MAX / 2),
                          "line too long for ICU");
        buffer.append(lines.data(), static_cast<int32_t>(lines.size()));
        position.contextLimit = position.limit = buffer.length();
        UErrorCode status = U_ZERO_ERROR;
        transliterator->transliterate(buffer, position, status);
    }

    // Gives out what the transliterator has settled and drops what no rule can look back to.
    void giveOut(std::u16string& out) {
        out.append(reinterpret_cast<const char16_t*>(buffer.getBuffer()) + givenOut,
                   static_cast<std::size_t>(position.start - givenOut));
        givenOut = position.start;
        const int32_t drop =
            std::max(0, position.start - transliterator->getMaximumContextLength());
        if (drop > 0) {
            buffer.remove(0, drop);
            position.contextStart = std::max(0, position.contextStart - drop);
            position.start -= drop;
            position.contextLimit -= drop;
            position.limit -= drop;
            givenOut -= drop;
        }
    }
};

StringTransformStream::StringTransformStream(StringTransform::Kind kind)
    : state_(std::make_unique<State>()) {
    state_->transliterator = transliteratorFor(kind);
}

StringTransformStream::~StringTransformStream() = default;
StringTransformStream::StringTransformStream(StringTransformStream&&) noexcept = default;
StringTransformStream& StringTransformStream::operator=(StringTransformStream&&) noexcept = default;

bool StringTransformStream::isAvailable() const {
    return state_->transliterator != nullptr;
}

void StringTransformStream::transform(std::u16string_view piece, std::u16string& out) {
    State& state = *state_;
    if (state.transliterator == nullptr) {
        out.append(piece);
        return;
    }
    state.unfinishedLine.append(piece);
    const std::size_t lineFeed = state.unfinishedLine.rfind(u'\n');
    if (lineFeed == std::u16string::npos) return;
    state.run(std::u16string_view(state.unfinishedLine).substr(0, lineFeed + 1));
    state.unfinishedLine.erase(0, lineFeed + 1);
    state.giveOut(out);
}

void StringTransformStream::finish(std::u16string& out) {
    State& state = *state_;
    if (state.transliterator == nullptr) return;
    state.run(state.unfinishedLine);
    state.unfinishedLine.clear();
    state.transliterator->finishTransliteration(state.buffer, state.position);
    state.giveOut(out);
}

}  // namespace quod
