// The whole contents of a file, read at once: a read-only mapping of a regular file, or the bytes
// that reading delivered for anything that cannot be mapped (pipes, terminals, the files under
// /proc that report a size of 0).
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
    // Reads what an open descriptor delivers up to its end; the descriptor stays open.
    [[nodiscard]] static std::optional<FileBytes> readDescriptor(int descriptor,
                                                                 std::error_code* error = nullptr);

    FileBytes(FileBytes&& other) noexcept;
    FileBytes& operator=(FileBytes&& other) noexcept;
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;
    ~FileBytes();

    [[nodiscard]] std::span<const std::uint8_t> bytes() const;

  private:
    FileBytes() = default;
    void unmap() noexcept;

    void* mapping_ = nullptr;
    std::size_t mappedSize_ = 0;
    std::vector<std::uint8_t> readBytes_;
};

}  // namespace quod
