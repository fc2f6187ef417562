// Lines of UTF-8 text, found in its bytes without decoding it: every line terminator the text
// functions know ends a line (LF, CR, CR LF as one, NEL, LS, PS), and a text that ends with one
// has no empty last line after it, as enumerateLines has it.
//
// Internal: the line operations that work on UTF-8 bytes (unique over pieces, sorting a file).
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "quoddle/base/internal/Avx2.h"

namespace quod::internal {

// The bytes that can start a line terminator in UTF-8: LF, CR, and the lead bytes of NEL (C2 85)
// and of LS and PS (E2 80 A8, E2 80 A9).
constexpr bool mayStartTerminator(std::uint8_t byte) {
    return byte == 0x0A || byte == 0x0D || byte == 0xC2 || byte == 0xE2;
}

// The length of the line terminator at `at`, or 0.
inline std::size_t terminatorAt(std::string_view text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{0};
    };
    switch (byte(at)) {
        case 0x0A:
            return 1;
        case 0x0D:
            return byte(at + 1) == 0x0A ? 2 : 1;
        case 0xC2:
            return byte(at + 1) == 0x85 ? 2 : 0;
        case 0xE2:
            return byte(at + 1) == 0x80 && (byte(at + 2) == 0xA8 || byte(at + 2) == 0xA9) ? 3 : 0;
        default:
            return 0;
    }
}

// Calls visit(at) for the bytes of `text` that may start a terminator, in order; visit answers
// where to go on from (past the terminator it found, or the next byte). Thirty-two bytes at a time
// where the processor can: the blocks answer where they stopped, and the rest goes byte by byte.
#if QUOD_HAS_AVX2_PATH
template <typename Visit>
QUOD_AVX2_FUNCTION std::size_t candidatesInBlocks(std::string_view text, Visit& visit) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const __m256i lf = _mm256_set1_epi8(0x0A);
    const __m256i cr = _mm256_set1_epi8(0x0D);
    const __m256i nelLead = _mm256_set1_epi8(static_cast<char>(0xC2));
    const __m256i separatorLead = _mm256_set1_epi8(static_cast<char>(0xE2));
    std::size_t block = 0;
    std::size_t next = 0;
    for (; block + 32 <= text.size(); block += 32) {
        const __m256i here = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + block));
        auto lanes = static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_or_si256(
            _mm256_or_si256(_mm256_cmpeq_epi8(here, lf), _mm256_cmpeq_epi8(here, cr)),
            _mm256_or_si256(_mm256_cmpeq_epi8(here, nelLead),
                            _mm256_cmpeq_epi8(here, separatorLead)))));
        for (; lanes != 0; lanes &= lanes - 1) {
            const std::size_t at = block + static_cast<std::size_t>(std::countr_zero(lanes));
            if (at >= next) next = visit(at);
        }
    }
    return std::max(block, next);
}
#endif

template <typename Visit>
void forEachTerminatorCandidate(std::string_view text, Visit& visit) {
    std::size_t at = 0;
#if QUOD_HAS_AVX2_PATH
    if (internal::hasAvx2()) at = candidatesInBlocks(text, visit);
#endif
    while (at < text.size()) {
        at = mayStartTerminator(static_cast<std::uint8_t>(text[at])) ? visit(at) : at + 1;
    }
}

// Calls visit(contents, terminator) for each line of `text`, both views into it; the last line's
// terminator is empty when the text does not end with one.
template <typename Visit>
void forEachUtf8Line(std::string_view text, Visit&& visit) {
    std::size_t lineStart = 0;
    auto atCandidate = [&](std::size_t at) {
        const std::size_t length = terminatorAt(text, at);
        if (length == 0) return at + 1;
        visit(text.substr(lineStart, at - lineStart), text.substr(at, length));
        lineStart = at + length;
        return lineStart;
    };
    forEachTerminatorCandidate(text, atCandidate);
    if (lineStart < text.size()) visit(text.substr(lineStart), std::string_view());
}

}  // namespace quod::internal
