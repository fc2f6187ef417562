// Rectangles as text, in the form the applications have always stored window frames in.
//
// `stringFromRect` writes "{{x, y}, {w, h}}": each number as the shortest C "%.17g" text (10 is
// "10", 10.5 is "10.5", 0.1 is "0.10000000000000001"), with a point as the decimal separator
// whatever locale the host activated.
//
// `rectFromString` reads the four numbers x, y, w, h back in that order and ignores everything
// else, so spacing and braces are free: "{{0.6,5.4},{1,2}}" and "{ {0.6 , 5.4}, {1, 2} }" give the
// same rectangle. To find a number it skips to the next digit, space or minus sign and reads the
// longest number there; "+" and a leading "." do not start one. Numbers that are missing read as
// 0, and text without any number gives the zero rectangle. Exact round trip:
//
//     rectFromString(stringFromRect(r)) == r      for every finite r
#pragma once

#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/base/Geometry.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT std::string stringFromRect(const Rect& rect);
[[nodiscard]] QUODDLE_EXPORT Rect rectFromString(std::string_view text);

}  // namespace quod
