#include "quoddle/qt/QPainterSurface.h"

#include <QPaintDevice>
#include <QPen>

#include "quoddle/qt/QtConversions.h"

namespace quod {
QPainterSurface::QPainterSurface(QPainter& painter, const QRegion& dirtyRegion)
    : painter_(painter), dirtyRegion_(dirtyRegion) {
    painter_.setRenderHint(QPainter::Antialiasing);
}

double QPainterSurface::rasterizationScale() const {
    return painter_.device()->devicePixelRatioF();
}

bool QPainterSurface::needsToDrawRect(Rect rect) const {
    return dirtyRegion_.intersects(toQRectF(rect).toAlignedRect());
}

void QPainterSurface::fillRect(Rect rect, const Color& color) {
    const QColor fill = toQColor(color);
    if (fill.isValid()) painter_.fillRect(toQRectF(rect), fill);
}

void QPainterSurface::strokeLine(Point from, Point to, double lineWidth, const Color& color) {
    const QColor stroke = toQColor(color);
    if (!stroke.isValid()) return;
    painter_.setPen(QPen(stroke, lineWidth, Qt::SolidLine, Qt::FlatCap));
    painter_.drawLine(QLineF(from.x, from.y, to.x, to.y));
}

void QPainterSurface::drawText(const TextRun& run) {
    const QColor ink = toQColor(run.color);
    if (!ink.isValid()) return;
    if (fontKey_ != std::pair(run.font, run.fontSize)) {
        fontKey_.emplace(run.font, run.fontSize);
        font_ = toQFont(run.font, run.fontSize);
    }
    painter_.setFont(font_);
    painter_.setPen(ink);
    painter_.drawText(toQRectF(run.frame),
                      static_cast<int>(toQtAlignment(run.alignment) | Qt::AlignTop),
                      QString::fromStdString(run.text));
}

}  // namespace quod
