// What the gutter asks of the text view's layout: where lines lie and which characters a
// rectangle shows.
//
// Coordinates are the text container's (flipped: y grows downwards, the first line at the top),
// which is the text view's own minus `textContainerInset()`. A layout may lay text out lazily;
// each query lays out what it needs first. The Qt layer implements this over its text document;
// `MonospacedTextLayout` is the core's own, for tests and for hosts without a toolkit.
//
// Queries must stay quiet on any input: a character outside the text gives the zero rectangle, a
// rectangle beside the text gives an empty range at the nearest end of the text.
#pragma once

#include <cstdint>

#include "quoddle/Export.h"
#include "quoddle/base/Geometry.h"
#include "quoddle/base/Range.h"

namespace quod {

class QUODDLE_EXPORT TextLayout {
  public:
    virtual ~TextLayout() = default;

    // The rectangle of the layout line (line fragment) that holds character `index`.
    [[nodiscard]] virtual Rect lineFragmentRectForCharacter(int64_t index) const = 0;

    // The rectangle of the empty line that follows a final line terminator, or that an empty text
    // consists of; the zero rectangle when the last line is not empty.
    [[nodiscard]] virtual Rect extraLineFragmentRect() const = 0;

    // The characters whose glyphs lie in `rect` (every line it touches, whole). A rectangle above
    // the text gives (0, 0), one below it (length, 0).
    [[nodiscard]] virtual Range characterRangeForBoundingRect(Rect rect) const = 0;

    // The margin between the text view's edges and the text container.
    [[nodiscard]] virtual Size textContainerInset() const = 0;
};

}  // namespace quod
