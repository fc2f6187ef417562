#include "quoddle/qt/GroupTableRowView.h"

#include <QPaintEvent>
#include <QPainter>

#include "quoddle/interface/ViewRules.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/qt/QtPlatform.h"
#include "quoddle/runtime/Localize.h"

namespace quod {

GroupTableRowView::GroupTableRowView(QWidget* parent) : QWidget(parent) {
    QtPlatform::install();
    setAccessibleName(QString::fromStdString(Localize::group()));
}

QColor GroupTableRowView::color() {
    return toQColor(Interface::groupRowColor());
}

void GroupTableRowView::drawBackground(QPainter& painter, const QRect& rect) {
    painter.fillRect(rect, color());
}

void GroupTableRowView::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    QPainter painter(this);
    drawBackground(painter, event->rect());
}

}  // namespace quod
