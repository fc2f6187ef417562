// A gap buffer: a vector with a movable hole, so that edits near the last edit are cheap.
//
// The elements live in `body_` in two parts around a gap: part 1 is body_[0, part1Length_), the
// gap is body_[part1Length_, part1Length_ + gapLength_), part 2 is the rest. Invariant:
//     part1Length_ + gapLength_ + (length of part 2) == body_.size(), length() == body_.size() -
//     gapLength_.
// Inserting or erasing at position p first moves the gap to p, which copies |p - old gap| elements;
// editing where one edited last therefore costs time proportional to the edit, not the length.
// When the gap is too small the body grows to leave a gap of a fraction of its size (one eighth,
// at least 4096 elements), which keeps memory close to the content and amortises the copy; growing
// copies each part once into place around the new gap, wherever the gap is. Gap elements are never
// initialised, so a fresh buffer costs no pass over its memory.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>

#include "quoddle/base/Precondition.h"

namespace quod {

template <typename T>
class SplitVector {
    static_assert(std::is_trivially_copyable_v<T>, "SplitVector moves elements with plain copies");

  public:
    SplitVector() = default;

    // Takes over a filled buffer of `capacity` elements whose first `length` are the content.
    SplitVector(std::unique_ptr<T[]> body, int64_t capacity, int64_t length)
        : body_(std::move(body)),
          capacity_(capacity),
          part1Length_(length),
          gapLength_(capacity - length) {
        QUOD_PRECONDITION(length >= 0 && length <= capacity, "length outside the body");
    }

    SplitVector(SplitVector&& other) noexcept { *this = std::move(other); }
    SplitVector& operator=(SplitVector&& other) noexcept {
        body_ = std::move(other.body_);
        capacity_ = std::exchange(other.capacity_, 0);
        part1Length_ = std::exchange(other.part1Length_, 0);
        gapLength_ = std::exchange(other.gapLength_, 0);
        return *this;
    }

    [[nodiscard]] int64_t length() const { return capacity_ - gapLength_; }

    // The spare room a buffer for `length` elements is given beyond them. Untouched spare room
    // costs address space only, not resident memory.
    [[nodiscard]] static constexpr int64_t slackFor(int64_t length) {
        return std::max<int64_t>(length / 8, 4096);
    }

    [[nodiscard]] T at(int64_t position) const {
        QUOD_PRECONDITION(position >= 0 && position < length(), "position outside the buffer");
        return position < part1Length_ ? body_[position] : body_[position + gapLength_];
    }

    // The (at most two) contiguous pieces that hold [position, position + count).
    [[nodiscard]] std::pair<std::span<const T>, std::span<const T>> pieces(int64_t position,
                                                                           int64_t count) const {
        checkRange(position, count);
        const int64_t inPart1 = std::clamp<int64_t>(part1Length_ - position, 0, count);
        std::span<const T> first(body_.get() + position, inPart1);
        const int64_t rest = count - inPart1;
        std::span<const T> second(body_.get() + position + inPart1 + gapLength_, rest);
        return {first, second};
    }

    // The whole content as one contiguous span, moving the gap to the end to make it so.
    [[nodiscard]] std::span<const T> contiguousContent() {
        moveGapTo(length());
        return {body_.get(), static_cast<std::size_t>(length())};
    }

    void copyOut(T* destination, int64_t position, int64_t count) const {
        auto [first, second] = pieces(position, count);
        std::copy(first.begin(), first.end(), destination);
        std::copy(second.begin(), second.end(), destination + first.size());
    }

    void insert(int64_t position, std::span<const T> values) {
        QUOD_PRECONDITION(position >= 0 && position <= length(),
                          "insert position outside the buffer");
        const auto count = static_cast<int64_t>(values.size());
        if (count == 0) return;
        ensureGap(count);
        moveGapTo(position);
        std::copy(values.begin(), values.end(), body_.get() + part1Length_);
        part1Length_ += count;
        gapLength_ -= count;
    }

    void insert(int64_t position, T value) { insert(position, std::span<const T>(&value, 1)); }

    void erase(int64_t position, int64_t count) {
        checkRange(position, count);
        if (count == 0) return;
        if (position == 0 && count == length()) {
            // Emptying the buffer needs no copying at all.
            part1Length_ = 0;
            gapLength_ = capacity_;
            return;
        }
        moveGapTo(position);
        gapLength_ += count;
    }

    // Adds delta to every element in [first, last): the bulk update a line-start index needs.
    void addToRange(int64_t first, int64_t last, T delta) requires std::is_arithmetic_v<T> {
        checkRange(first, last - first);
        const int64_t split = std::clamp(part1Length_, first, last);
        for (int64_t i = first; i < split; ++i)
            body_[i] += delta;
        for (int64_t i = split + gapLength_; i < last + gapLength_; ++i)
            body_[i] += delta;
    }

  private:
    void checkRange(int64_t position, int64_t count) const {
        QUOD_PRECONDITION(
            position >= 0 && count >= 0 && position <= length() && count <= length() - position,
            "range outside the buffer");
    }

    void moveGapTo(int64_t position) {
        if (position == part1Length_) return;
        T* const body = body_.get();
        if (position < part1Length_) {
            // Shift body[position, part1Length_) up to the end of the gap.
            std::copy_backward(body + position, body + part1Length_,
                               body + part1Length_ + gapLength_);
        } else {
            // Shift the start of part 2 down into the gap.
            std::copy(body + part1Length_ + gapLength_, body + position + gapLength_,
                      body + part1Length_);
        }
        part1Length_ = position;
    }

    void ensureGap(int64_t needed) {
        if (gapLength_ >= needed) return;
        // Room for this insertion plus slack for the ones that usually follow it.
        const int64_t growth = needed - gapLength_ + slackFor(length() + needed);
        const int64_t capacity = capacity_ + growth;
        auto body = std::make_unique_for_overwrite<T[]>(static_cast<std::size_t>(capacity));
        const int64_t part2Length = length() - part1Length_;
        std::copy(body_.get(), body_.get() + part1Length_, body.get());
        std::copy(body_.get() + part1Length_ + gapLength_, body_.get() + capacity_,
                  body.get() + capacity - part2Length);
        body_ = std::move(body);
        capacity_ = capacity;
        gapLength_ += growth;
    }

    std::unique_ptr<T[]> body_;
    int64_t capacity_ = 0;
    int64_t part1Length_ = 0;
    int64_t gapLength_ = 0;
};

}  // namespace quod
