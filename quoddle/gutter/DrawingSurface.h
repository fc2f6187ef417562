// Where a view draws: the few primitives the gutter needs, in the view's own (flipped)
// coordinates.
//
// A frame starts with `clear()`, which forgets what the previous frame drew (the platform's
// number layers are removed), then fills, lines and texts follow in painting order. Before making
// anything costly the view asks `needsToDrawRect`, so a surface that repaints only a damaged
// region can skip the rest. The Qt layer implements this over a painter; `RecordingSurface`
// records the calls for tests and benchmarks.
#pragma once

#include <string>

#include "quoddle/Export.h"
#include "quoddle/base/Geometry.h"
#include "quoddle/interface/ParagraphStyle.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/preferences/Font.h"

namespace quod {

// One piece of text placed in a rectangle, at the top, aligned across it as `alignment` says.
struct TextRun {
    std::string text;  // UTF-8
    Rect frame;
    Font font;
    double fontSize = 0;
    Color color;
    TextAlignment alignment = TextAlignment::right;
    // Pixels per point to render at; sharper than the screen's own scale for small text.
    double contentsScale = 1;
};

class QUODDLE_EXPORT DrawingSurface {
  public:
    virtual ~DrawingSurface() = default;

    // Device pixels per point of the surface (2 on a high-density screen).
    [[nodiscard]] virtual double rasterizationScale() const = 0;

    // Whether anything inside `rect` is to be repainted in this frame.
    [[nodiscard]] virtual bool needsToDrawRect(Rect rect) const = 0;

    virtual void clear() = 0;
    virtual void fillRect(Rect rect, const Color& color) = 0;
    virtual void strokeLine(Point from, Point to, double lineWidth, const Color& color) = 0;
    virtual void drawText(const TextRun& run) = 0;
};

}  // namespace quod
