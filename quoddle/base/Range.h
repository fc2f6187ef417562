// A span of UTF-16 code units: the framework's text position type.
//
// `Range` has the platform's range semantics: it covers units location .. location+length-1 and
// its end is location+length. `NotFound` (the largest int64) marks a missing location. Ranges are
// plain values; whether one lies inside a given text is checked by the code that uses it.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <limits>

#include "quoddle/Export.h"
#include "quoddle/base/CheckedArithmetic.h"

namespace quod {

inline constexpr int64_t NotFound = std::numeric_limits<int64_t>::max();

struct Range {
    int64_t location = 0;
    int64_t length = 0;

    // One past the last unit. Traps when location + length overflows (a NotFound location with a
    // non-zero length, for example).
    [[nodiscard]] int64_t end() const { return checkedAdd(location, length); }

    // True when position lies in location .. end-1; an empty range contains nothing.
    [[nodiscard]] constexpr bool contains(int64_t position) const {
        return position >= location && position - location < length;
    }

    // True when the range is well formed and ends at or before `textLength`.
    [[nodiscard]] constexpr bool isInside(int64_t textLength) const {
        return location >= 0 && length >= 0 && location <= textLength &&
               length <= textLength - location;
    }

    friend constexpr bool operator==(const Range&, const Range&) = default;
};

QUODDLE_EXPORT std::ostream& operator<<(std::ostream& stream, const Range& range);

}  // namespace quod
