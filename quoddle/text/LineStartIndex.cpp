#include "quoddle/text/LineStartIndex.h"

#include <algorithm>
#include <vector>

#include "quoddle/strings/LineFunctions.h"
#include "quoddle/text/internal/SummedTree.h"

namespace quod {

using internal::By;

namespace {

// Consecutive lines: where each starts, from the run's start, and the run's length in units (the
// last line of the index counts 0, as its end is the text's).
struct LineRun {
    std::vector<int64_t> starts;
    int64_t units = 0;

    explicit LineRun(std::span<const int64_t> lengths) {
        starts.reserve(lengths.size());
        for (const int64_t length : lengths) {
            starts.push_back(units);
            units += length;
        }
    }

    [[nodiscard]] int64_t count() const { return std::ssize(starts); }
    [[nodiscard]] int64_t length(int64_t line) const {
        return (line + 1 < count() ? starts[static_cast<std::size_t>(line) + 1] : units) -
               starts[static_cast<std::size_t>(line)];
    }
    void appendLengths(int64_t first, int64_t end, std::vector<int64_t>& lengths) const {
        for (int64_t line = first; line < end; ++line)
            lengths.push_back(length(line));
    }

    [[nodiscard]] internal::TreeMeasures measures() const { return {units, count()}; }
};

// Runs are cut at about this many lines and kept between the minimum and the maximum.
constexpr int64_t runTarget = 64;
constexpr int64_t runMinimum = 16;
constexpr int64_t runMaximum = 2 * runTarget;

// Even runs of runTarget to 2 * runTarget - 1 lines (one shorter run when there are fewer lines).
std::vector<std::unique_ptr<LineRun>> cutIntoRuns(std::span<const int64_t> lengths) {
    const auto count = std::ssize(lengths);
    const int64_t runs = std::max<int64_t>(1, count / runTarget);
    std::vector<std::unique_ptr<LineRun>> result;
    result.reserve(static_cast<std::size_t>(runs));
    std::size_t next = 0;
    for (int64_t k = 0; k < runs; ++k) {
        const auto take = static_cast<std::size_t>(count / runs + (k < count % runs ? 1 : 0));
        result.push_back(std::make_unique<LineRun>(lengths.subspan(next, take)));
        next += take;
    }
    return result;
}

}  // namespace

struct LineStartIndex::Tree {
    internal::SummedTree<LineRun> runs;
};

LineStartIndex::LineStartIndex() : LineStartIndex(std::span<const int64_t>(std::vector<int64_t>{0})) {}

LineStartIndex::LineStartIndex(std::span<const int64_t> starts) {
    QUOD_PRECONDITION(!starts.empty() && starts.front() == 0, "line 0 must start at 0");
    std::vector<int64_t> lengths(starts.size());
    for (std::size_t line = 0; line + 1 < starts.size(); ++line)
        lengths[line] = starts[line + 1] - starts[line];
    lengths.back() = 0;
    tree_ = std::make_unique<Tree>(Tree{internal::SummedTree<LineRun>(cutIntoRuns(lengths))});
}

LineStartIndex::LineStartIndex(LineStartIndex&& other) noexcept = default;
LineStartIndex& LineStartIndex::operator=(LineStartIndex&& other) noexcept = default;
LineStartIndex::~LineStartIndex() = default;

int64_t LineStartIndex::lineCount() const {
    return tree_->runs.total().lines;
}

int64_t LineStartIndex::start(int64_t line) const {
    QUOD_PRECONDITION(line >= 0 && line < lineCount(), "line outside the index");
    const auto found = tree_->runs.find(By::lines, line);
    return found.before.units +
           found.leaf->starts[static_cast<std::size_t>(line - found.before.lines)];
}

std::vector<int64_t> LineStartIndex::starts() const {
    std::vector<int64_t> starts;
    starts.reserve(static_cast<std::size_t>(lineCount()));
    tree_->runs.forEachLeaf(By::lines, 0, lineCount(),
                            [&](const LineRun& run, const internal::TreeMeasures& before) {
                                for (const int64_t start : run.starts)
                                    starts.push_back(before.units + start);
                            });
    return starts;
}

int64_t LineStartIndex::lengthOf(int64_t line) const {
    const auto found = tree_->runs.find(By::lines, line);
    return found.leaf->length(line - found.before.lines);
}

int64_t LineStartIndex::lineContaining(int64_t position) const {
    const auto found = tree_->runs.find(By::units, position);
    const auto& starts = found.leaf->starts;
    const auto after = std::upper_bound(starts.begin(), starts.end(), position - found.before.units);
    return found.before.lines + (after - starts.begin()) - 1;
}

void LineStartIndex::shiftAfter(int64_t line, int64_t delta) {
    // Lines after `line` move when `line` gets longer; nothing follows the last line.
    if (delta == 0 || line + 1 >= lineCount()) return;
    tree_->runs.modifyLeaf(By::lines, line, [&](LineRun& run, const internal::TreeMeasures& before) {
        for (auto start = run.starts.begin() + (line - before.lines) + 1; start != run.starts.end();
             ++start) {
            *start += delta;
        }
        run.units += delta;
        return true;
    });
}

void LineStartIndex::insertStarts(int64_t line, std::span<const int64_t> positions) {
    if (positions.empty()) return;
    QUOD_PRECONDITION(line >= 1 && line <= lineCount(), "line 0 keeps its start");
    // The new lines cut line - 1 into pieces.
    const int64_t start = this->start(line - 1);
    const bool last = line == lineCount();
    const int64_t end = start + lengthOf(line - 1);
    std::vector<int64_t> lengths;
    lengths.reserve(positions.size() + 1);
    int64_t previous = start;
    for (const int64_t position : positions) {
        lengths.push_back(position - previous);
        previous = position;
    }
    lengths.push_back(last ? 0 : end - previous);
    replaceLengths(line - 1, 1, lengths);
}

void LineStartIndex::removeStarts(int64_t line, int64_t count) {
    if (count == 0) return;
    QUOD_PRECONDITION(line >= 1 && count >= 0 && line + count <= lineCount(),
                      "removing starts outside the index");
    // Line - 1 absorbs the removed lines.
    const int64_t length =
        line + count == lineCount() ? 0 : this->start(line + count) - this->start(line - 1);
    replaceLengths(line - 1, count + 1, std::span<const int64_t>(&length, 1));
}

void LineStartIndex::replaceLengths(int64_t first, int64_t count, std::span<const int64_t> lengths) {
    auto& runs = tree_->runs;
    const int64_t total = lineCount();
    const auto added = std::ssize(lengths);
    // In place when the lines lie in one run that stays within its sizes.
    const bool inPlace =
        runs.modifyLeaf(By::lines, first, [&](LineRun& run, const internal::TreeMeasures& before) {
            const int64_t local = first - before.lines;
            const int64_t newCount = run.count() - count + added;
            if (local + count > run.count() || newCount > runMaximum ||
                (newCount < runMinimum && run.count() != total)) {
                return false;
            }
            std::vector<int64_t> all;
            all.reserve(static_cast<std::size_t>(newCount));
            run.appendLengths(0, local, all);
            all.insert(all.end(), lengths.begin(), lengths.end());
            run.appendLengths(local + count, run.count(), all);
            run = LineRun(all);
            return true;
        });
    if (inPlace) return;

    // Otherwise the runs holding the lines are cut again, with a neighbour when too few remain.
    int64_t from = runs.find(By::lines, first).before.lines;
    const auto lastRun = runs.find(By::lines, first + count - 1);
    int64_t to = lastRun.before.lines + lastRun.leaf->count();
    if ((to - from) - count + added < runMinimum) {
        if (from > 0) {
            from = runs.find(By::lines, from - 1).before.lines;
        } else if (to < total) {
            to += runs.find(By::lines, to).leaf->count();
        }
    }
    std::vector<int64_t> all;
    all.reserve(static_cast<std::size_t>(to - from - count + added));
    const auto appendLines = [&](int64_t begin, int64_t end) {
        runs.forEachLeaf(By::lines, begin, end,
                         [&](const LineRun& run, const internal::TreeMeasures& before) {
                             run.appendLengths(std::max<int64_t>(begin - before.lines, 0),
                                               std::min(end - before.lines, run.count()), all);
                         });
    };
    appendLines(from, first);
    all.insert(all.end(), lengths.begin(), lengths.end());
    appendLines(first + count, to);
    runs.replaceLeaves(By::lines, from, to, cutIntoRuns(all));
}

LineStartIndex::Lines LineStartIndex::linesStartingInReplacedRange(Range range) const {
    const int64_t low = std::max<int64_t>(range.location, 1);
    const int64_t first = lineContaining(low - 1) + 1;
    const int64_t last = lineContaining(range.end());
    return {first, std::max<int64_t>(last - first + 1, 0)};
}

LineStartIndex::Lines LineStartIndex::replace(Range range, std::u16string_view text,
                                              char16_t unitBefore, bool nextIsLineFeed) {
    const int64_t location = range.location;
    const int64_t delta = checkedSubtract(std::ssize(text), range.length);
    const Lines old = linesStartingInReplacedRange(range);
    removeStarts(old.first, old.count);
    shiftAfter(old.first - 1, delta);

    std::vector<int64_t> starts;
    if (location > 0 && isLineTerminator(unitBefore)) {
        // The unit before the change may now end a line, or stop being the CR of a pair.
        const bool firstIsLineFeed = text.empty() ? nextIsLineFeed : text.front() == u'\n';
        if (unitBefore != u'\r' || !firstIsLineFeed) starts.push_back(location);
    }
    appendLineStarts(text, location, nextIsLineFeed, starts);
    insertStarts(old.first, starts);
    return {old.first, std::ssize(starts)};
}

}  // namespace quod
