// The texts of checking for updates, for a host's own update mechanism: the menu item, the alert
// that announces a new version, its buttons, and what a check or a download can end with, each
// in the user's language (Localize).
//
//   checkForUpdates()          "Check for Updates…"      the menu item
//   updatesAvailable()         "Updates Available"       the alert's title
//   newVersionAvailable(app, version, current)
//                              "Quillmere 2.1 is available. You have 2.0."
//   download(), remindMe(), skip()
//                              "Download", "Remind Me", "Skip": the alert's buttons (skip: this
//                              version; its build goes under "SkipUpdateBuild")
//   downloading()              "Downloading…"
//   readyToInstall(), relaunch()
//                              "Ready to Install", "Relaunch"
//   noUpdatesAvailable()       "No updates available."
//   upToDate(app, version)     "Quillmere 2.0 is the newest version available."
//   retrievalFailed()          "An error occurred in retrieving update information. Please try
//                              again later."
//   couldNotUpdate()           "Could not update."
//   updateCancelled()          "Update Cancelled"
//
// Whether to check by itself is the host's "AutomaticallyCheckForUpdate" preference.
#pragma once

#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod::UpdateTexts {

[[nodiscard]] QUODDLE_EXPORT std::string checkForUpdates();
[[nodiscard]] QUODDLE_EXPORT std::string updatesAvailable();
[[nodiscard]] QUODDLE_EXPORT std::string newVersionAvailable(std::string_view application,
                                                             std::string_view version,
                                                             std::string_view currentVersion);
[[nodiscard]] QUODDLE_EXPORT std::string download();
[[nodiscard]] QUODDLE_EXPORT std::string remindMe();
[[nodiscard]] QUODDLE_EXPORT std::string skip();
[[nodiscard]] QUODDLE_EXPORT std::string downloading();
[[nodiscard]] QUODDLE_EXPORT std::string readyToInstall();
[[nodiscard]] QUODDLE_EXPORT std::string relaunch();
[[nodiscard]] QUODDLE_EXPORT std::string noUpdatesAvailable();
[[nodiscard]] QUODDLE_EXPORT std::string upToDate(std::string_view application,
                                                  std::string_view version);
[[nodiscard]] QUODDLE_EXPORT std::string retrievalFailed();
[[nodiscard]] QUODDLE_EXPORT std::string couldNotUpdate();
[[nodiscard]] QUODDLE_EXPORT std::string updateCancelled();

}  // namespace quod::UpdateTexts
