// Replaces a file's contents all at once: readers, and the disk after a crash, see the old
// contents or the new, never part of each.
//
// `replacing(path)` resolves symbolic links (a link stays a link; the file it names is replaced),
// refuses what cannot be replaced, and opens a temporary file beside the target. The new contents
// go to that file with `write`; `commit` gives it the original's permissions (and owner, which
// only root can keep), flushes it to disk and renames it over the target. A path where nothing
// exists yet is created by `commit`, with the usual permissions for a new file (umask applied);
// its folder must exist. Without a commit, destruction removes the temporary file and the target
// stays as it was.
//
// Failures are quiet: no value or false, with the reason in `error` when asked for. Besides the
// system's errors (ENOENT for a missing folder, EACCES for a folder that cannot be written) there
// are two refusals of this type's own, made before any temporary file exists:
//   - FileReplacementError::notRegularFile: a folder, a device, a pipe;
//   - FileReplacementError::readOnly: a file without write permission, refused even for root,
//     for whom the rename alone would succeed: a read-only file says "do not change me".
//
//   std::error_code error;
//   auto file = FileReplacement::replacing(path, &error);
//   if (!file || !file->write(bytes, &error) || !file->commit(&error)) show(error.message());
#pragma once

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
    [[nodiscard]] static std::optional<FileReplacement> replacing(const std::string& path,
                                                                  std::error_code* error = nullptr);

    FileReplacement(FileReplacement&& other) noexcept;
    FileReplacement& operator=(FileReplacement&&) = delete;
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    ~FileReplacement();

    // Appends to the new contents. False after a failed write or after commit.
    [[nodiscard]] bool write(std::span<const std::uint8_t> bytes, std::error_code* error = nullptr);
    // Puts the new contents in place; true once. After a failure the target is unchanged.
    [[nodiscard]] bool commit(std::error_code* error = nullptr);

    // The file that commit replaces (symbolic links resolved).
    [[nodiscard]] const std::string& target() const { return target_; }

  private:
    FileReplacement() = default;

    FileDescriptor descriptor_;
    std::string target_;
    std::string temporary_;
    bool existed_ = false;
    unsigned permissions_ = 0;
    unsigned owner_ = 0;
    unsigned group_ = 0;
};

}  // namespace quod

template <>
struct std::is_error_code_enum<quod::FileReplacementError> : std::true_type {};
