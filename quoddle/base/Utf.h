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

namespace quod {

[[nodiscard]] std::u16string toUtf16(std::string_view utf8);

// The decoded text, or no value when the bytes are not well-formed UTF-8.
[[nodiscard]] std::optional<std::u16string> toUtf16IfValid(std::string_view utf8);

[[nodiscard]] std::string toUtf8(std::u16string_view utf16);

namespace internal {

struct Utf8DecodeResult {
    std::size_t unitsWritten = 0;
    bool wellFormed = true;
};

// Decodes into `out`, which must have room for utf8.size() units: UTF-8 never needs more UTF-16
// units than it has bytes. The building block of the conversions above and of fast file loading.
Utf8DecodeResult decodeUtf8(std::string_view utf8, char16_t* out);

}  // namespace internal
}  // namespace quod
