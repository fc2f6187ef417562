// The search path for command-line tools as a login shell would see it.
//
// `Misc::defaultPATH()` joins, in this order and without repeats (the first occurrence wins):
//   1. the lines of the paths file "/private/etc/paths";
//   2. the lines of each file in the folder "/private/etc/paths.d/", hidden files skipped, in the
//      order the folder lists them;
//   3. the entries of the process's PATH variable;
//   4. "/usr/local/bin" and "/usr/local/sbin".
// Only absolute entries (beginning with "/") are kept, joined with ":"; a file that cannot be read
// as UTF-8 contributes nothing, and no "\n" survives in the result. A GUI application started by
// the desktop often has a short PATH; this gives its tools what the user's terminal would.
//
// The value is assembled on first use, from any thread, exactly once, and kept for the life of the
// process: later changes to the files or to PATH are not seen.
//
//     Task::run(command, "/bin/sh", true) with PATH=Misc::defaultPATH() in the environment
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/filesystem/Url.h"

namespace quod::Misc {

[[nodiscard]] QUODDLE_EXPORT const std::string& defaultPATH();

}  // namespace quod::Misc

namespace quod::internal {

// The rule above with its inputs given: the paths file, the paths.d folder and the value of PATH
// (no value when the variable is unset).
[[nodiscard]] std::string assembleSearchPath(const Url& pathsFile, const Url& pathsFolder,
                                             std::optional<std::string_view> pathVariable);

}  // namespace quod::internal
