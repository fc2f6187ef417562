// Locale-aware upper, lower and capitalised case of whole texts.
//
// Full Unicode case mapping with the language rules of the locale: "ß" upper-cases to "SS" (the
// text grows), Turkish "i" to "İ", Greek drops accents in upper case. Capitalisation title-cases
// the first letter or digit-free start of each word (ICU's word breaks for the locale) and lowers
// the rest, and treats "." as a word end even inside a word, so "u.s.a." becomes "U.S.A." and
// "1st" stays "1st" (a word that starts with a digit gets no capital).
#pragma once

#include <unicode/locid.h>

#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/base/CurrentLocale.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT std::u16string localizedUppercase(
    std::u16string_view text, const icu::Locale& locale = currentLocale());
[[nodiscard]] QUODDLE_EXPORT std::u16string localizedLowercase(
    std::u16string_view text, const icu::Locale& locale = currentLocale());
[[nodiscard]] QUODDLE_EXPORT std::u16string localizedCapitalized(
    std::u16string_view text, const icu::Locale& locale = currentLocale());

}  // namespace quod
