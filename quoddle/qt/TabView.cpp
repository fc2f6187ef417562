#include "quoddle/qt/TabView.h"

#include <QPaintEvent>
#include <QPainter>

#include "quoddle/preferences/Color.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/qt/QtPlatform.h"

namespace quod {

TabView::TabView(QWidget* parent) : QWidget(parent) {
    QtPlatform::install();
}

void TabView::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    QPainter painter(this);
    painter.fillRect(event->rect(), toQColor(Color::windowBackgroundColor()));
}

}  // namespace quod
