#include "quoddle/strings/Base64.h"

#include <openssl/evp.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

#include "quoddle/base/Utf.h"

namespace quod {
namespace {

// The OpenSSL calls count in int. Chunks of whole groups (3 bytes in, 4 digits out) keep padding
// out of every chunk but the last, so the pieces join into one encoding.
constexpr std::size_t bytesPerChunk = std::size_t{3} << 24;
constexpr std::size_t digitsPerChunk = std::size_t{4} << 24;

bool isBase64Digit(char16_t unit) {
    return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z') ||
           (unit >= u'0' && unit <= u'9') || unit == u'+' || unit == u'/';
}

// The bytes the text encodes, or no value when it is not strict base-64.
std::optional<std::string> decode(std::u16string_view text) {
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == u'=') {
        ++padding;
    }
    // EVP_DecodeBlock is lenient (it skips surrounding whitespace), so check every digit here. The
    // padding is handed to it as "A", the zero digit, and its bytes are cut off afterwards.
    std::string digits(text.size(), 'A');
    for (std::size_t i = 0; i < text.size() - padding; ++i) {
        if (!isBase64Digit(text[i])) {
            return std::nullopt;
        }
        digits[i] = static_cast<char>(text[i]);
    }

    std::string bytes(text.size() / 4 * 3, '\0');
    auto* out = reinterpret_cast<unsigned char*>(bytes.data());
    for (std::size_t at = 0; at < digits.size(); at += digitsPerChunk) {
        const auto count = static_cast<int>(std::min(digitsPerChunk, digits.size() - at));
        const int decoded =
            EVP_DecodeBlock(out, reinterpret_cast<const unsigned char*>(digits.data() + at), count);
        if (decoded < 0) {
            return std::nullopt;
        }
        out += decoded;
    }
    bytes.resize(bytes.size() - padding);
    return bytes;
}

}  // namespace

void toBase64(std::u16string& s) {
    const std::string bytes = toUtf8(s);
    // One more than the digits: EVP_EncodeBlock ends what it writes with a NUL.
    std::string digits((bytes.size() + 2) / 3 * 4 + 1, '\0');
    std::size_t written = 0;
    for (std::size_t at = 0; at < bytes.size(); at += bytesPerChunk) {
        const auto count = static_cast<int>(std::min(bytesPerChunk, bytes.size() - at));
        written += static_cast<std::size_t>(
            EVP_EncodeBlock(reinterpret_cast<unsigned char*>(digits.data() + written),
                            reinterpret_cast<const unsigned char*>(bytes.data() + at), count));
    }
    s.assign(digits.begin(), digits.begin() + static_cast<std::ptrdiff_t>(written));
}

void fromBase64(std::u16string& s) {
    std::optional<std::u16string> text;
    if (const std::optional<std::string> bytes = decode(s)) {
        text = toUtf16IfValid(*bytes);
    }
    if (text) {
        s = std::move(*text);
    } else {
        s.clear();
    }
}

}  // namespace quod
