// The sorted positions at which lines start, kept up to date under edits in logarithmic time.
//
// Line 0 always starts at 0, and there is one more line than there are terminators. The starts
// live in a gap buffer. A text edit shifts every later start by the same amount; instead of
// touching them all, the index remembers one pending shift (`stepLength_`) owed by every line
// after `stepLine_`:
//     start(line) == stored(line) + (line > stepLine_ ? stepLength_ : 0).
// Edits near the previous edit move the step a short way, so typing costs O(log lines); a jump
// across the document pays for the lines the step passes over, once.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/base/Range.h"
#include "quoddle/base/SplitVector.h"

namespace quod {

class QUODDLE_EXPORT LineStartIndex {
  public:
    LineStartIndex();
    LineStartIndex(LineStartIndex&& other) noexcept;
    LineStartIndex& operator=(LineStartIndex&& other) noexcept;

    // Builds the index from starts already found (the first must be 0), as loading does.
    explicit LineStartIndex(std::span<const int64_t> starts);

    [[nodiscard]] int64_t lineCount() const { return starts_.length(); }

    [[nodiscard]] int64_t start(int64_t line) const;

    // The line whose span [start(line), start(line + 1)) holds position; the last line for any
    // position at or after its start. O(1) for the line of the previous answer or the one after
    // it (editing commands walk lines in order), O(log lines) otherwise.
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
    // lines removed), plus the pending shift's travel (see above).
    Lines replace(Range range, std::u16string_view text, char16_t unitBefore, bool nextIsLineFeed);

  private:
    void applyStepUpTo(int64_t line);
    void unapplyStepDownTo(int64_t line);

    SplitVector<int64_t> starts_;
    int64_t stepLine_ = 0;
    int64_t stepLength_ = 0;
    // The previous answer of lineContaining. A search of a large index misses the cache at nearly
    // every step, so trying the neighbourhood of the last answer first pays off. Atomic (relaxed)
    // so that concurrent readers stay well defined.
    mutable std::atomic<int64_t> lastLine_{0};
};

}  // namespace quod
