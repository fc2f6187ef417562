// Literal search in UTF-16 text, counted in characters or in code units.
//
// The match is by exact code units: no normalisation, no case folding, and a match may begin or
// end inside a character ("e" is found in "e\u0301"). An empty needle is never found.
//   - index and indexRange count in characters (grapheme clusters): startPosition characters are
//     skipped from the start, and the result is the number of whole characters before the match.
//     indexRange's length is the characters the match spans, measured the same way at both ends.
//     startPosition must lie in 0 ... the number of characters.
//   - utf16Index counts in UTF-16 units, for placing a cursor; startPosition must lie in
//     0 ... the length.
// In "é😀ab" with "é" decomposed, "ab" is character 2 but unit 4.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/base/Range.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT std::optional<int64_t> index(std::u16string_view s,
                                                          std::u16string_view of,
                                                          int64_t startPosition);

[[nodiscard]] QUODDLE_EXPORT std::optional<Range> indexRange(std::u16string_view s,
                                                             std::u16string_view of,
                                                             int64_t startPosition);

[[nodiscard]] QUODDLE_EXPORT std::optional<int64_t> utf16Index(std::u16string_view s,
                                                               std::u16string_view of,
                                                               int64_t startPosition);

}  // namespace quod
