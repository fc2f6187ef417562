#include "quoddle/strings/TextBoundaries.h"

#include <unicode/brkiter.h>
#include <unicode/rbbi.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf16.h>

#include <cstdint>
#include <memory>
#include <optional>

namespace quod {
namespace {

enum class Unit { character, word };

// Creating an iterator loads ICU rule data, so each thread keeps one prototype per kind and locale
// and clones it.
const icu::BreakIterator& prototype(Unit unit, const icu::Locale& locale) {
    struct Cached {
        Unit unit;
        icu::Locale locale;
        std::unique_ptr<icu::BreakIterator> iterator;
    };
    thread_local std::vector<Cached> cache;
    for (const Cached& cached : cache) {
        if (cached.unit == unit && cached.locale == locale) return *cached.iterator;
    }
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> created(
        unit == Unit::character ? icu::BreakIterator::createCharacterInstance(locale, status)
                                : icu::BreakIterator::createWordInstance(locale, status));
    QUOD_PRECONDITION(created != nullptr && U_SUCCESS(status), "ICU break iterator data missing");
    cache.push_back({unit, locale, std::move(created)});
    return *cache.back().iterator;
}

// A break iterator over the text, without copying it.
class Breaker {
  public:
    Breaker(Unit unit, std::u16string_view text, const icu::Locale& locale) {
        // ICU iterators count in int32_t; a longer text is a caller's mistake.
        QUOD_PRECONDITION(text.size() <= static_cast<std::size_t>(INT32_MAX),
                          "text too long for ICU");
        UErrorCode status = U_ZERO_ERROR;
        iterator_.reset(prototype(unit, locale).clone());
        utext_openUChars(&utext_, text.data(), static_cast<int64_t>(text.size()), &status);
        if (iterator_ != nullptr && U_SUCCESS(status)) iterator_->setText(&utext_, status);
        QUOD_PRECONDITION(iterator_ != nullptr && U_SUCCESS(status), "ICU break iterator unusable");
    }
    ~Breaker() { utext_close(&utext_); }
    Breaker(const Breaker&) = delete;
    Breaker& operator=(const Breaker&) = delete;

    icu::BreakIterator& operator*() { return *iterator_; }
    icu::BreakIterator* operator->() { return iterator_.get(); }

  private:
    UText utext_ = UTEXT_INITIALIZER;
    std::unique_ptr<icu::BreakIterator> iterator_;
};

int64_t boundaryAtOrBefore(icu::BreakIterator& breaker, int64_t position) {
    if (breaker.isBoundary(static_cast<int32_t>(position))) return position;
    // Inside the text's first surrogate pair ICU moves back to 0 before looking further back,
    // finds nothing and answers DONE; the start of the text is the boundary meant.
    const int32_t before = breaker.preceding(static_cast<int32_t>(position));
    return before == icu::BreakIterator::DONE ? 0 : before;
}

int64_t boundaryAtOrAfter(icu::BreakIterator& breaker, int64_t position) {
    if (breaker.isBoundary(static_cast<int32_t>(position))) return position;
    return breaker.following(static_cast<int32_t>(position));
}

}  // namespace

// Spaces, punctuation, symbols and emoji are segments too, but count for nothing.
bool holdsLetterOrDigit(std::u16string_view segment) {
    for (std::size_t i = 0; i < segment.size();) {
        UChar32 codePoint;
        U16_NEXT(segment.data(), i, segment.size(), codePoint);
        if (u_isalnum(codePoint)) return true;
    }
    return false;
}

std::unique_ptr<icu::BreakIterator> newCharacterBreakIterator() {
    std::unique_ptr<icu::BreakIterator> iterator(
        prototype(Unit::character, icu::Locale::getRoot()).clone());
    QUOD_PRECONDITION(iterator != nullptr, "ICU break iterator unusable");
    return iterator;
}

std::unique_ptr<icu::BreakIterator> newWordBreakIterator(const icu::Locale& locale) {
    std::unique_ptr<icu::BreakIterator> iterator(prototype(Unit::word, locale).clone());
    QUOD_PRECONDITION(iterator != nullptr, "ICU break iterator unusable");
    return iterator;
}

Range composedCharacterRange(std::u16string_view text, Range range) {
    QUOD_PRECONDITION(range.isInside(static_cast<int64_t>(text.size())), "range outside the text");
    Breaker breaker(Unit::character, text, icu::Locale::getRoot());
    const int64_t start = boundaryAtOrBefore(*breaker, range.location);
    const int64_t end = range.length == 0 ? start : boundaryAtOrAfter(*breaker, range.end());
    return {start, end - start};
}

std::vector<int64_t> characterBoundaries(std::u16string_view text) {
    Breaker breaker(Unit::character, text, icu::Locale::getRoot());
    std::vector<int64_t> boundaries{breaker->first()};
    for (int32_t at = breaker->next(); at != icu::BreakIterator::DONE; at = breaker->next()) {
        boundaries.push_back(at);
    }
    return boundaries;
}

int64_t characterCount(std::u16string_view text) {
    Breaker breaker(Unit::character, text, icu::Locale::getRoot());
    int64_t count = 0;
    breaker->first();
    while (breaker->next() != icu::BreakIterator::DONE)
        ++count;
    return count;
}

std::optional<int64_t> offsetOfCharacter(std::u16string_view text, int64_t characters) {
    QUOD_PRECONDITION(characters >= 0, "negative character count");
    Breaker breaker(Unit::character, text, icu::Locale::getRoot());
    int64_t offset = breaker->first();
    for (int64_t step = 0; step < characters; ++step) {
        offset = breaker->next();
        if (offset == icu::BreakIterator::DONE) return std::nullopt;
    }
    return offset;
}

int64_t characterIndexOfOffset(std::u16string_view text, int64_t position) {
    QUOD_PRECONDITION(position >= 0 && position <= static_cast<int64_t>(text.size()),
                      "position outside the text");
    Breaker breaker(Unit::character, text, icu::Locale::getRoot());
    int64_t count = 0;
    breaker->first();
    for (int32_t end = breaker->next(); end != icu::BreakIterator::DONE && end <= position;
         end = breaker->next()) {
        ++count;
    }
    return count;
}

Range wordBreakSegment(std::u16string_view text, int64_t position, const icu::Locale& locale) {
    QUOD_PRECONDITION(position >= 0 && position < static_cast<int64_t>(text.size()),
                      "position outside the text");
    Breaker breaker(Unit::word, text, locale);
    const int64_t start = boundaryAtOrBefore(*breaker, position);
    const int64_t end = breaker->following(static_cast<int32_t>(position));
    return {start, end - start};
}

std::vector<Range> wordRanges(std::u16string_view text, const icu::Locale& locale) {
    std::vector<Range> words;
    Breaker breaker(Unit::word, text, locale);
    int32_t start = breaker->first();
    for (int32_t end = breaker->next(); end != icu::BreakIterator::DONE;
         start = end, end = breaker->next()) {
        if (holdsLetterOrDigit(text.substr(start, end - start)))
            words.push_back({start, end - start});
    }
    return words;
}

}  // namespace quod
