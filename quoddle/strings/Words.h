// The words of a text, by the locale's word break rules (see TextBoundaries.h for what counts as a
// word: letters, numbers, kana and ideographs; never spaces, punctuation, symbols or emoji).
//
// In en_US, "It's", "3.14", "e.g", "foo_bar" and "foo@bar.com" are one word each; "foo-bar" and
// "e-mail" are two; "C++" is the word "C". Chinese, Japanese and Thai are split by dictionary. The
// result depends on the locale and the ICU version, so tests pass a locale explicitly.
#pragma once

#include <unicode/locid.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/base/CurrentLocale.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT std::vector<std::u16string> words(
    std::u16string_view s, const icu::Locale& locale = currentLocale());

[[nodiscard]] QUODDLE_EXPORT int64_t wordCount(std::u16string_view s,
                                               const icu::Locale& locale = currentLocale());

}  // namespace quod
