#include "quoddle/base/FileBytes.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "quoddle/base/FileDescriptor.h"

namespace quod {
namespace {

std::nullopt_t fail(std::error_code* error, int number) {
    if (error != nullptr) *error = std::error_code(number, std::system_category());
    return std::nullopt;
}

}  // namespace

std::optional<FileBytes> FileBytes::read(const std::string& path, std::error_code* error) {
    // Read whole, the pages are best brought in at once: one fault per page costs more.
    return open(path, MAP_POPULATE, error);
}

std::optional<FileBytes> FileBytes::readInWindows(const std::string& path, std::error_code* error) {
    return open(path, 0, error);
}

std::optional<FileBytes> FileBytes::open(const std::string& path, int mapFlags,
                                         std::error_code* error) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.valid()) return fail(error, errno);
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) return fail(error, errno);
    if (S_ISDIR(status.st_mode)) return fail(error, EISDIR);
    if (S_ISREG(status.st_mode) && status.st_size > 0) {
        const auto size = static_cast<std::size_t>(status.st_size);
        void* mapping = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | mapFlags, file.get(), 0);
        if (mapping != MAP_FAILED) {
            ::madvise(mapping, size, MADV_SEQUENTIAL);
            FileBytes bytes;
            bytes.mapping_ = mapping;
            bytes.mappedSize_ = size;
            return bytes;
        }
    }
    return readDescriptor(file.get(), error);
}

std::optional<FileBytes> FileBytes::readDescriptor(int descriptor, std::error_code* error) {
    FileBytes bytes;
    std::array<std::uint8_t, 1 << 16> chunk{};
    for (;;) {
        const ssize_t count = ::read(descriptor, chunk.data(), chunk.size());
        if (count == 0) return bytes;
        if (count < 0) {
            if (errno == EINTR) continue;
            return fail(error, errno);
        }
        bytes.readBytes_.insert(bytes.readBytes_.end(), chunk.begin(), chunk.begin() + count);
    }
}

FileBytes::FileBytes(FileBytes&& other) noexcept
    : mapping_(std::exchange(other.mapping_, nullptr)),
      mappedSize_(std::exchange(other.mappedSize_, 0)),
      readBytes_(std::move(other.readBytes_)) {}

FileBytes& FileBytes::operator=(FileBytes&& other) noexcept {
    if (this != &other) {
        unmap();
        mapping_ = std::exchange(other.mapping_, nullptr);
        mappedSize_ = std::exchange(other.mappedSize_, 0);
        readBytes_ = std::move(other.readBytes_);
    }
    return *this;
}

FileBytes::~FileBytes() {
    unmap();
}

void FileBytes::unmap() noexcept {
    if (mapping_ != nullptr) ::munmap(mapping_, mappedSize_);
    mapping_ = nullptr;
    mappedSize_ = 0;
}

void FileBytes::release(std::size_t offset, std::size_t length) const noexcept {
    if (mapping_ == nullptr || offset >= mappedSize_) return;
    // Only whole pages can go: round the start up and the end down to page borders.
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t end = std::min(mappedSize_, offset + std::min(length, mappedSize_ - offset));
    const std::size_t first = (offset + page - 1) / page * page;
    const std::size_t last = end == mappedSize_ ? end : end / page * page;
    // The mapping is private and never written, so its pages hold nothing but the file's bytes
    // and dropping them loses nothing: a later read brings them back from the file.
    if (last > first) ::madvise(static_cast<char*>(mapping_) + first, last - first, MADV_DONTNEED);
}

void FileBytes::prefetch(std::size_t offset, std::size_t length) const noexcept {
#if defined(MADV_POPULATE_READ)
    if (mapping_ == nullptr || offset >= mappedSize_) return;
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t first = offset / page * page;
    const std::size_t end = offset + std::min(length, mappedSize_ - offset);
    // Older kernels answer EINVAL, and a file cut short under the mapping EFAULT: either way
    // the pages are left to come in as they are read, which reports what there is to report.
    ::madvise(static_cast<char*>(mapping_) + first, end - first, MADV_POPULATE_READ);
#else
    static_cast<void>(offset);
    static_cast<void>(length);
#endif
}

std::span<const std::uint8_t> FileBytes::bytes() const {
    if (mapping_ != nullptr) return {static_cast<const std::uint8_t*>(mapping_), mappedSize_};
    return readBytes_;
}

}  // namespace quod
