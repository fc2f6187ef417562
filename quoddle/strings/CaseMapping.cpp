#include "quoddle/strings/CaseMapping.h"

#include <unicode/unistr.h>

#include <cstdint>

#include "quoddle/base/Precondition.h"

namespace quod {
namespace {

icu::UnicodeString copyOf(std::u16string_view text) {
    QUOD_PRECONDITION(text.size() <= static_cast<std::size_t>(INT32_MAX), "text too long for ICU");
    return icu::UnicodeString(text.data(), static_cast<int32_t>(text.size()));
}

std::u16string toString(const icu::UnicodeString& text) {
    return {text.getBuffer(), static_cast<std::size_t>(text.length())};
}

}  // namespace

std::u16string localizedUppercase(std::u16string_view text, const icu::Locale& locale) {
    return toString(copyOf(text).toUpper(locale));
}

std::u16string localizedLowercase(std::u16string_view text, const icu::Locale& locale) {
    return toString(copyOf(text).toLower(locale));
}

std::u16string localizedCapitalized(std::u16string_view text, const icu::Locale& locale) {
    // Each "."-separated piece is title-cased on its own with the locale's word breaks.
    std::u16string result;
    result.reserve(text.size());
    std::size_t start = 0;
    for (;;) {
        const std::size_t dot = text.find(u'.', start);
        const std::u16string_view piece = text.substr(
            start, dot == std::u16string_view::npos ? std::u16string_view::npos : dot - start);
        result += toString(copyOf(piece).toTitle(nullptr, locale));
        if (dot == std::u16string_view::npos) break;
        result += u'.';
        start = dot + 1;
    }
    return result;
}

}  // namespace quod
