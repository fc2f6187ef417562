// The one pair of conversions between UTF-8 (keys, paths, messages) and UTF-16 (document text).
//
// Decoding never fails loudly: each ill-formed UTF-8 sequence (its maximal valid prefix, as the
// Unicode standard recommends) becomes one U+FFFD, so a damaged file still opens. Callers that must
// reject bad bytes instead use `toUtf16IfValid`. Encoding turns an unpaired surrogate into U+FFFD.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT std::u16string toUtf16(std::string_view utf8);

// The decoded text, or no value when the bytes are not well-formed UTF-8.
[[nodiscard]] QUODDLE_EXPORT std::optional<std::u16string> toUtf16IfValid(std::string_view utf8);

[[nodiscard]] QUODDLE_EXPORT std::string toUtf8(std::u16string_view utf16);

namespace internal {

// What a UTF-8 lead byte allows: the sequence length (0 for a byte that cannot start one) and the
// accepted range of the second byte; later bytes are plain continuation bytes. The ranges exclude
// overlong forms, surrogates and values past U+10FFFF (the Unicode table of well-formed sequences).
struct Utf8Lead {
    int length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
};

[[nodiscard]] constexpr Utf8Lead utf8Lead(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) return {2};
    if (lead >= 0xE0 && lead <= 0xEF) {
        return {3, static_cast<unsigned char>(lead == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(lead == 0xED ? 0x9F : 0xBF)};
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        return {4, static_cast<unsigned char>(lead == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(lead == 0xF4 ? 0x8F : 0xBF)};
    }
    return {0};
}

struct Utf8DecodeResult {
    std::size_t unitsWritten = 0;
    bool wellFormed = true;
};

// Decodes into `out`, which must have room for utf8.size() units: UTF-8 never needs more UTF-16
// units than it has bytes. The building block of the conversions above and of fast file loading.
Utf8DecodeResult decodeUtf8(std::string_view utf8, char16_t* out);

}  // namespace internal
}  // namespace quod
