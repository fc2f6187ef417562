// Small edits and tests on UTF-16 strings that the editor's commands are built from.
//
//   - chop removes `string` from an edge of `s` only when it is there as whole characters: "e" is
//     not chopped from "e\u0301x", whose first character is "é". With both edges the start is
//     chopped first and the end of what remains next, so "ab" chopped from both edges of "abab"
//     leaves "" and of "ab" also leaves "".
//   - insert puts `string` at the start, the end or both.
//   - quote wraps a string that holds a space (U+0020) in double quotes, adding only the quotes
//     that are missing: `my file` -> `"my file"`, `my file"` -> `"my file"`; no space, no change.
//   - trim strips whitespace, and newlines when asked, as CharacterSets.h defines them.
//   - firstUppercased upper-cases the first character (grapheme cluster) and lower-cases the rest,
//     by the locale's rules: "hELLO" -> "Hello", "ßx" -> "SSx", in Turkish "iX" -> "İx".
//   - containsCaseInsensitive compares under full Unicode case folding, not locale rules, so
//     "STRASSE" contains "straße". An empty `other` is never contained.
#pragma once

#include <unicode/locid.h>

#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/base/CurrentLocale.h"
#include "quoddle/strings/StringEdge.h"

namespace quod {

QUODDLE_EXPORT void chop(std::u16string& s, std::u16string_view string, StringEdge fromEdge);

QUODDLE_EXPORT void insert(std::u16string& s, std::u16string_view string, StringEdge atEdge);

[[nodiscard]] QUODDLE_EXPORT std::u16string quote(std::u16string_view s);

[[nodiscard]] QUODDLE_EXPORT std::u16string trim(std::u16string_view s, bool alsoNewline,
                                                 StringEdge edge);

[[nodiscard]] QUODDLE_EXPORT std::u16string firstUppercased(
    std::u16string_view s, const icu::Locale& locale = currentLocale());

[[nodiscard]] QUODDLE_EXPORT bool containsCaseInsensitive(std::u16string_view s,
                                                          std::u16string_view other);

// Every non-overlapping occurrence of `target`, found left to right, replaced by `replacement`:
// the platform's literal replace-all. An empty target matches nothing.
[[nodiscard]] QUODDLE_EXPORT std::u16string replacingOccurrences(std::u16string_view text,
                                                                 std::u16string_view target,
                                                                 std::u16string_view replacement);

// True when the two texts are equal under full Unicode case folding (no locale).
[[nodiscard]] QUODDLE_EXPORT bool equalsCaseInsensitive(std::u16string_view s,
                                                        std::u16string_view other);

}  // namespace quod
