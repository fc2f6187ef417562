// Conversions between the core's colours, fonts and rectangles and Qt's.
//
// `toQColor` resolves a colour the way the platform draws it: a system colour takes its value for
// the current appearance (PlatformAppearance), components are clamped into 0 to 1 (a stored
// preference may hold anything), and a pattern colour, which Qt cannot draw without its image,
// gives an invalid QColor that callers skip. `colorComponents` is the reverse, as the red, green,
// blue and alpha that `Color::setSystemColor` takes.
//
// `toQFont` finds the face that a PostScript name stands for through fontconfig, the database Qt
// itself reads on Linux, and asks Qt for that family and style. Sizes are Qt points, so the
// screen's logical resolution applies as it does to every other Qt font. A name fontconfig does
// not know (a test catalogue's invented face, say) is passed to Qt as a family name, and Qt picks
// its usual substitute. Lookups are remembered for the process; any thread may convert.
//
// Attribute sets (interface/Attributes.h) become a QTextCharFormat with the attributes that are
// present (a colour Qt cannot draw is left out, as if absent) and a QTextBlockFormat with the
// paragraph style's alignment and line spacing (`QTextBlockFormat::LineDistanceHeight`, added
// between lines). Alignments: `left` and `right` are absolute (Qt::AlignAbsolute, so they do not
// swap in a right-to-left layout), `natural` is Qt::AlignLeading, which follows the layout
// direction.
//
//     cursor.insertText(output, toQTextCharFormat(Attributes::result()));
#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <array>

#include "quoddle/Export.h"
#include "quoddle/base/Geometry.h"
#include "quoddle/interface/Attributes.h"
#include "quoddle/interface/ParagraphStyle.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/preferences/Font.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT QColor toQColor(const Color& color);
[[nodiscard]] QUODDLE_EXPORT std::array<double, 4> colorComponents(const QColor& color);

// Rectangles keep their numbers: both sides measure in points from the top left, y down.
[[nodiscard]] inline QRectF toQRectF(const Rect& rect) {
    return {rect.minX(), rect.minY(), rect.width(), rect.height()};
}
[[nodiscard]] inline Rect toRect(const QRectF& rect) {
    return Rect{{rect.x(), rect.y()}, {rect.width(), rect.height()}};
}

[[nodiscard]] QUODDLE_EXPORT QFont toQFont(const Font& font, double pointSize);
[[nodiscard]] inline QFont toQFont(const Font& font) {
    return toQFont(font, font.pointSize());
}

[[nodiscard]] QUODDLE_EXPORT Qt::Alignment toQtAlignment(TextAlignment alignment);
[[nodiscard]] QUODDLE_EXPORT QTextCharFormat toQTextCharFormat(const Attributes& attributes);
[[nodiscard]] QUODDLE_EXPORT QTextBlockFormat toQTextBlockFormat(const ParagraphStyle& style);

}  // namespace quod
