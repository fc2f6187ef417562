#include "quoddle/qt/GradientBackgroundView.h"

#include <QLinearGradient>
#include <QPaintEvent>
#include <QPainter>

#include "quoddle/interface/InterfaceLook.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/qt/QtPlatform.h"
#include "quoddle/runtime/Localize.h"

namespace quod {

GradientBackgroundView::GradientBackgroundView(QWidget* parent) : QWidget(parent) {
    QtPlatform::install();
    setAccessibleName(QString::fromStdString(Localize::tab()));
}

void GradientBackgroundView::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    if (Interface::look() != InterfaceLook::classic) return;
    const Color window = Color::windowBackgroundColor();
    const std::optional<Color> shaded = window.shadow(shadowLevel);
    if (!shaded) return;
    QLinearGradient gradient(0, 0, 0, height());
    gradient.setColorAt(0, toQColor(window));
    gradient.setColorAt(1, toQColor(*shaded));
    QPainter painter(this);
    painter.fillRect(event->rect(), gradient);
}

}  // namespace quod
