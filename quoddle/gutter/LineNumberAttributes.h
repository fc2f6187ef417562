// The look of every line-number gutter in the process: font, digit size, colours, placement.
//
// Font, colours and alignment come from the framework's attribute set for line numbers
// (Attributes::lineNumbers(), interface/Attributes.h). `shared()` makes the attributes on first
// use (thread-safely) with fixed starting values: that set's font at its own point size, digits
// 6.0 wide and 10.0 high, the platform's window background behind the set's text colour.
// `refresh()` replaces the font, size, digit size (measured by the installed FontMetrics: the
// width of "0" rounded up, its height as measured) and both colours with the set's. The
// separator colour, the number inset and the alignment are set once, from the layout direction
// in effect at first use, and never change afterwards: a host sets
// `Interface::setUserInterfaceLayoutDirection` before its first gutter.
//
// The font preference falls back to Menlo 11, then the system font 11 (see DefaultFont). Main
// thread only, apart from the first-use initialisation.
#pragma once

#include "quoddle/Export.h"
#include "quoddle/gutter/DrawingSurface.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/preferences/Font.h"

namespace quod {

struct QUODDLE_EXPORT LineNumberAttributes {
    Font font;
    double fontSize;
    double digitWidth;
    double digitHeight;
    Color backgroundColor;
    Color textColor;
    Color separatorColor;
    // Left edge of the numbers: 3.0 when laid out right to left, else 1.0.
    double numberInset;
    // Numbers hug the text: left-aligned right to left, else right-aligned.
    TextAlignment alignment;

    [[nodiscard]] static const LineNumberAttributes& shared();
    static void refresh();
};

}  // namespace quod
