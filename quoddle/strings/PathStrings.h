// Lexical operations on file-system paths. Paths are UTF-8 `std::string`s, as Linux hands them
// out; nothing here touches the file system.
//
// lastPathComponent ignores trailing slashes and returns what follows the last remaining one:
//   "/tmp/scratch.tiff" -> "scratch.tiff", "/tmp/" -> "tmp", "//a//b////" -> "b",
//   "/./..//./..//" -> ".." (dot segments are not resolved), "~" -> "~" (no tilde expansion),
//   "" -> "", and any run of slashes alone -> "/".
// shortenHomeFolder replaces every occurrence of the home folder anywhere in the string by "~", so
// a message naming several files under it gets shorter too. The home folder is $HOME, or the
// user's entry in the password database when $HOME is unset. Trailing slashes of the home folder
// are ignored; a home folder that is unknown, empty or "/" leaves the string unchanged (shortening
// every "/" to "~" would garble the path rather than shorten it).
#pragma once

#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT std::string lastPathComponent(std::string_view path);

[[nodiscard]] QUODDLE_EXPORT std::string shortenHomeFolder(std::string_view s);

// The home folder as the shell's "~" means it: $HOME, else the user's entry in the password
// database; "" when neither says.
[[nodiscard]] QUODDLE_EXPORT std::string homeFolder();

// The same with the home folder given, as tests and callers that already know it use it.
[[nodiscard]] QUODDLE_EXPORT std::string shortenHomeFolder(std::string_view s,
                                                           std::string_view home);

namespace internal {

// The current user's home folder as the password database records it (getpwuid_r for getuid),
// whatever $HOME says; "" when there is no entry. Safe from any thread.
[[nodiscard]] std::string passwordDatabaseHomeFolder();

}  // namespace internal

}  // namespace quod
