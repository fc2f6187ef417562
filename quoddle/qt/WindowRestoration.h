// Windows that come back after a relaunch, as the user left them.
//
// A window takes part when it has a restoration class (the identifier of a registered restore
// function) and its restorable flag is on; WindowController sets the flag from the "Resume"
// preference and keeps it in step. Both live on the widget itself.
//
// Saving. `saveWindows()` writes every visible top-level window that takes part to the standard
// defaults store, in one write, under "SavedWindows" (windows of controllers in the order they
// loaded, so that they come back in it, then any others): an array of dictionaries
//     Class       the restoration class identifier
//     Identifier  the window's objectName
//     Frame       the window's client geometry as rectangle text (WindowFrame.h)
//     State       what the window's controller wrote in encodeRestorableState
// A window the user closed is hidden and so not saved. `saveWindowsAtQuit()` arranges a save
// when the application is about to quit (after the event loop ends, before windows close).
//
// Restoring. `restoreWindows()` does nothing unless "Resume" is on. Otherwise it calls, for each
// saved entry in order, the restore function of its class with the identifier, the state and a
// completion handler. The function answers through the handler, now or later, with the window it
// made, or with no window (and maybe an error) when it could not. A window given back is loaded
// (through its controller when it has one), put at its saved frame, handed its state
// (decodeRestorableState) and shown. Entries whose class is not registered or whose data is not
// what is written above are skipped quietly.
//
//     WindowRestoration::registerClass("Preferences", &PreferencesWindowController::restoreWindow);
//     WindowRestoration::saveWindowsAtQuit();
//     WindowRestoration::restoreWindows();
//
// Main thread only.
#pragma once

#include <QWidget>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/preferences/PropertyList.h"
#include "quoddle/runtime/Error.h"

namespace quod::WindowRestoration {

inline constexpr std::string_view savedWindowsKey = "SavedWindows";

using CompletionHandler = std::function<void(QWidget* window, std::optional<Error> error)>;
using RestoreFunction = std::function<void(std::string_view identifier,
                                           const PlistDictionary& state, CompletionHandler)>;

// Replaces a function registered under the same identifier.
QUODDLE_EXPORT void registerClass(std::string identifier, RestoreFunction restore);
[[nodiscard]] QUODDLE_EXPORT bool isClassRegistered(std::string_view identifier);

QUODDLE_EXPORT void setRestorationClass(QWidget& window, std::string_view identifier);
// Empty when the window has none.
[[nodiscard]] QUODDLE_EXPORT std::string restorationClass(const QWidget& window);

QUODDLE_EXPORT void setRestorable(QWidget& window, bool restorable);
[[nodiscard]] QUODDLE_EXPORT bool isRestorable(const QWidget& window);

QUODDLE_EXPORT void saveWindows();
QUODDLE_EXPORT void saveWindowsAtQuit();
QUODDLE_EXPORT void restoreWindows();

}  // namespace quod::WindowRestoration
