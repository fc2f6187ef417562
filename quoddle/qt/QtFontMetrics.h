// Real glyph measurements for the gutter, from Qt's font metrics.
//
// A text's size is its horizontal advance and the font's line height (ascent + descent), both in
// device-independent pixels and unrounded, exactly as Qt will lay the text out; the gutter itself
// rounds the digit width up. Fonts are turned into Qt fonts by `toQFont`, so a font that is not
// installed is measured in Qt's substitute, the one it is then drawn in.
#pragma once

#include "quoddle/gutter/FontMetrics.h"

namespace quod {

class QtFontMetrics : public FontMetrics {
  public:
    [[nodiscard]] Size sizeOfString(std::string_view text, const Font& font) const override;
};

}  // namespace quod
