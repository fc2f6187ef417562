// Small geometry helpers shared by the views: angles and distances.
#pragma once

#include <cmath>
#include <numbers>

#include "quoddle/base/Geometry.h"

namespace quod::Math {

[[nodiscard]] constexpr double radians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

// The straight-line distance, without overflow or underflow in the intermediate square.
[[nodiscard]] inline double distance(Point a, Point b) {
    return std::hypot(b.x - a.x, b.y - a.y);
}

}  // namespace quod::Math
