// Waits for child processes that nobody else will wait for, so that none is left a zombie.
//
// `Task::run` returns when a tool's output ends, which is usually a moment before the tool has
// finished exiting; it hands such a child over here. One background thread, started on first
// use and kept for the life of the process, sleeps in poll(2) on a process descriptor (pidfd) per
// child and collects each exit as it happens. A child without a process descriptor (the system
// refused one) is looked at every 50 ms instead.
//
// It waits only for the children it was given, and through the process descriptor where there is
// one, so it can never take a host's child: not through waitpid(-1), and not through a process
// id that the system has reused after a host reaped our child itself. (Waiting through a process
// descriptor needs Linux 5.4 or later.)
#pragma once

#include <sys/types.h>

#include "quoddle/base/FileDescriptor.h"

namespace quod::internal {

// Collects `pid` now if it has exited; else false, and the child is still ours to wait for.
// `processHandle` is a pidfd for the child, or invalid.
[[nodiscard]] bool reapIfExited(pid_t pid, const FileDescriptor& processHandle);

// Takes over `pid`, a child of this process that has not been waited for, with its pidfd (or an
// invalid descriptor), and collects it once it exits.
void reapInBackground(pid_t pid, FileDescriptor processHandle);

}  // namespace quod::internal
