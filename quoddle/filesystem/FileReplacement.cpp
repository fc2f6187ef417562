#include "quoddle/filesystem/FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <utility>

namespace quod {
namespace {

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

bool fail(std::error_code* error, std::error_code reason) {
    if (error != nullptr) *error = reason;
    return false;
}

bool failWithErrno(std::error_code* error) {
    return fail(error, std::error_code(errno, std::system_category()));
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
    FileReplacement replacement;
    char resolved[PATH_MAX];
    if (::realpath(path.c_str(), resolved) != nullptr) {
        replacement.target_ = resolved;
        struct stat status {};
        if (::stat(replacement.target_.c_str(), &status) != 0) {
            failWithErrno(error);
            return std::nullopt;
        }
        if (!S_ISREG(status.st_mode)) {
            fail(error, FileReplacementError::notRegularFile);
            return std::nullopt;
        }
        if ((status.st_mode & 0222) == 0 || ::access(replacement.target_.c_str(), W_OK) != 0) {
            fail(error, FileReplacementError::readOnly);
            return std::nullopt;
        }
        replacement.existed_ = true;
        replacement.permissions_ = status.st_mode & 07777;
        replacement.owner_ = status.st_uid;
        replacement.group_ = status.st_gid;
    } else if (errno == ENOENT && !path.empty()) {
        // A new file: the folder must exist, which opening the temporary file beside it checks.
        replacement.target_ = path;
    } else {
        failWithErrno(error);
        return std::nullopt;
    }
    // A name of our own instead of mkostemp: the kernel then applies the umask to a new file's
    // permissions, as it would for any other program creating it.
    static std::atomic<uint64_t> counter{0};
    const std::size_t slash = replacement.target_.rfind('/');
    const std::string folder =
        slash == std::string::npos ? std::string() : replacement.target_.substr(0, slash + 1);
    const std::string name = replacement.target_.substr(slash == std::string::npos ? 0 : slash + 1);
    std::string temporary = folder + "." + name + ".replacement-" + std::to_string(::getpid()) +
                            "-" + std::to_string(counter.fetch_add(1));
    replacement.descriptor_ =
        FileDescriptor(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!replacement.descriptor_.valid()) {
        failWithErrno(error);
        return std::nullopt;
    }
    replacement.temporary_ = std::move(temporary);
    return replacement;
}

FileReplacement::FileReplacement(FileReplacement&& other) noexcept
    : descriptor_(std::move(other.descriptor_)),
      target_(std::move(other.target_)),
      temporary_(std::exchange(other.temporary_, {})),
      existed_(other.existed_),
      permissions_(other.permissions_),
      owner_(other.owner_),
      group_(other.group_) {}

FileReplacement::~FileReplacement() {
    descriptor_.reset();
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

bool FileReplacement::write(std::span<const std::uint8_t> bytes, std::error_code* error) {
    if (!descriptor_.valid())
        return fail(error, std::make_error_code(std::errc::bad_file_descriptor));
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor_.get(), bytes.data(), bytes.size());
        if (count < 0) {
            if (errno == EINTR) continue;
            return failWithErrno(error);
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool FileReplacement::commit(std::error_code* error) {
    if (!descriptor_.valid())
        return fail(error, std::make_error_code(std::errc::bad_file_descriptor));
    if (existed_) {
        if (::fchmod(descriptor_.get(), permissions_) != 0) return failWithErrno(error);
        // Keeping the owner only works for root; anyone else already owns what they may rename.
        [[maybe_unused]] const int kept = ::fchown(descriptor_.get(), owner_, group_);
    }
    if (::fsync(descriptor_.get()) != 0) return failWithErrno(error);
    // A failing close is reported: some file systems only report write errors there.
    if (::close(descriptor_.release()) != 0) return failWithErrno(error);
    if (::rename(temporary_.c_str(), target_.c_str()) != 0) return failWithErrno(error);
    temporary_.clear();
    return true;
}

}  // namespace quod
