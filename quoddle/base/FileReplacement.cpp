#include "quoddle/base/FileReplacement.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "quoddle/base/internal/FileWriting.h"
#include "quoddle/base/internal/InPlaceWrite.h"
#include "quoddle/base/internal/ScratchFiles.h"
#include "quoddle/base/internal/SystemCalls.h"

namespace quod {
namespace {

using internal::fail;
using internal::failWithErrno;
using internal::systemCalls;

class FileReplacementCategory : public std::error_category {
  public:
    [[nodiscard]] const char* name() const noexcept override { return "file replacement"; }
    [[nodiscard]] std::string message(int condition) const override {
        switch (static_cast<FileReplacementError>(condition)) {
            case FileReplacementError::notRegularFile:
                return "only a regular file can be replaced";
            case FileReplacementError::readOnly:
                return "the file is read-only";
        }
        return "unknown file replacement error";
    }
};

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// The umask without changing it (umask(2) can only be read by setting it, which races with every
// other thread that creates files). Linux reports it in /proc/self/status since 4.7.
mode_t currentUmask() {
    std::FILE* status = std::fopen("/proc/self/status", "re");
    if (status == nullptr) return 022;
    char line[256];
    unsigned mask = 022;
    while (std::fgets(line, sizeof line, status) != nullptr) {
        if (std::sscanf(line, "Umask: %o", &mask) == 1) break;
    }
    std::fclose(status);
    return static_cast<mode_t>(mask & 0777);
}

// A folder with a default ACL hands it to new files instead of applying the umask.
bool hasDefaultAcl(const std::string& folder) {
    return ::getxattr(folder.c_str(), "system.posix_acl_default", nullptr, 0) >= 0;
}

bool isMemberOf(gid_t group) {
    if (::getegid() == group) return true;
    const int count = ::getgroups(0, nullptr);
    if (count <= 0) return false;
    std::vector<gid_t> groups(static_cast<std::size_t>(count));
    const int filled = ::getgroups(count, groups.data());
    return filled > 0 &&
           std::find(groups.begin(), groups.begin() + filled, group) != groups.begin() + filled;
}

// A rename would make a new file in the target's place: one with a single link, our owner and
// group, in a folder we can write, on the folder's file system. Where any of that differs from
// the target, only writing into the target itself keeps what the user has.
bool mustWriteInPlace(const struct stat& target, const std::string& folder) {
    struct stat parent {};
    if (::stat(folder.c_str(), &parent) != 0) return true;
    const bool ownedAsBefore =
        ::geteuid() == 0 || (target.st_uid == ::geteuid() && isMemberOf(target.st_gid));
    return target.st_nlink > 1 || parent.st_dev != target.st_dev ||
           ::access(folder.c_str(), W_OK | X_OK) != 0 || !ownedAsBefore;
}

// Linking an unnamed file into a folder takes /proc/self/fd, or the privilege to link by
// descriptor.
bool canNameUnnamedFiles() {
    return ::geteuid() == 0 || ::access("/proc/self/fd", X_OK) == 0;
}

// Attributes that must travel with the contents, or the replacement fails: the user's own (the
// document's encoding among them) and the access ACL. The others (security labels, trusted.*)
// travel where the caller is permitted to set them.
bool mustKeep(std::string_view name) {
    return name.starts_with("user.") || name == "system.posix_acl_access";
}

bool copyExtendedAttributes(const std::string& from, int to, std::error_code* error) {
    std::vector<char> names;
    for (;;) {
        const ssize_t size = ::llistxattr(from.c_str(), nullptr, 0);
        if (size < 0) return errno == ENOTSUP || failWithErrno(error);
        names.resize(static_cast<std::size_t>(size));
        const ssize_t listed = ::llistxattr(from.c_str(), names.data(), names.size());
        if (listed >= 0) {
            names.resize(static_cast<std::size_t>(listed));
            break;
        }
        if (errno != ERANGE) return failWithErrno(error);  // ERANGE: it grew meanwhile
    }
    std::vector<char> value;
    for (std::size_t start = 0; start < names.size();) {
        const char* name = names.data() + start;
        start += std::strlen(name) + 1;
        ssize_t size = ::lgetxattr(from.c_str(), name, nullptr, 0);
        if (size >= 0) {
            value.resize(static_cast<std::size_t>(size));
            size = ::lgetxattr(from.c_str(), name, value.data(), value.size());
        }
        const bool copied =
            size >= 0 &&
            systemCalls().fsetxattr(to, name, value.data(), static_cast<std::size_t>(size), 0) == 0;
        if (!copied && mustKeep(name)) return failWithErrno(error);
    }
    return true;
}

// Gives the new file the target's owner, group, attributes and mode, in that order: a change of
// owner clears set-user-ID bits and file capabilities, so the mode and attributes come after.
bool takeOverMetadata(const std::string& target, int file, std::error_code* error) {
    struct stat status {};
    struct stat own {};
    if (::stat(target.c_str(), &status) != 0 || ::fstat(file, &own) != 0) {
        return failWithErrno(error);
    }
    if (::geteuid() == 0) {
        if (systemCalls().fchown(file, status.st_uid, status.st_gid) != 0) {
            return failWithErrno(error);
        }
    } else if (own.st_gid != status.st_gid &&
               systemCalls().fchown(file, static_cast<uid_t>(-1), status.st_gid) != 0) {
        // Another group would give the contents to people who could not read them before.
        return failWithErrno(error);
    }
    return copyExtendedAttributes(target, file, error) &&
           (systemCalls().fchmod(file, status.st_mode & 07777) == 0 || failWithErrno(error));
}

void removeTemporaryFilesAndDie(int signal) {
    const int savedErrno = errno;
    FileReplacement::removeTemporaryFiles();
    // The handler was installed with SA_RESETHAND, so the signal's default action is back; it
    // stays blocked until the handler returns and then ends the process as it would have.
    ::raise(signal);
    errno = savedErrno;
}

}  // namespace

const std::error_category& fileReplacementCategory() {
    static const FileReplacementCategory category;
    return category;
}

std::error_code make_error_code(FileReplacementError error) {
    return {static_cast<int>(error), fileReplacementCategory()};
}

std::optional<FileReplacement> FileReplacement::replacing(const std::string& path,
                                                          std::error_code* error) {
    return replacing(path, NewFilePermissions::usual, error);
}

std::optional<FileReplacement> FileReplacement::replacing(const std::string& path,
                                                          NewFilePermissions newFile,
                                                          std::error_code* error) {
    FileReplacement replacement;
    char resolved[PATH_MAX];
    struct stat status {};
    if (!path.empty() && ::realpath(path.c_str(), resolved) != nullptr) {
        replacement.target_ = resolved;
        if (::stat(resolved, &status) != 0) {
            failWithErrno(error);
            return std::nullopt;
        }
        if (!S_ISREG(status.st_mode)) {
            fail(error, FileReplacementError::notRegularFile);
            return std::nullopt;
        }
        if ((status.st_mode & 0222) == 0 || ::access(resolved, W_OK) != 0) {
            fail(error, FileReplacementError::readOnly);
            return std::nullopt;
        }
        replacement.existed_ = true;
    } else {
        struct stat link {};
        // Nothing there yet: the file is created. A link to nothing is refused, as a file put in
        // its place would no longer be a link.
        if (path.empty() || errno != ENOENT || ::lstat(path.c_str(), &link) == 0) {
            fail(error, std::error_code(path.empty() ? ENOENT : errno, std::system_category()));
            return std::nullopt;
        }
        replacement.target_ = path;
    }
    replacement.folder_ = folderOf(replacement.target_);
    internal::restoreInterruptedWrites();
    internal::removeStaleScratchFiles(replacement.folder_);

    if (replacement.existed_ && mustWriteInPlace(status, replacement.folder_)) {
        replacement.method_ = Method::inPlace;
    }
    replacement.newFileMode_ = newFile == NewFilePermissions::ownerOnly ? 0600
                               : hasDefaultAcl(replacement.folder_)     ? 0666
                                                                        : 0666 & ~currentUmask();
    if (!replacement.openTemporaryFile(error)) return std::nullopt;
    return replacement;
}

bool FileReplacement::openTemporaryFile(std::error_code* error) {
    std::string folder = folder_;
    if (method_ == Method::inPlace) {
        // Until the commit, the new contents wait in the user's private cache.
        auto scratch = internal::privateScratchFolder(error);
        if (!scratch) return false;
        folder = std::move(*scratch);
    }
    const int access = method_ == Method::inPlace ? O_RDWR : O_WRONLY;
    if (method_ == Method::inPlace || canNameUnnamedFiles()) {
        descriptor_ = FileDescriptor(
            systemCalls().open(folder.c_str(), O_TMPFILE | access | O_CLOEXEC, 0600));
    }
    if (!descriptor_.valid()) {
        // No O_TMPFILE here: a named file, private from its first instant, which a signal handler
        // or the next sweep can find by its name.
        const std::string name = internal::scratchPath(folder, target_);
        registration_ = internal::registerScratchFile(name, true);
        temporary_ = name;
        descriptor_ = FileDescriptor(systemCalls().open(
            name.c_str(), access | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!descriptor_.valid()) {
            failWithErrno(error);
            forgetTemporaryFile();
            return false;
        }
        // The staging file of an in-place write needs no name at all.
        if (method_ == Method::inPlace) {
            systemCalls().unlink(name.c_str());
            forgetTemporaryFile();
        }
    }
    // Held until the file is renamed or removed: proof to any sweep that its writer lives.
    ::flock(descriptor_.get(), LOCK_EX);
    return true;
}

FileReplacement::FileReplacement(FileReplacement&& other) noexcept
    : descriptor_(std::move(other.descriptor_)),
      target_(std::move(other.target_)),
      folder_(std::move(other.folder_)),
      temporary_(std::exchange(other.temporary_, {})),
      registration_(std::exchange(other.registration_, -1)),
      method_(other.method_),
      existed_(other.existed_),
      failed_(other.failed_),
      newFileMode_(other.newFileMode_),
      failure_(other.failure_) {}

FileReplacement::~FileReplacement() {
    descriptor_.reset();
    if (!temporary_.empty()) systemCalls().unlink(temporary_.c_str());
    forgetTemporaryFile();
}

void FileReplacement::forgetTemporaryFile() {
    internal::unregisterScratchFile(std::exchange(registration_, -1));
    temporary_.clear();
}

bool FileReplacement::write(std::span<const std::uint8_t> bytes, std::error_code* error) {
    if (failed_) return fail(error, failure_);
    if (!descriptor_.valid()) {
        return fail(error, std::make_error_code(std::errc::bad_file_descriptor));
    }
    if (internal::writeAll(descriptor_.get(), bytes, -1, &failure_)) return true;
    failed_ = true;
    return fail(error, failure_);
}

bool FileReplacement::commit(std::error_code* error) {
    if (failed_) return fail(error, failure_);
    if (!descriptor_.valid()) {
        return fail(error, std::make_error_code(std::errc::bad_file_descriptor));
    }
    const bool committed =
        method_ == Method::inPlace
            ? internal::overwriteInPlace(target_.c_str(), descriptor_.get(), &failure_)
            : commitByRename(&failure_);
    descriptor_.reset();
    if (committed) return true;
    failed_ = true;
    return fail(error, failure_);
}

bool FileReplacement::commitByRename(std::error_code* error) {
    const int file = descriptor_.get();
    struct stat status {};
    // A target removed since `replacing` is simply created again.
    const bool existing = existed_ && ::stat(target_.c_str(), &status) == 0;
    const bool prepared =
        existing ? takeOverMetadata(target_, file, error)
                 : systemCalls().fchmod(file, newFileMode_) == 0 || failWithErrno(error);
    if (!prepared) return false;
    if (systemCalls().fsync(file) != 0) return failWithErrno(error);
    if (temporary_.empty() && !nameTemporaryFile(error)) return false;
    if (!internal::closeReporting(descriptor_.release(), error)) return false;
    if (systemCalls().rename(temporary_.c_str(), target_.c_str()) != 0) return failWithErrno(error);
    forgetTemporaryFile();
    return internal::syncFolder(folder_, error);
}

bool FileReplacement::nameTemporaryFile(std::error_code* error) {
    const std::string name = internal::scratchPath(folder_, target_);
    registration_ = internal::registerScratchFile(name, true);
    const int file = descriptor_.get();
    int linked = -1;
    if (::geteuid() == 0) {
        linked = systemCalls().linkat(file, "", AT_FDCWD, name.c_str(), AT_EMPTY_PATH);
    }
    if (linked != 0) {
        const std::string self = "/proc/self/fd/" + std::to_string(file);
        linked =
            systemCalls().linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW);
    }
    if (linked != 0) {
        failWithErrno(error);
        forgetTemporaryFile();
        return false;
    }
    temporary_ = name;
    return true;
}

void FileReplacement::removeTemporaryFiles() noexcept {
    internal::removeRegisteredScratchFiles();
}

void FileReplacement::installSignalCleanup() {
    static std::once_flag installed;
    std::call_once(installed, [] {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction current {};
            if (::sigaction(signal, nullptr, &current) != 0) continue;
            const bool isDefault =
                (current.sa_flags & SA_SIGINFO) == 0 && current.sa_handler == SIG_DFL;
            if (!isDefault) continue;
            struct sigaction cleanup {};
            cleanup.sa_handler = removeTemporaryFilesAndDie;
            cleanup.sa_flags = SA_RESETHAND;
            sigemptyset(&cleanup.sa_mask);
            ::sigaction(signal, &cleanup, nullptr);
        }
    });
}

}  // namespace quod
