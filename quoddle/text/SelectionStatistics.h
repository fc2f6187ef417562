// Characters and words of one or more selections, for a status line, at once or piece by piece.
//
// Both give ICU's answers (grapheme clusters; word-break segments of the locale holding a letter
// or digit) but scan most letters, digits, spaces and punctuation of the alphabetic scripts with
// a table of their own, at several hundred million UTF-16 units a second, and hand ICU only the
// stretches around what the table leaves open (combining marks, emoji, Hebrew, Thai, CJK...).
#pragma once

#include <unicode/locid.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/base/CurrentLocale.h"
#include "quoddle/base/Range.h"

namespace quod::Text {

namespace internal {
class SegmentCounter;
}

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

// The count of a text that arrives in pieces (a storage's chunks, a file decoded window by
// window): after adding the pieces in order, count() equals selectionCount of their
// concatenation as one range, wherever the pieces split it (inside a surrogate pair, a CR LF, a
// cluster or a word). It keeps only the unfinished segment between pieces (where ICU has to
// decide, the text since the last line break or the last boundary the scan is sure of), so its
// memory is bounded by the longest such run; the worst case is a text with no break at all,
// which it keeps whole. Not for sharing between threads.
class QUODDLE_EXPORT SelectionCounter {
  public:
    explicit SelectionCounter(const icu::Locale& locale = currentLocale());
    ~SelectionCounter();
    SelectionCounter(SelectionCounter&&) noexcept;
    SelectionCounter& operator=(SelectionCounter&&) noexcept;

    void add(std::u16string_view piece);
    // What was added so far, as if the text ended there; more can be added after.
    [[nodiscard]] SelectionCount count() const;

  private:
    std::unique_ptr<internal::SegmentCounter> counter_;
};

}  // namespace quod::Text
