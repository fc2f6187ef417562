// The gutter's index of where each line of the text starts, kept up to date edit by edit.
//
// Entry i is the UTF-16 offset of the first unit of line i + 1, ascending. When the last line is
// empty (the text is empty or ends with a line terminator) its entry is `emptyLastLine`, the
// largest int64, instead of the text length: "" gives [emptyLastLine], "a\n" gives
// [0, emptyLastLine], "a\r\nb" gives [0, 3]. Before the first `rebuild` the array is empty.
//
// `rebuild` takes every line start from the text storage's own index, and is the reference.
// `apply` brings the array up to date from one edit notification of the text storage in time
// proportional to the edit (plus O(log lines)): it reads only the changed units and their two
// neighbours, and drops and refinds the starts there (see LineStartIndex). The array must have
// seen every edit since its last rebuild; an edit that does not fit (the lengths disagree) falls
// back to a rebuild. Both answer whether any entry changed.
//
// Reading an entry is O(log lines), `toVector` and comparison O(lines).
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/text/LineStartIndex.h"
#include "quoddle/text/TextStorage.h"

namespace quod {

class QUODDLE_EXPORT LineLocationArray {
  public:
    static constexpr int64_t emptyLastLine = std::numeric_limits<int64_t>::max();

    [[nodiscard]] int64_t size() const { return indexed_ ? starts_.lineCount() : 0; }
    [[nodiscard]] bool empty() const { return size() == 0; }
    // Precondition: 0 <= index < size().
    [[nodiscard]] int64_t operator[](int64_t index) const;
    // The index of the first entry at or after `location`, or size() when there is none; O(log
    // lines).
    [[nodiscard]] int64_t firstIndexAtOrAfter(int64_t location) const;
    [[nodiscard]] std::vector<int64_t> toVector() const;

    // The array that a full walk of `textStorage` gives.
    [[nodiscard]] static std::vector<int64_t> locationsByRebuilding(const TextStorage& textStorage);

    bool rebuild(const TextStorage& textStorage);
    // Not yet built: nothing happens and the answer is false.
    bool apply(const TextStorage& textStorage, const TextStorageEdit& edit);

    friend QUODDLE_EXPORT bool operator==(const LineLocationArray& array,
                                          const std::vector<int64_t>& locations);

  private:
    bool indexed_ = false;
    LineStartIndex starts_;  // real starts: an empty last line starts at textLength_
    int64_t textLength_ = 0;
};

}  // namespace quod
