// Modal alerts: a question with up to three answers, and the framework's error messages.
//
// `alert` shows `message` with `informativeText` below it, with a button for each of
// `defaultTitle`, `alternateTitle` and `otherTitle` that is given, in that order; the first is
// the default button (Return), and a button titled with the localized "Cancel" answers Escape.
// With no title at all the alert gets a single localized "OK" button. It runs modally and returns
// which button was pressed, counted among the buttons shown (the first shown is
// alertFirstButtonReturn, whichever of the three titles it has).
//
// With a `suppression` key the alert also shows a "Do not show this message again" check box;
// if the box is ticked when the alert closes, true is stored under the key in the standard
// defaults store, whatever button closed it. Callers read the key themselves before asking:
//
//     if (!UserDefaults::standard()->boolForKey("SkipReloadWarning"))
//         Interface::alert("Reload?", "Unsaved changes are lost.", "Reload", "Cancel",
//                          std::nullopt, "SkipReloadWarning");
//
// `error` is a warning with one "OK" button; `saveError` is the error for a failed save.
// Main thread only.
#pragma once

#include <optional>
#include <string>

#include "quoddle/Export.h"

namespace quod {

// What a modal run answers: which alert button ended it.
enum class ModalResponse : int {
    alertFirstButtonReturn = 1000,
    alertSecondButtonReturn = 1001,
    alertThirdButtonReturn = 1002,
};

namespace Interface {

QUODDLE_EXPORT ModalResponse alert(const std::string& message, const std::string& informativeText,
                                   const std::optional<std::string>& defaultTitle,
                                   const std::optional<std::string>& alternateTitle,
                                   const std::optional<std::string>& otherTitle,
                                   const std::optional<std::string>& suppression);

QUODDLE_EXPORT void error(const std::string& message, const std::string& informativeText);

QUODDLE_EXPORT void saveError();

}  // namespace Interface
}  // namespace quod
