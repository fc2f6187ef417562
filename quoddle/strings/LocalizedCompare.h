// The ordering that file browsers show: "localized standard compare".
//
// Case-insensitive first, runs of digits by numeric value, punctuation significant, accents before
// case, the current locale's alphabet: "Item1" < "item9" < "item10", "file" < "fIle" < "File" <
// "FILE", "resume" < "Resume" < "résumé". Strings that collate the same are ordered by their digit
// runs (the first pair of equal value but different length puts the shorter first: "a1" < "a01")
// and then by UTF-16 units, so only identical strings compare equal.
//
// ICU's collator does the work. The C and POSIX locales are not special here: pass the current
// locale (which maps them to en_US) or an explicit one.
#pragma once

#include <unicode/locid.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/base/CurrentLocale.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT std::weak_ordering localizedStandardCompare(
    std::u16string_view a, std::u16string_view b, const icu::Locale& locale = currentLocale());

enum class SortOrder { ascending, descending };

// The indexes of `strings` in localized standard order; equal strings keep their relative order
// (also when descending). Computes one collation key per string, so sorting n strings costs n key
// computations and O(n log n) byte comparisons, not O(n log n) collations.
[[nodiscard]] QUODDLE_EXPORT std::vector<std::size_t> localizedStandardOrder(
    const std::vector<std::u16string_view>& strings, SortOrder order,
    const icu::Locale& locale = currentLocale());

// For callers that keep collation keys of their own (many strings held elsewhere, keys computed in
// parallel): writes the collation key of `text` to `key`, at most `capacity` bytes, and answers its
// length; when that exceeds `capacity`, nothing useful was written: call again with the room it
// asks for. Keys compare as localizedStandardCompare compares their strings (bytes by memcmp, then
// a shorter key first) except where it breaks ties: equal keys are then ordered by
// localizedStandardTieBreak. Safe to call from several threads at once.
[[nodiscard]] QUODDLE_EXPORT std::size_t localizedStandardKey(
    std::u16string_view text, std::uint8_t* key, std::size_t capacity,
    const icu::Locale& locale = currentLocale());

// Orders two strings whose collation keys are equal: by their digit runs ("a1" before "a01"),
// then by UTF-16 units; equivalent only when identical.
[[nodiscard]] QUODDLE_EXPORT std::weak_ordering localizedStandardTieBreak(std::u16string_view a,
                                                                          std::u16string_view b);

}  // namespace quod
