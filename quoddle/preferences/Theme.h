// The four built-in colour themes.
//
// A theme is a dictionary in the stored form of the preferences it sets, so storing each entry
// under its key applies the theme: the fifteen colour keys ("APIColour" ... "VariablesColour"),
// each an array of four reals (red, green, blue, alpha), plus "LineNumberFont" and "TextFont",
// each a stored font string ("Menlo-Regular@@@@9.00", see DefaultFont). A list of themes in this
// form is what "Themes9" holds.
//
// `all()` lists stockholm, copenhagen, oslo (the dark one) and helsinki, in the order of `City`.
// It is built once, on first use, with the fonts the catalogue (Font.h) offers then, and never
// changes afterwards, even if the user's fixed-pitch font does.
//
// Choosing a theme by appearance and storing its entries is the host's work; "CurrentTheme" and
// "HasManuallyChangedTheme" are there for it.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/preferences/PropertyList.h"

namespace quod::Theme {

// Raw values are indexes into `all()` and are stored under "CurrentTheme": never renumber.
enum class City : int64_t { stockholm = 0, copenhagen = 1, oslo = 2, helsinki = 3 };

// The city with that raw value; no value outside 0 to 3.
[[nodiscard]] constexpr std::optional<City> cityFromRawValue(int64_t rawValue) {
    if (rawValue < 0 || rawValue > 3) return std::nullopt;
    return static_cast<City>(rawValue);
}

[[nodiscard]] QUODDLE_EXPORT const std::vector<PlistDictionary>& all();

}  // namespace quod::Theme
