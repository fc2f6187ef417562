// The folders the applications read and write, mapped onto the XDG base directories.
//
// Each value is worked out on first use, from any thread, exactly once, and kept for the life of
// the process: later changes to the environment are not seen, and a folder deleted later is not
// made again. Every value is always a directory URL.
//
//   value                                      Linux location (lookup, then fallback)
//   User::library()                            $XDG_DATA_HOME, else ~/.local/share
//   User::caches()                             $XDG_CACHE_HOME, else ~/.cache
//   User::appCaches()                          User::caches() + the main bundle identifier; made
//   User::documents()                          XDG_DOCUMENTS_DIR of
//   $XDG_CONFIG_HOME/user-dirs.dirs,
//                                              else ~/Documents
//   User::applicationSupport()                 $XDG_DATA_HOME, else ~/.local/share; made, and if
//                                              that fails User::library() + "Application Support"
//   NonSandboxedUser::library()                <real home>/.local/share
//   NonSandboxedUser::currentAppApplicationSupport()
//                                              NonSandboxedUser::library() + the application's
//                                              name; made
//   Local::library()                           /usr/local/share
//   Local::applications()                      /usr/local/share/applications
//   System::library()                          /usr/share
//   System::iconResources()                    /usr/share/icons
//   System::applications()                     /usr/share/applications
//
// Why this mapping:
//   - "~" is $HOME (the password database when it is unset): inside a sandbox such as Flatpak,
//     $HOME and the XDG variables point into the application's container, as the platform's user
//     domain does. An XDG variable that is unset, empty or relative is ignored, as the XDG base
//     directory rules say.
//   - The data home is where Linux applications keep what the platform keeps in the user's library
//     and its application-support folder, so both name it; each application adds its own folder.
//   - NonSandboxedUser ignores $HOME and the XDG variables (a sandbox rewrites them) and uses the
//     real home from the password database (File::nonSandboxedHomeFolderURL()) with the XDG
//     default below it. An application's own folder goes directly under the data home (for
//     example ~/.local/share/quillmere), as Linux applications do; there is no "Application
//     Support" level in between.
//   - Local and System are the two default XDG data folders, /usr/local/share (software the
//     administrator installed) and /usr/share (the distribution's); desktop entries live in their
//     "applications" folders and icon themes in /usr/share/icons.
//
// The main bundle identifier is the Info.plist's CFBundleIdentifier (Bundle::main()); the
// application's name is its CFBundleExecutable. A program without an Info.plist uses its
// executable's file name for both.
//
// Failure: only two lines are ever written, to the system log. "File manager error: <path>:
// <reason>" when the application-support folder cannot be made (the fallback is used), and "Could
// not create application support folder" when the application's own folder cannot be made (its
// URL is kept). A cache folder that cannot be made is not reported.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/filesystem/Url.h"

namespace quod {

namespace User {
[[nodiscard]] QUODDLE_EXPORT const Url& library();
[[nodiscard]] QUODDLE_EXPORT const Url& caches();
[[nodiscard]] QUODDLE_EXPORT const Url& appCaches();
[[nodiscard]] QUODDLE_EXPORT const Url& documents();
[[nodiscard]] QUODDLE_EXPORT const Url& applicationSupport();
}  // namespace User

namespace NonSandboxedUser {
[[nodiscard]] QUODDLE_EXPORT const Url& library();
[[nodiscard]] QUODDLE_EXPORT const Url& currentAppApplicationSupport();
}  // namespace NonSandboxedUser

namespace Local {
[[nodiscard]] QUODDLE_EXPORT const Url& library();
[[nodiscard]] QUODDLE_EXPORT const Url& applications();
}  // namespace Local

namespace System {
[[nodiscard]] QUODDLE_EXPORT const Url& library();
[[nodiscard]] QUODDLE_EXPORT const Url& iconResources();
[[nodiscard]] QUODDLE_EXPORT const Url& applications();
}  // namespace System

namespace internal {

// An XDG base directory: `variable` when it is an absolute path, else `home` + `defaultRelative`.
[[nodiscard]] Url xdgBaseDirectory(const char* variable, std::string_view home,
                                   std::string_view defaultRelative);

// The folder a user-dirs.dirs file gives for `key` ("XDG_DOCUMENTS_DIR"), with "$HOME" expanded to
// `home`; no value when the file does not set the key to "$HOME/..." or an absolute path. The file
// is shell-like: KEY="value" lines, "#" comments, backslash escapes inside the quotes.
[[nodiscard]] std::optional<Url> userDirectory(std::string_view userDirsFile, std::string_view key,
                                               std::string_view home);

// `dataHome` made (with its parents); on failure the fallback below `library`, logged.
[[nodiscard]] Url applicationSupportFolder(const Url& dataHome, const Url& library);

// `library` + `applicationName`, made (with its parents); a failure is logged, the URL kept.
[[nodiscard]] Url currentAppSupportFolder(const Url& library, std::string_view applicationName);

}  // namespace internal
}  // namespace quod
