// Fuzzes Text::guessEncoding against a literal model of its rules.
//
// The function works on the UTF-8 bytes (one validation pass, then byte searches); the model
// decodes to UTF-16 and follows the rules as written, in UTF-16 units, with ICU's simple case
// folding for "ignore case". Any disagreement, crash or out-of-bounds read stops the run. The model
// is slow, so large inputs only check that the function finishes.
#include <unicode/uchar.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/EncodingDetection.h"
#include "quoddle/strings/IanaCharsetNames.h"

namespace {

using quod::EncodingNumber;

constexpr std::size_t largestModelledInput = 64 * 1024;

std::u16string folded(std::u16string_view text) {
    std::u16string result(text);
    for (std::size_t i = 0; i < result.size(); ++i) {
        // Simple folding maps single units of the BMP to single units, which keeps the offsets.
        if (result[i] < 0xD800 || result[i] > 0xDFFF) {
            result[i] = static_cast<char16_t>(u_foldCase(result[i], U_FOLD_CASE_DEFAULT));
        }
    }
    return result;
}

EncodingNumber model(std::string_view bytes) {
    const auto decoded = quod::toUtf16IfValid(bytes);
    if (!decoded || decoded->size() < 10) return 0;
    const std::u16string& text = *decoded;
    const std::u16string lower = folded(text);
    const auto nameOf = [](std::u16string_view name) {
        return quod::encodingForIanaCharsetName(quod::toUtf8(name));
    };
    if (const std::size_t keyword = lower.find(u"charset="); keyword != std::u16string::npos) {
        std::size_t start = keyword + 8;
        if (start < text.size() && text[start] == u'"') ++start;
        const std::size_t end = text.find_first_of(u"\"' />", start);
        if (end == std::u16string::npos || end == start) return 0;
        return nameOf(std::u16string_view(text).substr(start, end - start));
    }
    const std::size_t keyword = lower.find(u"encoding=");
    if (keyword == std::u16string::npos || text.size() - keyword < 10) return 0;
    const std::size_t start = keyword + 10;
    const std::size_t end = text.find(u"?>", start);
    if (end == std::u16string::npos || end == start) return 0;
    std::u16string_view value = std::u16string_view(text).substr(start, end - start);
    for (const char16_t quote : {u'"', u'\''}) {
        if (value.starts_with(quote)) value.remove_prefix(1);
        if (value.ends_with(quote)) value.remove_suffix(1);
    }
    return nameOf(value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const EncodingNumber guess = quod::Text::guessEncoding(std::span(data, size));
    if (size <= largestModelledInput) {
        const std::string_view bytes(reinterpret_cast<const char*>(data), size);
        if (guess != model(bytes)) __builtin_trap();
    }
    return 0;
}
