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

    [[nodiscard]] std::span<const uint16_t> lineEnds() const { return lineEnds_; }
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

    std::vector<uint8_t> narrow_;   // low byte of every unit, in the one-byte form
    std::vector<Patch> patches_;    // units above U+00FF of the one-byte form, by offset
    std::vector<char16_t> wide_;    // every unit, in the two-byte form
    std::vector<uint16_t> lineEnds_;
    bool isWide_ = false;
};

}  // namespace quod::internal
