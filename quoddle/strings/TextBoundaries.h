// Characters (extended grapheme clusters) and word-break segments of UTF-16 text, through ICU.
//
// Where the framework counts "characters" it counts grapheme clusters: "e" + U+0301 is one
// character of two units, CR LF is one character, an emoji flag is one. Word segments follow ICU's
// word break rules for a locale; a segment is a word when it holds a letter or a decimal digit
// (spaces, punctuation, symbols and emoji are segments too, but not words).
// All positions are UTF-16 offsets into the given text; the text is read, never copied, and must
// outlive only the call. ICU data missing from the installation, or a text of 2^31 units or more,
// stops the process.
#pragma once

#include <unicode/locid.h>

#include <unicode/brkiter.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/base/Precondition.h"
#include "quoddle/base/Range.h"

namespace quod {

// The range widened outwards to whole grapheme clusters. An empty range stays empty, moved back to
// the start of the cluster it falls in.
[[nodiscard]] QUODDLE_EXPORT Range composedCharacterRange(std::u16string_view text, Range range);

[[nodiscard]] QUODDLE_EXPORT int64_t characterCount(std::u16string_view text);

// Every cluster boundary, from 0 to text.size() inclusive: character i is
// [boundaries[i], boundaries[i + 1]).
[[nodiscard]] QUODDLE_EXPORT std::vector<int64_t> characterBoundaries(std::u16string_view text);

// UTF-16 offset reached by stepping `characters` clusters forward from the start of the text;
// no value when the text has fewer clusters.
[[nodiscard]] QUODDLE_EXPORT std::optional<int64_t> offsetOfCharacter(std::u16string_view text,
                                                                      int64_t characters);

// Number of whole clusters in [0, position): a position inside a cluster rounds down.
[[nodiscard]] QUODDLE_EXPORT int64_t characterIndexOfOffset(std::u16string_view text,
                                                            int64_t position);

// The word-break segment that holds the unit at `position` (which must be < text.size()).
[[nodiscard]] QUODDLE_EXPORT Range wordBreakSegment(std::u16string_view text, int64_t position,
                                                    const icu::Locale& locale);

// Whether a word-break segment is a word: it holds a letter or a decimal digit.
[[nodiscard]] QUODDLE_EXPORT bool holdsLetterOrDigit(std::u16string_view segment);

// Fresh grapheme-cluster (root) and word (of `locale`) break iterators, without text, for callers
// that walk many texts with one iterator instead of paying a clone per text.
[[nodiscard]] QUODDLE_EXPORT std::unique_ptr<icu::BreakIterator> newCharacterBreakIterator();
[[nodiscard]] QUODDLE_EXPORT std::unique_ptr<icu::BreakIterator> newWordBreakIterator(
    const icu::Locale& locale);

// The segments that are words, in order.
[[nodiscard]] QUODDLE_EXPORT std::vector<Range> wordRanges(std::u16string_view text,
                                                           const icu::Locale& locale);

}  // namespace quod
