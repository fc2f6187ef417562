#include "quoddle/qt/PreferenceTabViewController.h"

#include <QShowEvent>

namespace quod {

PreferenceTabViewController::PreferenceTabViewController(QWidget* parent) : QWidget(parent) {}

void PreferenceTabViewController::viewWillAppear() {
    setPreferredContentSize(QSize(600, 100));
}

void PreferenceTabViewController::showEvent(QShowEvent* event) {
    // A spontaneous show (the window coming back from minimised) is not the pane appearing.
    if (!event->spontaneous()) viewWillAppear();
    QWidget::showEvent(event);
}

}  // namespace quod
