// The drawing rules of the shared views that need no toolkit, so every toolkit layer draws alike.
//
// `groupRowColor()`: the background of a group row in outline and table views. The under-page
// background colour, resolved for the current appearance (PlatformAppearance::current()),
// highlighted toward white by 0.2 when that appearance is dark and by 0.7 when it is light; then
// given alpha 0.52, unless the user asked for reduced transparency (Accessibility.h), which keeps
// it as it came (opaque for the built-in colours). The result is an sRGB colour.
//
// `centeredTitleRect(titleRect, naturalHeight)`: where a one-block text of `naturalHeight` goes
// to sit vertically centred in `titleRect`: same x and width, height `naturalHeight`, y moved
// down by (titleRect height − naturalHeight) × 0.5. Text taller than the rectangle therefore
// starts above it, by half the excess, so it overflows evenly at both edges; that is intended.
//
//     Interface::centeredTitleRect({{0, 10}, {80, 20}}, 14);   // {{0, 13}, {80, 14}}
//     Interface::centeredTitleRect({{0, 10}, {80, 20}}, 30);   // {{0, 5}, {80, 30}}
#pragma once

#include "quoddle/Export.h"
#include "quoddle/base/Geometry.h"
#include "quoddle/preferences/Color.h"

namespace quod::Interface {

inline constexpr double groupRowAlpha = 0.52;

[[nodiscard]] QUODDLE_EXPORT Color groupRowColor();

[[nodiscard]] QUODDLE_EXPORT Rect centeredTitleRect(Rect titleRect, double naturalHeight);

}  // namespace quod::Interface
