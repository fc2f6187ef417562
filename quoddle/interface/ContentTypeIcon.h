// Which icons of the desktop's icon theme stand for a file: the names to try, best first.
//
// The file's content type comes from GIO, as file managers see it: for an existing file its
// name and, where the name does not settle it, its first bytes; for a path that does not exist
// its name alone ("report.pdf" is a PDF document, a URL with a trailing "/" a folder). The
// content type's icons follow, from the shared MIME database: its own icon ("text-x-csrc"),
// then its generic icon ("text-x-generic"). Then come the desktop's generic icons, so a theme
// that knows none of the specific ones still answers: "folder" for a folder, "text-x-generic"
// for any text, and "application-octet-stream" for every file. Last come the one-colour
// symbolic variants ("text-x-generic-symbolic"), for themes that have nothing else. Each name
// appears once. Symbolic links are followed; a link that leads nowhere counts as a file that
// does not exist.
//
// The empty URL gives only "application-octet-stream". Any thread may ask.
//
//     Interface::iconNames(Url::fileURL("/home/me/notes.txt"))
//         // {"text-plain", "text-x-generic", ..., "application-octet-stream"}
//
// The Qt layer turns these names into an icon (Interface::icon, qt/FileIcon.h).
#pragma once

#include <string>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/filesystem/Url.h"

namespace quod::Interface {

[[nodiscard]] QUODDLE_EXPORT std::vector<std::string> iconNames(const Url& url);

}  // namespace quod::Interface
