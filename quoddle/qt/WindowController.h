// The controller of a top-level window, and the registry that keeps loaded controllers alive.
//
// Ownership. A controller owns its window (a QMainWindow unless it is given another widget) and
// deletes it when it goes. Once the window has loaded, the controller belongs to `retained()`,
// the process-wide registry, in the order windows loaded: whoever made it hands it over (release
// the unique_ptr before loading, or make it with new). When the window closes, the controller
// leaves the registry and is deleted later from the event loop (deleteLater), never inside its
// own close handling. A controller whose window was never loaded belongs to whoever made it.
//
// Loading. `windowDidLoad()` runs once, when the window first loads: on the first `showWindow()`
// or an explicit `loadWindow()`. Subclasses that override it call this one first. It
//   1. appends the controller to `retained()`,
//   2. watches the window's events (an event filter stands for the window's delegate):
//      close → `windowWillClose()`, move → `windowDidMove()`,
//   3. sets the window's restorable flag (WindowRestoration.h) from the "Resume" preference,
//   4. follows the "ResumeChanged" notification with `resumeChanged()`.
//
// Shared windows. A subclass meant to exist once sets `singleton` to its kind (Singleton.h) when
// its window loads. `show(kind)` shows the registered controller of that kind, or else builds
// one from the main Storyboard under the kind's identifier and shows it; when there is no main
// storyboard or the entry does not make a WindowController, the system log gets
// "Could not show window controller" and nothing is shown.
//
//     WindowController::show(Singleton::WindowController::preferences);  // again: same window
//
// `windowWillClose()` runs when a close of the window is accepted (a window that refuses to close
// keeps its controller). Main thread only; the registry is not locked.
#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <memory>
#include <optional>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/base/Signal.h"
#include "quoddle/interface/Singleton.h"
#include "quoddle/preferences/PropertyList.h"
#include "quoddle/runtime/NotificationCenter.h"

namespace quod {

class QUODDLE_EXPORT WindowController : public QObject {
    Q_OBJECT

  public:
    // Takes `window` (made a top-level window); a new QMainWindow when null.
    explicit WindowController(std::unique_ptr<QWidget> window = nullptr);
    ~WindowController() override;
    WindowController(const WindowController&) = delete;
    WindowController& operator=(const WindowController&) = delete;

    // Null only after someone else deleted the window.
    [[nodiscard]] QWidget* window() const { return window_; }
    [[nodiscard]] bool isWindowLoaded() const { return loaded_; }
    // Runs `windowDidLoad()` the first time; nothing afterwards.
    void loadWindow();
    // Loads the window, shows it, raises it and asks for the keyboard focus.
    void showWindow();

    // The widget filling the window (the central widget of a QMainWindow); the window owns it.
    [[nodiscard]] QWidget* contentViewController() const { return content_; }
    void setContentViewController(QWidget* controller);

    [[nodiscard]] std::optional<Singleton::WindowController> singleton() const {
        return singleton_;
    }
    void setSingleton(std::optional<Singleton::WindowController> kind) { singleton_ = kind; }

    // The loaded controllers, in loading order (a copy: showing or closing may change it).
    [[nodiscard]] static std::vector<WindowController*> retained();
    static void show(Singleton::WindowController kind);
    // The first registered controller of that kind; null when there is none.
    [[nodiscard]] static WindowController* controller(Singleton::WindowController kind);
    // The controller that owns `window`, loaded or not; null when there is none.
    [[nodiscard]] static WindowController* forWindow(const QWidget* window);

    virtual void windowDidLoad();
    // Sets the window's restorable flag from "Resume" as it is now.
    virtual void resumeChanged(const Notification& notification);
    // Leaves the registry; the controller is deleted once control is back in the event loop.
    virtual void windowWillClose();
    virtual void windowDidMove() {}

    // What window restoration saves with the window and gives back to the restored one. Both do
    // nothing here.
    virtual void encodeRestorableState(PlistDictionary& state) const;
    virtual void decodeRestorableState(const PlistDictionary& state);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    // Runs the window's own close handling now, so that we know whether it accepted.
    bool handleClose(QEvent* event);
    void unregister();

    QPointer<QWidget> window_;
    QPointer<QWidget> content_;
    std::optional<Singleton::WindowController> singleton_;
    Connection resumeObserver_;
    bool loaded_ = false;
    bool closing_ = false;
};

}  // namespace quod
