// Sole ownership of an open file descriptor: closed when the owner dies, never twice.
//
// A negative value means "none" (what a failed open(2) returns), so the result of a system call
// can be wrapped before it is checked:
//
//     const FileDescriptor file(::open(path, O_RDONLY | O_CLOEXEC));
//     if (!file.valid()) return std::nullopt;
//
// Moving hands the descriptor over and leaves the source empty. `release()` gives it up without
// closing it (to another owner); `reset()` closes it now. close(2) errors are ignored: by then
// the descriptor is gone whatever close answers, and retrying would close someone else's.
#pragma once

#include <unistd.h>

#include <utility>

namespace quod {

class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~FileDescriptor() { reset(); }

    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            reset();
            descriptor_ = other.release();
        }
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    [[nodiscard]] int get() const { return descriptor_; }
    [[nodiscard]] bool valid() const { return descriptor_ >= 0; }

    [[nodiscard]] int release() { return std::exchange(descriptor_, -1); }
    void reset() {
        if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
    }

  private:
    int descriptor_ = -1;
};

}  // namespace quod
