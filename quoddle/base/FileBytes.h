// The whole contents of a file, read at once: a read-only mapping of a regular file, or the bytes
// that reading delivered for anything that cannot be mapped (pipes, terminals, the files under
// /proc that report a size of 0). A large file can also be gone through window by window in a few
// megabytes of memory (`readInWindows`, `prefetch`, `release`).
//
// Reading fails quietly: no value, and the system's reason in `error` when the caller asks for it.
// A folder fails with EISDIR rather than reading as empty. An empty file is an empty span.
//
// A mapping spares copying a large file before it is decoded; it is private and read-only, so a
// later change to the file on disk may or may not show through it. Take what you need from
// `bytes()` and let the FileBytes go. The span stays valid while its FileBytes lives, moves
// included.
//
//   std::error_code error;
//   if (auto file = FileBytes::read("/etc/hostname", &error)) use(file->bytes());
//   else report(error.message());
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT FileBytes {
  public:
    [[nodiscard]] static std::optional<FileBytes> read(const std::string& path,
                                                       std::error_code* error = nullptr);
    // As read, for a caller that goes through a large file front to back in windows: a mapped
    // file's pages come in only as they are read, and `release` lets them go again, so that only
    // about one window stays in memory however large the file is. Anything that cannot be mapped
    // is read whole, as by read.
    [[nodiscard]] static std::optional<FileBytes> readInWindows(const std::string& path,
                                                                std::error_code* error = nullptr);
    // Reads what an open descriptor delivers up to its end; the descriptor stays open.
    [[nodiscard]] static std::optional<FileBytes> readDescriptor(int descriptor,
                                                                 std::error_code* error = nullptr);

    FileBytes(FileBytes&& other) noexcept;
    FileBytes& operator=(FileBytes&& other) noexcept;
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;
    ~FileBytes();

    [[nodiscard]] std::span<const std::uint8_t> bytes() const;
    // Lets the memory behind bytes()[offset, offset + length) go, where the bytes are a mapping
    // (the whole pages inside that range); reading them again brings them back from the file.
    // Bytes that were read into memory stay.
    void release(std::size_t offset, std::size_t length) const noexcept;
    // Brings the pages of bytes()[offset, offset + length) in at once, where the bytes are a
    // mapping, for a caller about to read all of them: one call instead of a page fault every few
    // pages. Only a hint: without it (or where the system cannot) the pages come in as read.
    void prefetch(std::size_t offset, std::size_t length) const noexcept;

  private:
    FileBytes() = default;
    [[nodiscard]] static std::optional<FileBytes> open(const std::string& path, int mapFlags,
                                                       std::error_code* error);
    void unmap() noexcept;

    void* mapping_ = nullptr;
    std::size_t mappedSize_ = 0;
    std::vector<std::uint8_t> readBytes_;
};

}  // namespace quod
