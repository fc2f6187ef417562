// The sorted positions at which lines start, kept up to date under edits in logarithmic time.
//
// Line 0 always starts at 0, and there is one more line than there are terminators. The index
// keeps the length of each line (start to next start) in runs, in a B-tree whose nodes sum the
// lengths and count the lines below them, so that a text edit anywhere moves every later start
// by changing one length: every operation costs O(log lines) plus the lines it adds or removes.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/base/Range.h"

namespace quod {

class QUODDLE_EXPORT LineStartIndex {
  public:
    LineStartIndex();
    LineStartIndex(LineStartIndex&& other) noexcept;
    LineStartIndex& operator=(LineStartIndex&& other) noexcept;
    ~LineStartIndex();

    // Builds the index from starts already found (the first must be 0), as loading does.
    explicit LineStartIndex(std::span<const int64_t> starts);

    [[nodiscard]] int64_t lineCount() const;

    [[nodiscard]] int64_t start(int64_t line) const;
    // Every start, in O(lines).
    [[nodiscard]] std::vector<int64_t> starts() const;

    // The line whose span [start(line), start(line + 1)) holds position; the last line for any
    // position at or after its start.
    [[nodiscard]] int64_t lineContaining(int64_t position) const;

    // Shifts the starts of every line after `line` by delta.
    void shiftAfter(int64_t line, int64_t delta);

    // Inserts starts (ascending, real positions) as lines line, line + 1, ...
    void insertStarts(int64_t line, std::span<const int64_t> positions);

    // Removes the starts of lines [line, line + count); line 0 cannot be removed.
    void removeStarts(int64_t line, int64_t count);

    // A run of lines: [first, first + count).
    struct Lines {
        int64_t first = 0;
        int64_t count = 0;
    };

    // Whether a line starts at p depends only on units p-1 and p, so replacing the units of
    // `range` can only remove or add starts in [max(location, 1), range.end()] (line 0 always
    // starts at 0). These are the lines that now start there; count 0 when none does.
    [[nodiscard]] Lines linesStartingInReplacedRange(Range range) const;

    // Brings the index up to date after the units of `range` (positions before the change) were
    // replaced by `text`: drops the starts that the change may have moved or removed, shifts the
    // later ones, and finds the starts of the changed stretch again. `unitBefore` is the unit
    // just before the change (ignored when it starts at 0); `nextIsLineFeed` says whether the unit
    // just after the new text is an LF, which decides whether a CR at either edge starts a line.
    // Answers the lines that now start inside the change. Costs O(log lines + text.size() +
    // lines removed).
    Lines replace(Range range, std::u16string_view text, char16_t unitBefore, bool nextIsLineFeed);

  private:
    struct Tree;
    // Replaces the lengths of lines [first, first + count) (count >= 1) with `lengths`.
    void replaceLengths(int64_t first, int64_t count, std::span<const int64_t> lengths);
    [[nodiscard]] int64_t lengthOf(int64_t line) const;

    std::unique_ptr<Tree> tree_;
};

}  // namespace quod
