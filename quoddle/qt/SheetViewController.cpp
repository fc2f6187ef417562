#include "quoddle/qt/SheetViewController.h"

#include <QResizeEvent>
#include <QShowEvent>
#include <QVBoxLayout>

#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/qt/WindowFrame.h"

namespace quod {

SheetViewController::SheetViewController(QWidget* parent) : QWidget(parent) {
    liveResizeEnd_.setSingleShot(true);
    liveResizeEnd_.setInterval(liveResizeQuietPeriod);
    connect(&liveResizeEnd_, &QTimer::timeout, this, [this] { windowDidEndLiveResize(); });
}

std::string SheetViewController::frameKey(std::string_view name) {
    return "WindowFrame " + std::string(name);
}

QDialog* SheetViewController::presentAsSheet(QWidget* window) {
    auto* sheet = new QDialog(window, Qt::Sheet);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(sheet);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(this);
    sheet->show();
    return sheet;
}

void SheetViewController::viewWillAppear() {
    if (isWindow()) return;  // not in a window
    QWidget* window = this->window();
    if (observedWindow_ != window) {
        if (observedWindow_) observedWindow_->removeEventFilter(this);
        observedWindow_ = window;
        window->installEventFilter(this);
    }
    const auto saved = UserDefaults::standard()->stringForKey(frameKey(frameName_));
    if (!saved) return;
    WindowFrame::apply(
        *window, *saved,
        window->parentWidget() ? WindowFrame::Part::sizeOnly : WindowFrame::Part::wholeFrame);
}

void SheetViewController::windowDidEndLiveResize() {
    liveResizeEnd_.stop();
    if (isWindow()) return;
    UserDefaults::standard()->setObject(frameKey(frameName_),
                                        PlistValue(WindowFrame::text(*window())));
}

void SheetViewController::showEvent(QShowEvent* event) {
    // A spontaneous show (back from minimised) is not the sheet appearing.
    if (!event->spontaneous()) viewWillAppear();
    QWidget::showEvent(event);
}

bool SheetViewController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == observedWindow_) {
        if (event->type() == QEvent::Resize && event->spontaneous()) {
            const auto notByHand = Qt::WindowMaximized | Qt::WindowFullScreen | Qt::WindowMinimized;
            if (!(observedWindow_->windowState() & notByHand)) liveResizeEnd_.start();
        } else if (event->type() == QEvent::Hide && liveResizeEnd_.isActive()) {
            // Closed right after a resize: that resize has ended, and the sheet is about to go.
            windowDidEndLiveResize();
        }
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace quod
