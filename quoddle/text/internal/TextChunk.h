// One leaf of the text storage: a few thousand UTF-16 units in the smallest form that still reads
// any unit in O(1) or nearly, with the offsets at which its lines end.
//
// Most text is Latin-1 with a few other characters, so a chunk whose units are nearly all below
// U+0100 keeps one byte per unit and lists the rest as patches (offset, unit); a chunk with many
// such characters keeps two bytes per unit. Reading a patched chunk searches the few patches.
//
// Line ends are the offsets just behind each line terminator (a CR LF pair counts once, at its
// end). A chunk never ends between the CR and the LF of a pair (the storage keeps its chunks so),
// so its line ends depend on its own units only.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "quoddle/text/internal/SummedTree.h"

namespace quod::internal {

// The line ends of a chunk, in order. Most chunks end a few dozen lines: those lists live inside
// the chunk, so that a line question finds the chunk and its ends in one place instead of following
// a pointer to another allocation (in a large document each costs a cache miss); longer lists go
// to the heap.
class LineEnds {
  public:
    static constexpr uint32_t inlineCapacity = 64;

    LineEnds() = default;
    LineEnds(LineEnds&& other) noexcept;
    LineEnds& operator=(LineEnds&& other) noexcept;
    LineEnds(const LineEnds&) = delete;
    LineEnds& operator=(const LineEnds&) = delete;
    ~LineEnds();

    [[nodiscard]] uint16_t* begin() { return data(); }
    [[nodiscard]] uint16_t* end() { return data() + size_; }
    [[nodiscard]] const uint16_t* begin() const { return data(); }
    [[nodiscard]] const uint16_t* end() const { return data() + size_; }
    [[nodiscard]] std::size_t size() const { return size_; }

    void assign(const uint16_t* first, const uint16_t* last);
    void push_back(uint16_t end);
    // As std::vector's: erase answers where the element after the erased ones now is, insert
    // where the inserted one is.
    uint16_t* erase(uint16_t* first, uint16_t* last);
    uint16_t* insert(uint16_t* at, uint16_t end);

  private:
    [[nodiscard]] bool onHeap() const { return capacity_ > inlineCapacity; }
    [[nodiscard]] uint16_t* data() { return onHeap() ? heap_ : inline_; }
    [[nodiscard]] const uint16_t* data() const { return onHeap() ? heap_ : inline_; }
    void reserve(uint32_t capacity);
    // Moves other's ends here, leaving it empty; whatever this held must be released before.
    void takeFrom(LineEnds& other) noexcept;

    uint32_t size_ = 0;
    uint32_t capacity_ = inlineCapacity;
    union {
        uint16_t inline_[inlineCapacity];
        uint16_t* heap_;
    };
};

class TextChunk {
  public:
    // Chunks hold at most this many units, so that offsets fit in 16 bits.
    static constexpr int64_t capacityLimit = 65535;

    TextChunk() = default;
    explicit TextChunk(std::u16string_view units);
    // From well-formed UTF-8 whose characters are nearly all below U+0100, decoded straight into
    // the one-byte form; no value for bytes that are ill-formed or hold many other characters.
    [[nodiscard]] static std::optional<TextChunk> fromMostlyLatin1Utf8(std::string_view bytes);

    [[nodiscard]] int64_t length() const;
    [[nodiscard]] char16_t at(int64_t offset) const;
    // Widens [from, from + count) into out.
    void copyOut(int64_t from, int64_t count, char16_t* out) const;

    // Replaces units [from, from + count) with `units`, keeping the line ends up to date in time
    // proportional to the chunk's units after the change, without rescanning the rest.
    void replace(int64_t from, int64_t count, std::u16string_view units);

    [[nodiscard]] std::span<const uint16_t> lineEnds() const {
        return {lineEnds_.begin(), lineEnds_.size()};
    }
    // How many lines end at or before `offset`.
    [[nodiscard]] int64_t linesEndingThrough(int64_t offset) const;

    [[nodiscard]] TreeMeasures measures() const {
        return {length(), static_cast<int64_t>(lineEnds_.size())};
    }

  private:
    struct Patch {
        uint16_t offset;
        char16_t unit;
    };

    void becomeWide();

    std::vector<uint8_t> narrow_;  // low byte of every unit, in the one-byte form
    std::vector<Patch> patches_;   // units above U+00FF of the one-byte form, by offset
    std::vector<char16_t> wide_;   // every unit, in the two-byte form
    LineEnds lineEnds_;
    bool isWide_ = false;
};

}  // namespace quod::internal
