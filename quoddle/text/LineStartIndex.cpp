#include "quoddle/text/LineStartIndex.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "quoddle/strings/LineFunctions.h"

namespace quod {

LineStartIndex::LineStartIndex() {
    starts_.insert(0, int64_t{0});
}

LineStartIndex::LineStartIndex(std::span<const int64_t> starts) {
    QUOD_PRECONDITION(!starts.empty() && starts.front() == 0, "line 0 must start at 0");
    const auto count = std::ssize(starts);
    auto body = std::make_unique_for_overwrite<int64_t[]>(starts.size());
    std::copy(starts.begin(), starts.end(), body.get());
    starts_ = SplitVector<int64_t>(std::move(body), count, count);
}

int64_t LineStartIndex::start(int64_t line) const {
    const int64_t stored = starts_.at(line);
    return line > stepLine_ ? stored + stepLength_ : stored;
}

LineStartIndex::LineStartIndex(LineStartIndex&& other) noexcept
    : starts_(std::move(other.starts_)),
      stepLine_(other.stepLine_),
      stepLength_(other.stepLength_),
      lastLine_(0) {}

LineStartIndex& LineStartIndex::operator=(LineStartIndex&& other) noexcept {
    starts_ = std::move(other.starts_);
    stepLine_ = other.stepLine_;
    stepLength_ = other.stepLength_;
    lastLine_.store(0, std::memory_order_relaxed);
    return *this;
}

int64_t LineStartIndex::lineContaining(int64_t position) const {
    const int64_t lines = lineCount();
    const int64_t hint = std::min(lastLine_.load(std::memory_order_relaxed), lines - 1);
    if (start(hint) <= position) {
        for (int64_t line = hint; line <= hint + 1 && line < lines; ++line) {
            if (line + 1 == lines || position < start(line + 1)) {
                lastLine_.store(line, std::memory_order_relaxed);
                return line;
            }
        }
    }
    // Largest line whose start is <= position; start(0) == 0 bounds the search below.
    int64_t low = 0;
    int64_t high = lines - 1;
    while (low < high) {
        const int64_t middle = low + (high - low + 1) / 2;
        if (start(middle) <= position) {
            low = middle;
        } else {
            high = middle - 1;
        }
    }
    lastLine_.store(low, std::memory_order_relaxed);
    return low;
}

void LineStartIndex::shiftAfter(int64_t line, int64_t delta) {
    if (delta == 0) return;
    if (stepLength_ == 0) {
        stepLine_ = line;
        stepLength_ = delta;
        return;
    }
    if (line >= stepLine_) {
        applyStepUpTo(line);
    } else if (line >= stepLine_ - lineCount() / 10) {
        // Close behind the step: taking it back over a few lines is cheaper than a full apply.
        unapplyStepDownTo(line);
    } else {
        applyStepUpTo(lineCount() - 1);
        stepLine_ = line;
        stepLength_ = delta;
        return;
    }
    stepLength_ += delta;
    if (stepLength_ == 0) stepLine_ = lineCount() - 1;
}

void LineStartIndex::insertStarts(int64_t line, std::span<const int64_t> positions) {
    if (positions.empty()) return;
    QUOD_PRECONDITION(line >= 1 && line <= lineCount(), "line 0 keeps its start");
    // Everything before `line` must hold real values so that the new (real) starts join them:
    // afterwards lines [0, stepLine_] are real and the moved lines keep their pending step.
    if (stepLine_ < line - 1) applyStepUpTo(line - 1);
    starts_.insert(line, positions);
    stepLine_ += std::ssize(positions);
}

void LineStartIndex::removeStarts(int64_t line, int64_t count) {
    if (count == 0) return;
    QUOD_PRECONDITION(line >= 1 && count >= 0 && line + count <= lineCount(),
                      "removing starts outside the index");
    if (stepLine_ < line + count - 1) applyStepUpTo(line + count - 1);
    starts_.erase(line, count);
    stepLine_ -= count;
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

void LineStartIndex::applyStepUpTo(int64_t line) {
    if (stepLength_ != 0 && line > stepLine_)
        starts_.addToRange(stepLine_ + 1, line + 1, stepLength_);
    stepLine_ = line;
    if (stepLine_ >= lineCount() - 1) {
        stepLine_ = lineCount() - 1;
        stepLength_ = 0;
    }
}

void LineStartIndex::unapplyStepDownTo(int64_t line) {
    if (stepLength_ != 0 && line < stepLine_)
        starts_.addToRange(line + 1, stepLine_ + 1, -stepLength_);
    stepLine_ = line;
}

}  // namespace quod
