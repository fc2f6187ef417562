// How the lines of a paragraph sit: across the width (alignment) and apart (line spacing).
//
// `TextAlignment::natural` follows the text's own writing direction: left for left-to-right
// text, right for right-to-left text. `left` and `right` are absolute: they stay where they are
// in a right-to-left interface, so a view that mirrors (the line-number gutter) picks the side
// itself. `lineSpacing` is the room added between two lines of one paragraph, in points, on top
// of the font's own line height; 0 adds none, and a negative or non-finite value counts as 0
// where the style is applied.
#pragma once

namespace quod {

enum class TextAlignment { left, right, center, justified, natural };

struct ParagraphStyle {
    TextAlignment alignment = TextAlignment::natural;
    double lineSpacing = 0;

    friend bool operator==(const ParagraphStyle&, const ParagraphStyle&) = default;
};

}  // namespace quod
