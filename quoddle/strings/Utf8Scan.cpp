#include "quoddle/strings/Utf8Scan.h"

#include <bit>
#include <cstring>

#include "quoddle/base/Utf.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace quod::internal {
namespace {

// The ASCII bytes at `at`: up to the first byte with its high bit set, and only as far as whole
// blocks reach (the caller handles the tail byte by byte).
std::size_t asciiRun(const std::uint8_t* bytes, std::size_t at, std::size_t size) {
    std::size_t i = at;
#if defined(__SSE2__)
    for (; i + 16 <= size; i += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
        const auto highBits = static_cast<unsigned>(_mm_movemask_epi8(block));
        if (highBits != 0) return i + static_cast<std::size_t>(std::countr_zero(highBits)) - at;
    }
#else
    for (; i + 8 <= size; i += 8) {
        std::uint64_t block;
        std::memcpy(&block, bytes + i, sizeof block);
        if ((block & 0x8080'8080'8080'8080u) != 0) break;
    }
#endif
    return i - at;
}

}  // namespace

Utf8Scan scanUtf8(std::span<const std::uint8_t> input) {
    const std::uint8_t* const bytes = input.data();
    const std::size_t size = input.size();
    std::size_t i = 0;
    std::size_t units = 0;
    while (i < size) {
        const std::size_t ascii = asciiRun(bytes, i, size);
        i += ascii;
        units += ascii;
        if (i >= size) break;
        const std::uint8_t lead = bytes[i];
        if (lead < 0x80) {
            ++i;
            ++units;
            continue;
        }
        const Utf8Lead rules = utf8Lead(lead);
        const auto length = static_cast<std::size_t>(rules.length);
        const std::uint8_t low = rules.low, high = rules.high;
        bool wellFormed = length != 0 && i + length <= size;
        for (std::size_t k = 1; wellFormed && k < length; ++k) {
            const std::uint8_t byte = bytes[i + k];
            wellFormed = k == 1 ? byte >= low && byte <= high : (byte & 0xC0) == 0x80;
        }
        if (!wellFormed) return {false, i, units};
        i += length;
        units += length == 4 ? 2 : 1;
    }
    return {true, size, units};
}

}  // namespace quod::internal
