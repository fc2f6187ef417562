// The framework's system log: the few lines it writes when something went wrong that the user
// cannot be told about in the interface ("Couldn't save secure bookmark to defaults").
//
// A line goes to standard error as "<program>: <message>\n" in one write(2), so lines from
// several threads never interleave; the desktop session's journal collects the standard error of
// the applications it starts. A host (or a test) may install its own sink instead; the sink is
// called on the logging thread, under a lock, so it needs no locking of its own.
#pragma once

#include <functional>
#include <string_view>

#include "quoddle/Export.h"

namespace quod {

using LogSink = std::function<void(std::string_view message)>;

QUODDLE_EXPORT void systemLog(std::string_view message);

// Installs `sink` (an empty function restores standard error) and returns the one it replaces.
QUODDLE_EXPORT LogSink setSystemLogSink(LogSink sink);

}  // namespace quod
