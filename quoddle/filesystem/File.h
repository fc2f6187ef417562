// File helpers: the application that opens a file, read-only volumes, the real home folder and
// fresh temporary locations.
//
// Default application. The desktop's MIME associations decide (GIO: the file's content type, then
// that type's default application from mimeapps.list and the installed .desktop files), and an
// application's .desktop file stands for the application:
//   - `defaultAppURL(url)` is the file URL of that .desktop file, for example
//     file:///usr/share/applications/org.example.Viewer.desktop;
//   - `defaultAppName(url)` is its file name with percent-encoding removed
//     ("org.example.Viewer.desktop");
//   - `defaultLocalizedAppName(url)` is the application's display name in the user's language
//     (the .desktop file's Name, as localized for LANGUAGE / LC_MESSAGES / LANG: "Viewer").
// The content type comes from the file on disk (name and content); for a file that does not
// exist, from its name alone. When the default application is this framework's own text editor
// (its .desktop file name contains "Quillmere"), the answer is the default web browser instead
// (the default handler of "https"), or none when there is no browser: an editor that is asked
// "what opens this?" wants somewhere else to show the file. No application, or one that has no
// .desktop file: no value. The association database is read when GIO first needs it.
//
// `isReadOnlyVolume(url)`: whether the file system holding `url` is mounted read-only (statvfs);
// false when that cannot be found out (the path does not exist, say).
//
// `nonSandboxedHomeFolderURL()` / `nonSandboxedHomeFolderPath()`: the user's home folder from the
// password database, whatever $HOME says: inside a sandbox that points $HOME into a container, this
// is still the real one. Without an entry, $HOME; without that, "/". Looked up on first use, from
// any thread, once, and kept.
//
// `temporaryURL()`: a new location in FileManager::temporaryDirectory(), made afresh on each call:
// "QDL-<process id>-<seconds since 2001-01-01 00:00:00 UTC>", the seconds as the shortest decimal
// text that reads back to the same double ("QDL-4242-757382400.123456"). If anything (even a
// dangling link) is already there, a random upper-case UUID
// ("6F9619FF-8B86-4011-B42D-00C04FC964FF") is the name instead. Nothing is created on disk.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/filesystem/Url.h"

namespace quod::File {

[[nodiscard]] QUODDLE_EXPORT std::optional<Url> defaultAppURL(const Url& url);
[[nodiscard]] QUODDLE_EXPORT std::optional<std::string> defaultAppName(const Url& url);
[[nodiscard]] QUODDLE_EXPORT std::optional<std::string> defaultLocalizedAppName(const Url& url);

[[nodiscard]] QUODDLE_EXPORT bool isReadOnlyVolume(const Url& url);

[[nodiscard]] QUODDLE_EXPORT const Url& nonSandboxedHomeFolderURL();
[[nodiscard]] QUODDLE_EXPORT const std::string& nonSandboxedHomeFolderPath();

[[nodiscard]] QUODDLE_EXPORT Url temporaryURL();

}  // namespace quod::File

namespace quod::internal {

// `name` in `folder`, or a random UUID name in `folder` when something is at `name` already.
[[nodiscard]] Url unusedLocation(const Url& folder, std::string_view name);

// Decodes "%XX" escapes. No value when a "%" is not followed by two hexadecimal digits or the
// decoded bytes are not UTF-8.
[[nodiscard]] std::optional<std::string> removingPercentEncoding(std::string_view text);

}  // namespace quod::internal
