// Characters and words of one or more selections, for a status line.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/base/Range.h"

namespace quod::Text {

struct SelectionCount {
    int64_t characters = 0;  // grapheme clusters: an emoji of several code points counts one
    int64_t words = 0;       // word-break segments of the current locale holding a letter or digit

    friend bool operator==(const SelectionCount&, const SelectionCount&) = default;
};

// Sums over the ranges in order. A range of length 0, or one that ends past the string, is
// skipped; overlapping ranges count twice. A range may cut a surrogate pair: its halves are
// counted as they stand.
[[nodiscard]] QUODDLE_EXPORT SelectionCount
selectionCount(std::u16string_view string, const std::vector<Range>& selectionArray);

}  // namespace quod::Text
