// Replaces a file's contents all at once: readers, and the disk after a crash, see the old
// contents or the new, never part of each, and nobody who could not read the old file can read
// the new contents at any moment. Documents, `quod -i` and the defaults store all write through
// this one type.
//
// `replacing(path)` resolves symbolic links (a link stays a link; the file it names is replaced),
// refuses what cannot be replaced, and chooses how `commit` will put the new contents in place:
//
//   - Method::rename, for an ordinary file and for a new one. The contents go to an unnamed file
//     in the target's folder (O_TMPFILE), or, where the file system has none, to a named one
//     created with mode 0600. `commit` gives it the target's owner and group (as far as the
//     caller may), its extended attributes (user.*, the access ACL, security.* and trusted.*
//     where permitted) and mode, flushes it, names it beside the target, renames it over the
//     target and flushes the folder. A new file gets 0666 less the umask (or, with
//     NewFilePermissions::ownerOnly, 0600); its folder must exist.
//   - Method::inPlace, for a file that a rename would change in ways the user did not ask for:
//     one with several hard links, one in a folder the caller cannot write, a mount point, or one
//     owned by another user or by a group the caller is not in. The contents are kept in a
//     private file in the user's cache until `commit`, which backs up the old contents there
//     (mode 0600, folder 0700), overwrites the file, truncates and flushes it, and removes the
//     backup. Should the process die in between, the next replacement by any program on the
//     framework restores the old contents from that backup.
//
// Without a commit, destruction removes everything the replacement made and the target stays as
// it was. Each replacement first removes what dead writers left behind: stale temporary files in
// the target's folder (a writer of this user that holds no lock on them any more: see
// internal/ScratchFiles.h for the name pattern) and interrupted in-place writes.
//
// Signals. The framework never installs a signal handler by itself: signals belong to the host.
// Named temporary files exist only where the file system lacks O_TMPFILE, and otherwise for the
// instant between naming the new file and renaming it; a host whose own handlers end the process
// on SIGINT, SIGTERM or SIGHUP calls `removeTemporaryFiles()` in them (it is async-signal-safe).
// A host with no handlers of its own calls `installSignalCleanup()` once (quod does): it installs
// handlers that remove the files and then die of the signal as before. SIGKILL cannot be caught:
// what it leaves is removed by the next replacement in that folder.
//
// Failures are quiet: no value or false, with the reason in `error` when asked for. Besides the
// system's errors (ENOENT for a missing folder, ENOSPC for a full disk) there are two refusals of
// this type's own, made before anything is created:
//   - FileReplacementError::notRegularFile: a folder, a device, a pipe;
//   - FileReplacementError::readOnly: a file without write permission, refused even for root,
//     for whom the rename alone would succeed: a read-only file says "do not change me".
// After any failure the target holds its old contents and nothing of the replacement remains.
// `commit` also fails when the folder cannot be flushed after the rename: the new contents are
// then in place but may not survive a power cut.
//
// Limits: on a network file system, the rename is atomic for other clients only as far as the
// server makes it so, and a lock that proves a writer alive may not cross machines, so a sweep
// there leaves a temporary file alone for a minute after it was last written.
//
//   std::error_code error;
//   auto file = FileReplacement::replacing(path, &error);
//   if (!file || !file->write(bytes, &error) || !file->commit(&error)) show(error.message());
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <type_traits>

#include "quoddle/Export.h"
#include "quoddle/base/FileDescriptor.h"

namespace quod {

enum class FileReplacementError { notRegularFile = 1, readOnly = 2 };

[[nodiscard]] QUODDLE_EXPORT const std::error_category& fileReplacementCategory();
[[nodiscard]] QUODDLE_EXPORT std::error_code make_error_code(FileReplacementError error);

class QUODDLE_EXPORT FileReplacement {
  public:
    enum class Method { rename, inPlace };
    // The permissions of a file that does not exist yet.
    enum class NewFilePermissions { usual, ownerOnly };

    [[nodiscard]] static std::optional<FileReplacement> replacing(const std::string& path,
                                                                  std::error_code* error = nullptr);
    [[nodiscard]] static std::optional<FileReplacement> replacing(const std::string& path,
                                                                  NewFilePermissions newFile,
                                                                  std::error_code* error = nullptr);

    FileReplacement(FileReplacement&& other) noexcept;
    FileReplacement& operator=(FileReplacement&&) = delete;
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    ~FileReplacement();

    // Appends to the new contents. False after a failed write (a later commit then fails too) or
    // after commit.
    [[nodiscard]] bool write(std::span<const std::uint8_t> bytes, std::error_code* error = nullptr);
    // Puts the new contents in place; true once. After a failure the target is unchanged.
    [[nodiscard]] bool commit(std::error_code* error = nullptr);

    // The file that commit replaces (symbolic links resolved).
    [[nodiscard]] const std::string& target() const { return target_; }
    [[nodiscard]] Method method() const { return method_; }

    // Unlinks this process's named temporary files. Async-signal-safe: for a host's own handlers.
    static void removeTemporaryFiles() noexcept;
    // For SIGINT, SIGTERM and SIGHUP that still have their default action: a handler that calls
    // removeTemporaryFiles() and then lets the signal end the process as it would have. Signals
    // the host already handles or ignores are left alone. Call it once, early, on any thread.
    static void installSignalCleanup();

  private:
    FileReplacement() = default;
    [[nodiscard]] bool openTemporaryFile(std::error_code* error);
    [[nodiscard]] bool commitByRename(std::error_code* error);
    [[nodiscard]] bool nameTemporaryFile(std::error_code* error);
    void forgetTemporaryFile();

    FileDescriptor descriptor_;
    std::string target_;
    std::string folder_;
    std::string temporary_;  // the temporary file's name once it has one
    int registration_ = -1;  // its slot among the names a signal handler removes
    Method method_ = Method::rename;
    bool existed_ = false;
    bool failed_ = false;
    mode_t newFileMode_ = 0;
    std::error_code failure_;
};

}  // namespace quod

template <>
struct std::is_error_code_enum<quod::FileReplacementError> : std::true_type {};
