// Points, sizes and rectangles in view coordinates (floating-point, any unit the host draws in).
//
// Plain values with the platform's conventions: a rectangle is an origin and a size, its minimum
// edges are at the origin and its maximum edges at origin + size. A rectangle with a negative size
// is kept as given; the edge accessors then answer min > max, and `intersects` is false for it.
// Whether y grows upwards or downwards is the view's business (the gutter is flipped: downwards).
#pragma once

namespace quod {

struct Point {
    double x = 0;
    double y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
    double width = 0;
    double height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
    Point origin;
    Size size;

    [[nodiscard]] constexpr double minX() const { return origin.x; }
    [[nodiscard]] constexpr double minY() const { return origin.y; }
    [[nodiscard]] constexpr double maxX() const { return origin.x + size.width; }
    [[nodiscard]] constexpr double maxY() const { return origin.y + size.height; }
    [[nodiscard]] constexpr double width() const { return size.width; }
    [[nodiscard]] constexpr double height() const { return size.height; }

    // True when the two share an area: touching edges and empty rectangles do not intersect.
    [[nodiscard]] constexpr bool intersects(const Rect& other) const {
        return size.width > 0 && size.height > 0 && other.size.width > 0 && other.size.height > 0 &&
               minX() < other.maxX() && other.minX() < maxX() && minY() < other.maxY() &&
               other.minY() < maxY();
    }

    friend bool operator==(const Rect&, const Rect&) = default;
};

}  // namespace quod
