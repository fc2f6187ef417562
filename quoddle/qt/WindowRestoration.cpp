#include "quoddle/qt/WindowRestoration.h"

#include <QApplication>
#include <QPointer>
#include <QVariant>
#include <algorithm>
#include <map>

#include "quoddle/preferences/Defaults.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/qt/WindowController.h"
#include "quoddle/qt/WindowFrame.h"

namespace quod::WindowRestoration {
namespace {

constexpr const char* classProperty = "quoddleRestorationClass";
constexpr const char* restorableProperty = "quoddleRestorable";

constexpr std::string_view classKey = "Class";
constexpr std::string_view identifierKey = "Identifier";
constexpr std::string_view frameKey = "Frame";
constexpr std::string_view stateKey = "State";

std::map<std::string, RestoreFunction, std::less<>>& classes() {
    static auto* registered = new std::map<std::string, RestoreFunction, std::less<>>();
    return *registered;
}

template <typename T>
const T* entryValue(const PlistDictionary& entry, std::string_view key) {
    const auto found = entry.find(key);
    return found == entry.end() ? nullptr : found->second.as<T>();
}

// Puts a window that a restore function gave back where it was and shows it.
void finishRestoring(QWidget& window, const QRect& frame, const PlistDictionary& state) {
    auto* controller = WindowController::forWindow(&window);
    if (controller) controller->loadWindow();
    window.setGeometry(frame);
    if (controller) {
        controller->decodeRestorableState(state);
        controller->showWindow();
    } else {
        window.show();
    }
}

}  // namespace

void registerClass(std::string identifier, RestoreFunction restore) {
    classes().insert_or_assign(std::move(identifier), std::move(restore));
}

bool isClassRegistered(std::string_view identifier) {
    return classes().find(identifier) != classes().end();
}

void setRestorationClass(QWidget& window, std::string_view identifier) {
    window.setProperty(classProperty,
                       QString::fromUtf8(identifier.data(), qsizetype(identifier.size())));
}

std::string restorationClass(const QWidget& window) {
    return window.property(classProperty).toString().toStdString();
}

void setRestorable(QWidget& window, bool restorable) {
    window.setProperty(restorableProperty, restorable);
}

bool isRestorable(const QWidget& window) {
    return window.property(restorableProperty).toBool();
}

void saveWindows() {
    // In the order the windows loaded, so that they come back in it; Qt's own list of top-level
    // widgets has no stable order. Windows without a controller follow.
    std::vector<QWidget*> windows;
    for (WindowController* controller : WindowController::retained()) {
        if (controller->window() != nullptr) windows.push_back(controller->window());
    }
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (std::find(windows.begin(), windows.end(), window) == windows.end()) {
            windows.push_back(window);
        }
    }
    PlistArray saved;
    for (QWidget* window : windows) {
        if (!window->isVisible() || !isRestorable(*window)) continue;
        std::string restoration = restorationClass(*window);
        if (restoration.empty()) continue;
        PlistDictionary state;
        if (auto* controller = WindowController::forWindow(window)) {
            controller->encodeRestorableState(state);
        }
        saved.emplace_back(PlistDictionary{
            {std::string(classKey), std::move(restoration)},
            {std::string(identifierKey), window->objectName().toStdString()},
            {std::string(frameKey), WindowFrame::text(*window)},
            {std::string(stateKey), std::move(state)},
        });
    }
    UserDefaults::standard()->setObject(savedWindowsKey, PlistValue(std::move(saved)));
}

void saveWindowsAtQuit() {
    static bool connected = false;
    if (connected || !QCoreApplication::instance()) return;
    connected = true;
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit,
                     [] { saveWindows(); });
}

void restoreWindows() {
    if (!Defaults::resume.get()) return;
    const auto saved = UserDefaults::standard()->arrayForKey(savedWindowsKey);
    if (!saved) return;
    for (const PlistValue& value : *saved) {
        const auto* entry = value.as<PlistDictionary>();
        if (!entry) continue;
        const auto* restoration = entryValue<std::string>(*entry, classKey);
        const auto* frameText = entryValue<std::string>(*entry, frameKey);
        if (!restoration || !frameText) continue;
        const auto found = classes().find(*restoration);
        const auto frame = WindowFrame::geometry(*frameText);
        if (found == classes().end() || !found->second || !frame) continue;
        const auto* identifier = entryValue<std::string>(*entry, identifierKey);
        const auto* state = entryValue<PlistDictionary>(*entry, stateKey);
        const PlistDictionary noState;
        // A copy: the function may run its completion after it returns, or register classes.
        const RestoreFunction restore = found->second;
        restore(identifier ? *identifier : std::string(), state ? *state : noState,
                [frame = *frame, state = state ? *state : noState](QWidget* window,
                                                                   std::optional<Error> error) {
                    if (window && !error) finishRestoring(*window, frame, state);
                });
    }
}

}  // namespace quod::WindowRestoration
