#include "quoddle/qt/WindowController.h"

#include <QCloseEvent>
#include <QMainWindow>
#include <QVBoxLayout>
#include <QVariant>
#include <algorithm>
#include <string>

#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/qt/Storyboard.h"
#include "quoddle/qt/WindowRestoration.h"
#include "quoddle/runtime/SystemLog.h"

namespace quod {
namespace {

// Owning, in loading order. Never destroyed: controllers still open at exit go with the process.
std::vector<WindowController*>& registry() {
    static auto* controllers = new std::vector<WindowController*>();
    return *controllers;
}

// Set on the window: the controller outlives its window, so the pointer never dangles.
constexpr const char* controllerProperty = "quoddleWindowController";

}  // namespace

WindowController::WindowController(std::unique_ptr<QWidget> window)
    : window_(window ? window.release() : new QMainWindow()) {
    if (window_->parentWidget()) window_->setParent(nullptr);
    window_->setProperty(controllerProperty, QVariant::fromValue<QObject*>(this));
    // The window may go without us (a WA_DeleteOnClose window, say): then so do we.
    connect(window_, &QObject::destroyed, this, [this] {
        if (std::ranges::find(registry(), this) != registry().end()) {
            unregister();
            deleteLater();
        }
    });
}

WindowController::~WindowController() {
    unregister();
    delete window_.data();
}

void WindowController::loadWindow() {
    if (loaded_) return;
    loaded_ = true;
    windowDidLoad();
}

void WindowController::showWindow() {
    loadWindow();
    if (!window_) return;
    window_->show();
    window_->raise();
    window_->activateWindow();
}

void WindowController::setContentViewController(QWidget* controller) {
    if (!window_ || controller == content_) return;
    if (auto* mainWindow = qobject_cast<QMainWindow*>(window_)) {
        mainWindow->setCentralWidget(controller);  // deletes the previous one
    } else {
        auto* layout = window_->layout();
        if (!layout) {
            layout = new QVBoxLayout(window_);
            layout->setContentsMargins(0, 0, 0, 0);
        }
        delete content_.data();
        if (controller) layout->addWidget(controller);
    }
    content_ = controller;
}

std::vector<WindowController*> WindowController::retained() {
    return registry();
}

void WindowController::show(Singleton::WindowController kind) {
    if (auto* existing = controller(kind)) {
        existing->showWindow();
        return;
    }
    auto* storyboard = Storyboard::main();
    std::unique_ptr<QObject> object =
        storyboard ? storyboard->instantiateController(Singleton::storyboardIdentifier(kind))
                   : nullptr;
    auto* made = qobject_cast<WindowController*>(object.get());
    if (!made) {
        systemLog("Could not show window controller");
        return;
    }
    object.release();  // the registry owns it once its window loads
    made->showWindow();
}

WindowController* WindowController::controller(Singleton::WindowController kind) {
    for (auto* controller : registry()) {
        if (controller->singleton_ == kind) return controller;
    }
    return nullptr;
}

WindowController* WindowController::forWindow(const QWidget* window) {
    if (!window) return nullptr;
    return qobject_cast<WindowController*>(window->property(controllerProperty).value<QObject*>());
}

void WindowController::windowDidLoad() {
    registry().push_back(this);
    if (!window_) return;
    window_->installEventFilter(this);
    WindowRestoration::setRestorable(*window_, Defaults::resume.get());
    resumeObserver_ = Notifications().addObserver(
        std::string(NotificationName::resumeChanged()), nullptr,
        [this](const Notification& notification) { resumeChanged(notification); });
}

void WindowController::resumeChanged(const Notification&) {
    if (window_) WindowRestoration::setRestorable(*window_, Defaults::resume.get());
}

void WindowController::windowWillClose() {
    unregister();
    deleteLater();
}

void WindowController::encodeRestorableState(PlistDictionary&) const {}

void WindowController::decodeRestorableState(const PlistDictionary&) {}

bool WindowController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window_) {
        switch (event->type()) {
            case QEvent::Close:
                if (!closing_) return handleClose(event);
                break;
            case QEvent::Move:
                windowDidMove();
                break;
            default:
                break;
        }
    }
    return QObject::eventFilter(watched, event);
}

bool WindowController::handleClose(QEvent* event) {
    // The window's own closeEvent may refuse; only an accepted close loses the controller.
    closing_ = true;
    QPointer<WindowController> self(this);
    static_cast<QObject*>(window_.data())->event(event);
    if (!self) return true;
    closing_ = false;
    if (event->isAccepted()) windowWillClose();
    return true;
}

void WindowController::unregister() {
    resumeObserver_.disconnect();
    std::erase(registry(), this);
}

}  // namespace quod
