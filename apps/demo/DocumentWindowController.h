// The controller of one demo editor window (MainWindow), which comes back after a relaunch.
//
// Each window is a WindowController whose window is a MainWindow, with the restoration class
// "DocumentWindow": with "Resume" on, quitting saves the open editor windows (WindowRestoration.h)
// with their frames, documents and sidebar folders, and the next launch reopens them where they
// were. A document that can no longer be opened leaves its restored window untitled.
//
// "New Window" in a window's File menu opens another one.
#pragma once

#include <string_view>

#include "demo/MainWindow.h"
#include "quoddle/qt/WindowController.h"
#include "quoddle/qt/WindowRestoration.h"

namespace quod::demo {

class DocumentWindowController : public WindowController {
    Q_OBJECT

  public:
    static constexpr std::string_view restorationClassIdentifier = "DocumentWindow";

    DocumentWindowController();

    [[nodiscard]] MainWindow& mainWindow() const;

    // A new editor window, shown; it belongs to WindowController::retained() from now on.
    static DocumentWindowController* open();
    // The restoration class: a new, loaded editor window.
    static void restoreWindow(std::string_view identifier, const PlistDictionary& state,
                              const WindowRestoration::CompletionHandler& completionHandler);

    void windowDidLoad() override;
    // "Document" and "Folder": paths, each only when there is one.
    void encodeRestorableState(PlistDictionary& state) const override;
    void decodeRestorableState(const PlistDictionary& state) override;
};

}  // namespace quod::demo
