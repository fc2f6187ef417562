// The attributes a run of text is drawn with: font, text and background colours, paragraph
// style. Every attribute is optional; an absent one leaves the view's own (a label without a
// foreground colour keeps its palette's).
//
// The framework's views take theirs from the named sets below, made afresh from the preferences
// at every call, so a new theme or font shows at the next call:
//   - `lineNumbers()`, the line-number gutter: the "LineNumberFont" preference (Menlo 11, else
//     the system font 11, when it holds no usable font), the theme's "LineNumberTextColour" on
//     its "LineNumberBackgroundColour", the numbers hugging the text: right-aligned, left-aligned
//     in a right-to-left interface (Interface::rtl()).
//   - `statusLine()`, the status line under a text view: the system font at 11 points in the
//     system text colour, no background of its own, natural alignment.
//   - `result()`, the panel that shows a command's output: the "TextFont" preference (same
//     fallbacks), the theme's "TextColour" on its "BackgroundColour", natural alignment.
// Every attribute of these three sets is present except the status line's background.
//
// The Qt layer turns a set into QTextCharFormat and QTextBlockFormat (QtConversions.h).
//
//     const Attributes look = Attributes::lineNumbers();
//     painter.setFont(toQFont(*look.font));
#pragma once

#include <optional>

#include "quoddle/Export.h"
#include "quoddle/interface/ParagraphStyle.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/preferences/Font.h"

namespace quod {

struct QUODDLE_EXPORT Attributes {
    std::optional<Font> font;
    std::optional<Color> foregroundColor;
    std::optional<Color> backgroundColor;
    std::optional<ParagraphStyle> paragraphStyle;

    // The size of the status line's font, in points.
    static constexpr double statusLineFontSize = 11;

    [[nodiscard]] static Attributes lineNumbers();
    [[nodiscard]] static Attributes statusLine();
    [[nodiscard]] static Attributes result();

    friend bool operator==(const Attributes&, const Attributes&) = default;
};

}  // namespace quod
