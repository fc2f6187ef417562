#include "quoddle/base/internal/FileWriting.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "quoddle/base/internal/SystemCalls.h"

namespace quod::internal {

bool fail(std::error_code* error, std::error_code reason) {
    if (error != nullptr) *error = reason;
    return false;
}

bool failWithErrno(std::error_code* error) {
    return fail(error, std::error_code(errno, std::system_category()));
}

bool writeAll(int descriptor, std::span<const std::uint8_t> bytes, off_t offset,
              std::error_code* error) {
    while (!bytes.empty()) {
        const ssize_t count =
            offset < 0 ? systemCalls().write(descriptor, bytes.data(), bytes.size())
                       : systemCalls().pwrite(descriptor, bytes.data(), bytes.size(), offset);
        if (count < 0) {
            if (errno == EINTR) continue;
            return failWithErrno(error);
        }
        if (count == 0) return fail(error, std::make_error_code(std::errc::io_error));
        bytes = bytes.subspan(static_cast<std::size_t>(count));
        if (offset >= 0) offset += count;
    }
    return true;
}

bool copyToEnd(int from, off_t fromOffset, int to, off_t toOffset, std::uint64_t* copied,
               std::error_code* error) {
    if (::lseek(from, fromOffset, SEEK_SET) < 0) return failWithErrno(error);
    std::vector<std::uint8_t> buffer(1 << 20);
    std::uint64_t total = 0;
    for (;;) {
        const ssize_t count = systemCalls().read(from, buffer.data(), buffer.size());
        if (count < 0) {
            if (errno == EINTR) continue;
            return failWithErrno(error);
        }
        if (count == 0) break;
        const auto chunk = std::span(buffer).first(static_cast<std::size_t>(count));
        if (!writeAll(to, chunk, toOffset + static_cast<off_t>(total), error)) return false;
        total += static_cast<std::uint64_t>(count);
    }
    if (copied != nullptr) *copied = total;
    return true;
}

bool syncFolder(const std::string& folder, std::error_code* error) {
    const int descriptor =
        systemCalls().open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    if (descriptor < 0) return failWithErrno(error);
    const bool synced = systemCalls().fsync(descriptor) == 0 || failWithErrno(error);
    return closeReporting(descriptor, synced ? error : nullptr) && synced;
}

bool closeReporting(int descriptor, std::error_code* error) {
    // Not retried on EINTR: on Linux the descriptor is gone whatever close answers.
    return systemCalls().close(descriptor) == 0 || failWithErrno(error);
}

}  // namespace quod::internal
