// Overwriting a file in place, for files that cannot be replaced by a rename (several hard links,
// a folder the user cannot write, a mount point, another owner's file), without ever losing the
// old contents.
//
// Internal to FileReplacement. Before the target is touched, its contents are copied into a
// backup in the user's cache ("$XDG_CACHE_HOME/quoddle/interrupted-writes", mode 0700; a scratch
// file as ScratchFiles.h names them), headed by the target's path, device and inode and the
// number of bytes copied, and flushed with its folder. Then the new contents overwrite the
// target, which is truncated to their length and flushed; then the backup is emptied and
// removed. If writing the target fails, the backup is copied back at once.
//
// If the writer dies in between, the backup stays. `restoreInterruptedWrites()`, which every
// replacement runs first, copies each complete backup of a dead writer back into its file (when
// that path still names the same inode) and removes it, so the file reads as it was before the
// interrupted write. A backup whose file has been replaced since is removed; one whose file
// cannot be found (an unmounted disk) is kept for 30 days.
#pragma once

#include <optional>
#include <string>
#include <system_error>

namespace quod::internal {

// The private folder for backups, created (mode 0700) when missing. No value, with the reason,
// when there is no home to put it in or it cannot be made private.
[[nodiscard]] std::optional<std::string> privateScratchFolder(std::error_code* error);

// Overwrites the file at `targetPath` (a regular file, symbolic links already resolved) with
// everything `source` holds, read from its start. SIGINT, SIGTERM and SIGHUP are held back from
// the calling thread while the target is being written.
[[nodiscard]] bool overwriteInPlace(const char* targetPath, int source, std::error_code* error);

// Finishes what dead writers left: see above. Quiet.
void restoreInterruptedWrites();

}  // namespace quod::internal
