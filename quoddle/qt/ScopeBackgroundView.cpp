#include "quoddle/qt/ScopeBackgroundView.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPen>

#include "quoddle/interface/InterfaceLook.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/qt/QtPlatform.h"
#include "quoddle/runtime/Localize.h"

namespace quod {

ScopeBackgroundView::ScopeBackgroundView(QWidget* parent) : QWidget(parent) {
    QtPlatform::install();
    setAccessibleName(QString::fromStdString(Localize::noItems()));
}

void ScopeBackgroundView::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    const Color stroke =
        Interface::look() == InterfaceLook::flat ? Color::separatorColor() : Color::gridColor();
    QPen pen(toQColor(stroke));
    pen.setWidthF(lineWidth);
    pen.setJoinStyle(Qt::MiterJoin);  // square corners, as a rectangle's stroke has
    QPainter painter(this);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(0, 0, width(), height()));
}

}  // namespace quod
