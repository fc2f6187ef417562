// Scanning UTF-16 text eight units at a time, for the hot loops over whole documents.
//
// Uses the compiler's portable vector type (SSE2 on x86-64, NEON on ARM); only the step that turns
// matching lanes into a bit mask has an SSE2 shortcut, with a portable loop elsewhere. Compare a
// block against a unit with `block == uint16_t{unit}` (a char16_t operand crashes clang 14): each
// matching lane becomes all ones. The helpers then find the matching lanes, lane 0 being the first
// unit.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace quod::internal {

using UnitBlock = uint16_t __attribute__((vector_size(16)));
using UnitBlockMatches = int16_t __attribute__((vector_size(16)));
inline constexpr std::size_t unitsPerBlock = sizeof(UnitBlock) / sizeof(char16_t);

[[nodiscard]] inline UnitBlock loadUnitBlock(const char16_t* units) {
    UnitBlock block;
    std::memcpy(&block, units, sizeof block);
    return block;
}

// One bit per matching lane, lane 0 in bit 0.
[[nodiscard]] inline unsigned matchingLanes(UnitBlockMatches matches) {
#if defined(__SSE2__)
    // Narrow each all-ones or zero lane to a byte, then take one bit per byte.
    const __m128i bytes = _mm_packs_epi16(reinterpret_cast<__m128i>(matches), _mm_setzero_si128());
    return static_cast<unsigned>(_mm_movemask_epi8(bytes));
#else
    unsigned mask = 0;
    for (std::size_t lane = 0; lane < unitsPerBlock; ++lane) {
        mask |= static_cast<unsigned>(matches[lane] & 1) << lane;
    }
    return mask;
#endif
}

// Calls visit(lane) for every matching lane, in ascending order.
template <typename Visit>
void forEachMatchingLane(UnitBlockMatches matches, Visit&& visit) {
    for (unsigned mask = matchingLanes(matches); mask != 0; mask &= mask - 1) {
        visit(static_cast<std::size_t>(std::countr_zero(mask)));
    }
}

// The first matching lane, or unitsPerBlock when none matches.
[[nodiscard]] inline std::size_t firstMatchingLane(UnitBlockMatches matches) {
    const unsigned mask = matchingLanes(matches);
    return mask == 0 ? unitsPerBlock : static_cast<std::size_t>(std::countr_zero(mask));
}

}  // namespace quod::internal
