#include "quoddle/strings/Utf8Scan.h"

#include <array>
#include <bit>
#include <cstring>

#include "quoddle/base/Utf.h"
#include "quoddle/base/internal/Avx2.h"

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

// From `i`, a character start, with `units` counted before it.
Utf8Scan scanFrom(const std::uint8_t* bytes, std::size_t size, std::size_t i, std::size_t units) {
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

#if QUOD_HAS_AVX2_PATH

QUOD_AVX2_FUNCTION inline __m256i table(std::array<std::uint8_t, 16> entries) {
    __m128i half;
    std::memcpy(&half, entries.data(), sizeof half);
    return _mm256_broadcastsi128_si256(half);
}

QUOD_AVX2_FUNCTION inline __m256i highNibble(__m256i bytes) {
    return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0x0F));
}

// Each byte of `current` replaced by the one `shift` bytes before it, reaching into `before`.
template <int shift>
QUOD_AVX2_FUNCTION inline __m256i previous(__m256i current, __m256i before) {
    return _mm256_alignr_epi8(current, _mm256_permute2x128_si256(before, current, 0x21),
                              16 - shift);
}

// Thirty-two bytes at a time with the lookup-table method of Keiser and Lemire ("Validating UTF-8
// in less than one instruction per byte", 2021): three table lookups on the high and low nibbles
// of each byte and of the byte before it classify every two-byte pair, and the bytes two and
// three back say where a continuation byte must be. A block that fails hands over to the scalar
// scan from the last character start before it, which finds the exact place; so does the tail.
// The UTF-16 length comes from the same blocks: a unit for every byte that is not a continuation
// byte, and one more for every four-byte lead.
QUOD_AVX2_FUNCTION Utf8Scan scanAvx2(const std::uint8_t* bytes, std::size_t size) {
    constexpr std::uint8_t tooShort = 1 << 0, tooLong = 1 << 1, overlong3 = 1 << 2,
                           tooLarge = 1 << 3, surrogate = 1 << 4, overlong2 = 1 << 5,
                           tooLarge1000 = 1 << 6, overlong4 = 1 << 6, twoContinuations = 1 << 7;
    constexpr std::uint8_t carry = tooShort | tooLong | twoContinuations;
    // By the high nibble of the first byte of a pair.
    const __m256i firstHigh = table(
        {tooLong, tooLong, tooLong, tooLong, tooLong, tooLong, tooLong, tooLong, twoContinuations,
         twoContinuations, twoContinuations, twoContinuations, tooShort | overlong2, tooShort,
         tooShort | overlong3 | surrogate, tooShort | tooLarge | tooLarge1000 | overlong4});
    // By its low nibble.
    constexpr std::uint8_t large = carry | tooLarge | tooLarge1000;
    const __m256i firstLow = table({carry | overlong3 | overlong2 | overlong4, carry | overlong2,
                                    carry, carry, carry | tooLarge, large, large, large, large,
                                    large, large, large, large, large | surrogate, large, large});
    // By the high nibble of the second byte.
    constexpr std::uint8_t continuation = tooLong | overlong2 | twoContinuations;
    const __m256i secondHigh =
        table({tooShort, tooShort, tooShort, tooShort, tooShort, tooShort, tooShort, tooShort,
               continuation | overlong3 | tooLarge1000 | overlong4,
               continuation | overlong3 | tooLarge, continuation | surrogate | tooLarge,
               continuation | surrogate | tooLarge, tooShort, tooShort, tooShort, tooShort});
    const __m256i lowNibble = _mm256_set1_epi8(0x0F);
    const __m256i thirdByteFloor = _mm256_set1_epi8(static_cast<char>(0xE0 - 0x80));
    const __m256i fourthByteFloor = _mm256_set1_epi8(static_cast<char>(0xF0 - 0x80));
    const __m256i highBit = _mm256_set1_epi8(static_cast<char>(0x80));
    const __m256i lastContinuation = _mm256_set1_epi8(static_cast<char>(0xBF - 256));
    const __m256i lastThreeByteLead = _mm256_set1_epi8(static_cast<char>(0xEF - 256));

    __m256i before = _mm256_setzero_si256();
    std::size_t units = 0;
    std::size_t i = 0;
    for (; i + 32 <= size; i += 32) {
        const __m256i current = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + i));
        const __m256i prev1 = previous<1>(current, before);
        const __m256i special = _mm256_and_si256(
            _mm256_and_si256(_mm256_shuffle_epi8(firstHigh, highNibble(prev1)),
                             _mm256_shuffle_epi8(firstLow, _mm256_and_si256(prev1, lowNibble))),
            _mm256_shuffle_epi8(secondHigh, highNibble(current)));
        const __m256i prev2 = previous<2>(current, before);
        const __m256i prev3 = previous<3>(current, before);
        const __m256i mustContinue =
            _mm256_and_si256(_mm256_or_si256(_mm256_subs_epu8(prev2, thirdByteFloor),
                                             _mm256_subs_epu8(prev3, fourthByteFloor)),
                             highBit);
        if (!_mm256_testz_si256(_mm256_xor_si256(mustContinue, special),
                                _mm256_xor_si256(mustContinue, special))) {
            break;
        }
        // Signed comparisons: ASCII is above both bounds, so four-byte leads need the high bit.
        const auto notContinuation = static_cast<unsigned>(
            _mm256_movemask_epi8(_mm256_cmpgt_epi8(current, lastContinuation)));
        const auto fourByteLeads = static_cast<unsigned>(_mm256_movemask_epi8(current)) &
                                   static_cast<unsigned>(_mm256_movemask_epi8(
                                       _mm256_cmpgt_epi8(current, lastThreeByteLead)));
        units +=
            static_cast<std::size_t>(std::popcount(notContinuation) + std::popcount(fourByteLeads));
        before = current;
    }
    // The blocks before `i` may end inside a character, cut off or not: the scalar scan goes
    // again over the last character that starts before `i`, which the blocks counted as one unit
    // (two for a four-byte lead) and its continuation bytes as none. When the last three bytes
    // are all continuation bytes, the character before them is complete.
    std::size_t start = i;
    for (std::size_t back = 1; back <= 3 && back <= i; ++back) {
        if ((bytes[i - back] & 0xC0) != 0x80) {
            start = i - back;
            units -= bytes[start] >= 0xF0 ? 2 : 1;
            break;
        }
    }
    return scanFrom(bytes, size, start, units);
}
#endif

}  // namespace

Utf8Scan scanUtf8(std::span<const std::uint8_t> input) {
#if QUOD_HAS_AVX2_PATH
    if (hasAvx2()) return scanAvx2(input.data(), input.size());
#endif
    return scanFrom(input.data(), input.size(), 0, 0);
}

}  // namespace quod::internal
