#include "demo/DocumentWindowController.h"

namespace quod::demo {
namespace {

constexpr const char* documentKey = "Document";
constexpr const char* folderKey = "Folder";

std::optional<std::string> pathIn(const PlistDictionary& state, const char* key) {
    const auto found = state.find(key);
    if (found == state.end()) return std::nullopt;
    const auto* path = found->second.as<std::string>();
    if (path == nullptr || path->empty()) return std::nullopt;
    return *path;
}

}  // namespace

DocumentWindowController::DocumentWindowController()
    : WindowController(std::make_unique<MainWindow>()) {
    window()->setObjectName(QString::fromUtf8(restorationClassIdentifier));
    connect(&mainWindow(), &MainWindow::newWindowRequested, this, [] { open(); });
}

MainWindow& DocumentWindowController::mainWindow() const {
    return *static_cast<MainWindow*>(window());
}

DocumentWindowController* DocumentWindowController::open() {
    auto* controller = new DocumentWindowController();
    controller->showWindow();
    return controller;
}

void DocumentWindowController::restoreWindow(
    std::string_view, const PlistDictionary&,
    const WindowRestoration::CompletionHandler& completionHandler) {
    auto* controller = new DocumentWindowController();
    controller->loadWindow();
    completionHandler(controller->window(), std::nullopt);
}

void DocumentWindowController::windowDidLoad() {
    WindowController::windowDidLoad();
    WindowRestoration::setRestorationClass(*window(), restorationClassIdentifier);
}

void DocumentWindowController::encodeRestorableState(PlistDictionary& state) const {
    MainWindow& window = mainWindow();
    if (!window.document().path().empty()) state[documentKey] = window.document().path();
    if (!window.sidebar().folder().empty()) state[folderKey] = window.sidebar().folder();
}

void DocumentWindowController::decodeRestorableState(const PlistDictionary& state) {
    MainWindow& window = mainWindow();
    if (const auto folder = pathIn(state, folderKey)) {
        window.chooseFolder(QString::fromStdString(*folder));
    }
    if (const auto document = pathIn(state, documentKey)) {
        window.openDocument(QString::fromStdString(*document));
    }
}

}  // namespace quod::demo
