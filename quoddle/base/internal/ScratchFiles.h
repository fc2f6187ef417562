// Scratch files of the file writer: the named temporary files and in-place backups it makes, how
// they are named, and how they are found and removed again when their writer is gone.
//
// Internal to FileReplacement. Every scratch file is named
//
//     .<target name>.qdl-<writer's process id>-<16 hex digits>.tmp
//
// (the target's name cut to 160 bytes), is created with mode 0600, and is held under an exclusive
// flock(2) by its writer for as long as the writer needs it; the kernel drops that lock when the
// writer dies, however it dies. A scratch file is stale when it has that name, belongs to this
// user, is not locked, and its writer's process no longer exists or it is more than a minute old
// (the minute covers a writer in another process-id namespace, whose id means nothing here).
//
// The registry keeps the paths of this process's named temporary files in fixed storage, so that
// a signal handler can remove them with nothing but unlink(2).
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace quod::internal {

// A fresh scratch file path in `folder` for the file at `target` (named after its last component).
[[nodiscard]] std::string scratchPath(std::string_view folder, std::string_view target);
// True when the file name `name` has the shape scratchPath gives.
[[nodiscard]] bool isScratchName(std::string_view name);

// Opens an existing scratch file `path` and takes its lock when it is stale: the descriptor
// (holding the lock, read-write when its mode allows) or -1. Never follows a symbolic link.
[[nodiscard]] int claimStaleScratchFile(const std::string& path);

// Calls `use` with the path and the locked descriptor of each stale scratch file directly in
// `folder`; the lock is held until `use` returns.
void forEachStaleScratchFile(const std::string& folder,
                             const std::function<void(const std::string& path, int file)>& use);

// Removes the stale scratch files directly in `folder`. Quiet: what cannot be removed stays.
void removeStaleScratchFiles(const std::string& folder);

// Registers `path` as one of this process's scratch files, to be removed by
// removeRegisteredScratchFiles() if `removeOnSignal`: a slot number, or -1 when the table is full
// (the file then waits for the stale sweep).
[[nodiscard]] int registerScratchFile(const std::string& path, bool removeOnSignal);
void unregisterScratchFile(int slot);
[[nodiscard]] bool isRegistered(const std::string& path);
// Unlinks every registered path that is to be removed on a signal. Async-signal-safe.
void removeRegisteredScratchFiles() noexcept;

}  // namespace quod::internal
