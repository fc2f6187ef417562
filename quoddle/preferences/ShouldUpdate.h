// Whether a stored value changed in a way that must be taken up: the test a host runs on a
// preference's old and new value before reacting (re-colouring views when the theme list changes,
// for example).
//
// In this order:
//   1. Either value absent: true.
//   2. Two strings: true when they differ (bytes compared).
//   3. Two arrays of numbers (colour components; reals and exactly representable integers): true
//      when the lengths differ or any pair differs. A NaN differs from everything, even a NaN.
//   4. Two arrays of dictionaries (the theme list): compared pairwise from the front with the
//      store's deep equality (`isEqualTo`).
//        - `oldValue` empty: false, whatever `newValue` holds;
//        - else `newValue` empty: true;
//        - a pair that differs: true;
//        - every element of `oldValue` matched: false, even if `newValue` has more;
//        - `newValue` ran out first: true.
//      So a list that only grew at its end reports no update and one that shrank reports one.
//      The asymmetry is deliberate: hosts append themes without wanting to re-apply the current
//      one.
//   5. Anything else (a string and a number, two integers, two dictionaries, ...): true.
#pragma once

#include <optional>

#include "quoddle/Export.h"
#include "quoddle/preferences/PropertyList.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT bool shouldUpdate(const std::optional<PlistValue>& oldValue,
                                               const std::optional<PlistValue>& newValue);

}  // namespace quod
