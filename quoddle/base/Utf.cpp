#include "quoddle/base/Utf.h"

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace quod {
namespace internal {
namespace {

constexpr char16_t replacementCharacter = 0xFFFD;

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

}  // namespace

Utf8DecodeResult decodeUtf8(std::string_view utf8, char16_t* out) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(utf8.data());
    const std::size_t size = utf8.size();
    char16_t* const start = out;
    bool wellFormed = true;
    std::size_t i = 0;
    while (i < size) {
        // Most text is ASCII: widen sixteen (or eight) bytes at a time while no high bit is set.
#if defined(__SSE2__)
        while (i + 16 <= size) {
            const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
            if (_mm_movemask_epi8(block) != 0) break;
            const __m128i zero = _mm_setzero_si128();
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(block, zero));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(block, zero));
            out += 16;
            i += 16;
        }
#endif
        while (i + 8 <= size) {
            std::uint64_t block;
            std::memcpy(&block, bytes + i, 8);
            if (block & 0x8080808080808080ULL) break;
            for (int k = 0; k < 8; ++k)
                out[k] = bytes[i + k];
            out += 8;
            i += 8;
        }
        if (i >= size) break;
        const unsigned char lead = bytes[i];
        if (lead < 0x80) {
            *out++ = lead;
            ++i;
            continue;
        }
        const Utf8Lead rules = utf8Lead(lead);
        const unsigned char low = rules.low, high = rules.high;
        const int trailing = rules.length == 0 ? 0 : rules.length - 1;
        if (trailing == 0) {
            *out++ = replacementCharacter;
            wellFormed = false;
            ++i;
            continue;
        }
        char32_t codePoint = lead & (0x3F >> trailing);
        std::size_t consumed = 1;
        bool complete = true;
        for (int k = 0; k < trailing; ++k) {
            if (i + consumed >= size) {
                complete = false;
                break;
            }
            const unsigned char byte = bytes[i + consumed];
            const bool fits = k == 0 ? (byte >= low && byte <= high) : isContinuation(byte);
            if (!fits) {
                complete = false;
                break;
            }
            codePoint = (codePoint << 6) | (byte & 0x3F);
            ++consumed;
        }
        i += consumed;
        if (!complete) {
            *out++ = replacementCharacter;
            wellFormed = false;
        } else if (codePoint >= 0x10000) {
            codePoint -= 0x10000;
            *out++ = static_cast<char16_t>(0xD800 + (codePoint >> 10));
            *out++ = static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
        } else {
            *out++ = static_cast<char16_t>(codePoint);
        }
    }
    return {static_cast<std::size_t>(out - start), wellFormed};
}

}  // namespace internal

namespace {

// Decodes into a string sized for the worst case, then trims it to what was written.
std::u16string decode(std::string_view utf8, bool& wellFormed) {
    std::u16string result(utf8.size(), u'\0');
    const auto decoded = internal::decodeUtf8(utf8, result.data());
    result.resize(decoded.unitsWritten);
    wellFormed = decoded.wellFormed;
    return result;
}

}  // namespace

std::u16string toUtf16(std::string_view utf8) {
    bool wellFormed = true;
    return decode(utf8, wellFormed);
}

std::optional<std::u16string> toUtf16IfValid(std::string_view utf8) {
    bool wellFormed = true;
    std::u16string result = decode(utf8, wellFormed);
    if (!wellFormed) return std::nullopt;
    return result;
}

std::string toUtf8(std::u16string_view utf16) {
    // Sized for the worst case (three bytes a unit; a pair's four bytes come from its two units)
    // and cut back at the end: appending byte by byte cost more than the encoding itself.
    std::string result(utf16.size() * 3, '\0');
    char* out = result.data();
    const char16_t* units = utf16.data();
    const std::size_t size = utf16.size();
    for (std::size_t i = 0; i < size;) {
        // Four ASCII units at a time: the common case.
        if (i + 4 <= size) {
            std::uint64_t block;
            std::memcpy(&block, units + i, sizeof block);
            if ((block & 0xFF80'FF80'FF80'FF80u) == 0) {
                for (int k = 0; k < 4; ++k)
                    out[k] = static_cast<char>(units[i + static_cast<std::size_t>(k)]);
                out += 4;
                i += 4;
                continue;
            }
        }
        char32_t codePoint = units[i++];
        if (codePoint < 0x80) {
            *out++ = static_cast<char>(codePoint);
            continue;
        }
        if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
            const bool pairs =
                codePoint <= 0xDBFF && i < size && units[i] >= 0xDC00 && units[i] <= 0xDFFF;
            if (pairs) {
                codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (units[i] - 0xDC00);
                ++i;
            } else {
                codePoint = 0xFFFD;
            }
        }
        if (codePoint < 0x800) {
            *out++ = static_cast<char>(0xC0 | (codePoint >> 6));
        } else if (codePoint < 0x10000) {
            *out++ = static_cast<char>(0xE0 | (codePoint >> 12));
            *out++ = static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        } else {
            *out++ = static_cast<char>(0xF0 | (codePoint >> 18));
            *out++ = static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
            *out++ = static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        }
        *out++ = static_cast<char>(0x80 | (codePoint & 0x3F));
    }
    result.resize(static_cast<std::size_t>(out - result.data()));
    return result;
}

}  // namespace quod
