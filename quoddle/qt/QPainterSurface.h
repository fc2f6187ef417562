// The core's DrawingSurface over a QPainter, for one paint event.
//
// Make one inside `paintEvent` with the widget's active painter and the event's region: only
// rectangles that meet that region need drawing. Colours are resolved with `toQColor` when drawn
// (a system colour takes the current appearance's value) and a colour Qt cannot draw (a pattern)
// draws nothing. Texts are set in the run's font and size (`toQFont`), top-aligned in their frame,
// against its right or left edge. Qt already paints at the screen's device-pixel ratio, which is
// also the surface's rasterization scale, so a run's own contents scale is not needed. `clear`
// does nothing: a paint event has no layers left from the previous frame to remove, and the
// gutter's first fill covers all of it. Lines are antialiased, so a one-point line at x.5 fills
// exactly the pixel column x.
#pragma once

#include <QFont>
#include <QPainter>
#include <QRegion>
#include <optional>

#include "quoddle/gutter/DrawingSurface.h"

namespace quod {

class QPainterSurface : public DrawingSurface {
  public:
    // Both must outlive the surface.
    QPainterSurface(QPainter& painter, const QRegion& dirtyRegion);

    [[nodiscard]] double rasterizationScale() const override;
    [[nodiscard]] bool needsToDrawRect(Rect rect) const override;
    void clear() override {}
    void fillRect(Rect rect, const Color& color) override;
    void strokeLine(Point from, Point to, double lineWidth, const Color& color) override;
    void drawText(const TextRun& run) override;

  private:
    QPainter& painter_;
    const QRegion& dirtyRegion_;
    // Every number of a frame has the same font: it is looked up once.
    std::optional<std::pair<Font, double>> fontKey_;
    QFont font_;
};

}  // namespace quod
