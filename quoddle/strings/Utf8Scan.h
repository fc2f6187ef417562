// Checking bytes for well-formed UTF-8 without decoding them, for the encoding detectors.
//
// The scan reads each byte once and writes nothing, skipping ASCII sixteen bytes at a time, so it
// runs at close to memory speed on ordinary text. It stops at the first ill-formed sequence (the
// Unicode standard's table of well-formed byte sequences; a sequence cut off by the end of the
// input is ill-formed too).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quod::internal {

struct Utf8Scan {
    bool wellFormed = true;
    // Bytes before the first ill-formed sequence: all of them when well-formed.
    std::size_t wellFormedBytes = 0;
    // UTF-16 units that those bytes decode to.
    std::size_t utf16Length = 0;
};

[[nodiscard]] Utf8Scan scanUtf8(std::span<const std::uint8_t> bytes);

}  // namespace quod::internal
