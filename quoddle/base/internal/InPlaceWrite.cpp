#include "quoddle/base/internal/InPlaceWrite.h"

#include <fcntl.h>
#include <pthread.h>
#include <pwd.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "quoddle/base/FileDescriptor.h"
#include "quoddle/base/internal/FileWriting.h"
#include "quoddle/base/internal/ScratchFiles.h"
#include "quoddle/base/internal/SystemCalls.h"

namespace quod::internal {
namespace {

// The head of a backup: what it is, which file it belongs to and how many bytes of that file
// follow. Written last, after the copy, so that a backup cut short by its writer's death has no
// valid head: its file was not touched yet.
constexpr std::array<char, 8> magic = {'Q', 'D', 'L', 'B', 'A', 'K', '0', '1'};

struct BackupHead {
    uint64_t device = 0;
    uint64_t inode = 0;
    uint64_t length = 0;  // of the copied contents
    uint32_t pathLength = 0;
};

constexpr off_t headSize = sizeof magic + sizeof(BackupHead);
constexpr time_t keepOrphanSeconds = 30 * 24 * 3600;

bool isAbsolute(const char* path) {
    return path != nullptr && path[0] == '/';
}

std::optional<std::string> cacheHome() {
    if (const char* cache = std::getenv("XDG_CACHE_HOME"); isAbsolute(cache)) return cache;
    if (const char* home = std::getenv("HOME"); isAbsolute(home))
        return std::string(home) + "/.cache";
    if (const passwd* user = ::getpwuid(::geteuid()); user != nullptr && isAbsolute(user->pw_dir)) {
        return std::string(user->pw_dir) + "/.cache";
    }
    return std::nullopt;
}

std::string backupFolderIn(const std::string& cache) {
    return cache + "/quoddle/interrupted-writes";
}

// A folder of ours that only we can enter: made when missing, narrowed when it is wider.
bool makePrivateFolder(const std::string& path, std::error_code* error) {
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) return failWithErrno(error);
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return failWithErrno(error);
    if (!S_ISDIR(status.st_mode) || status.st_uid != ::geteuid()) {
        return fail(error, std::make_error_code(std::errc::permission_denied));
    }
    if ((status.st_mode & 077) != 0 && ::chmod(path.c_str(), 0700) != 0) {
        return failWithErrno(error);
    }
    return true;
}

// Puts the backed-up contents of `backup` back into `target` and flushes it.
bool restore(int backup, const BackupHead& head, int target, std::error_code* error) {
    const off_t contents = headSize + static_cast<off_t>(head.pathLength);
    uint64_t copied = 0;
    return copyToEnd(backup, contents, target, 0, &copied, error) &&
           (copied == head.length || fail(error, std::make_error_code(std::errc::io_error))) &&
           (systemCalls().ftruncate(target, static_cast<off_t>(head.length)) == 0 ||
            failWithErrno(error)) &&
           (systemCalls().fsync(target) == 0 || failWithErrno(error));
}

// The head and target path of a complete backup.
std::optional<std::pair<BackupHead, std::string>> readBackup(int backup) {
    std::array<char, sizeof magic> seen{};
    BackupHead head;
    struct stat status {};
    if (::pread(backup, seen.data(), seen.size(), 0) != static_cast<ssize_t>(seen.size()) ||
        seen != magic ||
        ::pread(backup, &head, sizeof head, sizeof magic) != static_cast<ssize_t>(sizeof head) ||
        head.pathLength == 0 || head.pathLength >= PATH_MAX || ::fstat(backup, &status) != 0 ||
        static_cast<uint64_t>(status.st_size) != headSize + head.pathLength + head.length) {
        return std::nullopt;
    }
    std::string path(head.pathLength, '\0');
    if (::pread(backup, path.data(), path.size(), headSize) != static_cast<ssize_t>(path.size()) ||
        path.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    return std::pair(head, std::move(path));
}

// Restores the file of one stale backup; true when the backup has served and may go.
bool finish(int backup) {
    const auto complete = readBackup(backup);
    if (!complete) return true;  // cut short before its file was touched
    const auto& [head, path] = *complete;
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        struct stat own {};
        return ::fstat(backup, &own) == 0 && std::time(nullptr) - own.st_mtime > keepOrphanSeconds;
    }
    if (!S_ISREG(status.st_mode) || status.st_dev != head.device || status.st_ino != head.inode) {
        return true;  // replaced since: the interrupted write is no longer anyone's file
    }
    const FileDescriptor target(
        systemCalls().open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC, 0));
    // The same file once more, now that it is open: a folder on the path swapped for a link in
    // between must not send the old contents into another file.
    struct stat opened {};
    if (!target.valid() || ::fstat(target.get(), &opened) != 0 || opened.st_dev != head.device ||
        opened.st_ino != head.inode) {
        return false;
    }
    return restore(backup, head, target.get(), nullptr);
}

// A backup is this process's own while it writes: no sweep of ours takes it, and no signal
// handler removes it (it may be the only whole copy of the file).
class Registration {
  public:
    explicit Registration(const std::string& path) : slot_(registerScratchFile(path, false)) {}
    ~Registration() { unregisterScratchFile(slot_); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

  private:
    int slot_;
};

// Holds back the signals that ask a process to stop, in this thread, for a scope.
class HeldSignals {
  public:
    HeldSignals() {
        sigset_t held;
        sigemptyset(&held);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
            sigaddset(&held, signal);
        pthread_sigmask(SIG_BLOCK, &held, &previous_);
    }
    ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

  private:
    sigset_t previous_{};
};

}  // namespace

std::optional<std::string> privateScratchFolder(std::error_code* error) {
    const auto cache = cacheHome();
    if (!cache) {
        fail(error, std::make_error_code(std::errc::no_such_file_or_directory));
        return std::nullopt;
    }
    // The cache itself may be missing on a fresh account; it is the user's to have, not ours to
    // narrow, so only our own two levels are made private.
    if (::mkdir(cache->c_str(), 0700) != 0 && errno != EEXIST) {
        failWithErrno(error);
        return std::nullopt;
    }
    const std::string ours = *cache + "/quoddle";
    std::string folder = backupFolderIn(*cache);
    if (!makePrivateFolder(ours, error) || !makePrivateFolder(folder, error)) return std::nullopt;
    return folder;
}

bool overwriteInPlace(const char* targetPath, int source, std::error_code* error) {
    const auto folder = privateScratchFolder(error);
    if (!folder) return false;
    const FileDescriptor target(systemCalls().open(targetPath, O_RDWR | O_NOFOLLOW | O_CLOEXEC, 0));
    if (!target.valid()) return failWithErrno(error);
    struct stat status {};
    if (::fstat(target.get(), &status) != 0) return failWithErrno(error);

    // The backup: named, private and locked from the start, so that no sweep takes it while we
    // live and the next replacement finds it if we do not.
    const std::string backupPath = scratchPath(*folder, targetPath);
    const Registration registration(backupPath);
    FileDescriptor backup(systemCalls().open(
        backupPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!backup.valid()) return failWithErrno(error);
    ::flock(backup.get(), LOCK_EX);
    const std::size_t pathLength = std::strlen(targetPath);
    BackupHead head{static_cast<uint64_t>(status.st_dev), static_cast<uint64_t>(status.st_ino), 0,
                    static_cast<uint32_t>(pathLength)};
    const auto bytesOf = [](const void* data, std::size_t size) {
        return std::span(static_cast<const std::uint8_t*>(data), size);
    };
    const bool backedUp =
        writeAll(backup.get(), bytesOf(targetPath, pathLength), headSize, error) &&
        copyToEnd(target.get(), 0, backup.get(), headSize + static_cast<off_t>(pathLength),
                  &head.length, error) &&
        writeAll(backup.get(), bytesOf(&head, sizeof head), sizeof magic, error) &&
        writeAll(backup.get(), bytesOf(magic.data(), magic.size()), 0, error) &&
        (systemCalls().fsync(backup.get()) == 0 || failWithErrno(error)) &&
        syncFolder(*folder, error);
    if (!backedUp) {
        systemCalls().unlink(backupPath.c_str());
        return false;
    }

    const HeldSignals held;
    uint64_t length = 0;
    const bool written = copyToEnd(source, 0, target.get(), 0, &length, error) &&
                         (systemCalls().ftruncate(target.get(), static_cast<off_t>(length)) == 0 ||
                          failWithErrno(error)) &&
                         (systemCalls().fsync(target.get()) == 0 || failWithErrno(error));
    if (!written) {
        // The old contents go back at once; if even that fails, the backup stays for the next
        // replacement to restore.
        if (restore(backup.get(), head, target.get(), nullptr)) {
            systemCalls().unlink(backupPath.c_str());
        }
        return false;
    }
    // Emptied before it goes: a backup that outlived a failed unlink must never be restored over
    // the new contents. One that can be neither emptied nor removed would do exactly that later,
    // so the old contents go back now and the write counts as failed.
    const bool emptied = systemCalls().ftruncate(backup.get(), 0) == 0;
    if (systemCalls().unlink(backupPath.c_str()) == 0 || emptied) return true;
    // (If the restore fails too, the complete backup stays and the next replacement restores it.)
    const std::error_code reason(errno, std::system_category());
    [[maybe_unused]] const bool restored = restore(backup.get(), head, target.get(), nullptr);
    return fail(error, reason);
}

void restoreInterruptedWrites() {
    const auto cache = cacheHome();
    if (!cache) return;
    forEachStaleScratchFile(backupFolderIn(*cache), [](const std::string& path, int backup) {
        if (finish(backup)) systemCalls().unlink(path.c_str());
    });
}

}  // namespace quod::internal
