// Fuzzes Text::detectEncoding, and the conversion a host runs on its answer.
//
// Beyond crashes and out-of-bounds reads, it checks the rules that hold for every input: UTF-8
// without NUL or escape bytes is always UTF-8 (no other byte-order mark is well-formed UTF-8
// without a NUL, and only ISO-2022's escapes make 7-bit text something else), and the answer is
// never the unknown-name value.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/EncodingConversion.h"
#include "quoddle/strings/EncodingDetection.h"

namespace {

// Larger inputs only check that detection finishes in time.
constexpr std::size_t largestConvertedInput = 1024 * 1024;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> bytes(data, size);
    const quod::EncodingNumber encoding = quod::Text::detectEncoding(bytes);
    if (encoding == quod::Encodings::unknownCharsetName) __builtin_trap();
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const bool plainUtf8 = size > 0 && std::memchr(data, 0, size) == nullptr &&
                           std::memchr(data, 0x1B, size) == nullptr &&
                           quod::toUtf16IfValid(text).has_value();
    if (plainUtf8 && encoding != quod::Encodings::utf8) __builtin_trap();
    if (size <= largestConvertedInput) {
        // A converter may decode what it cannot encode (ICU's fallback mappings), so the way back
        // is only exercised, not checked.
        if (const auto decoded = quod::decodeText(bytes, encoding)) {
            [[maybe_unused]] const auto encoded = quod::encodeText(*decoded, encoding);
        }
    }
    return 0;
}
