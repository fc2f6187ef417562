// The locale that sorting, case mapping and word breaking follow.
//
// Read once from the environment (LC_ALL, then LC_MESSAGES, then LANG), as ICU itself would, with
// one correction: the C and POSIX locales become en_US. ICU's own choice for them, en_US_POSIX,
// sorts upper case before lower case and splits "e.g." into two words, which no desktop user sees.
// A host may set another locale at any time; tests pass one explicitly.
#pragma once

#include <unicode/locid.h>

#include <string_view>

#include "quoddle/Export.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT icu::Locale currentLocale();

QUODDLE_EXPORT void setCurrentLocale(const icu::Locale& locale);

// The locale a POSIX locale name ("de_DE.UTF-8@euro", "C", "") stands for.
[[nodiscard]] QUODDLE_EXPORT icu::Locale localeFromPosixName(std::string_view name);

}  // namespace quod
