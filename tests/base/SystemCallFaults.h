// Faults for the file writer's system calls: while a SystemCallFaults lives, every call through
// internal::systemCalls() is counted, and one of them can be made to fail with a chosen errno, or
// the process can end (with _exit, as a kill would leave it) just before a chosen call.
//
// Positions count from 0, per kind of call for failures and over all calls for deaths, so a test
// walks every position until the fault no longer triggers. Only one SystemCallFaults at a time.
#pragma once

#include <fcntl.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <functional>
#include <string_view>

#include "quoddle/base/internal/SystemCalls.h"

namespace quod::testing {

enum class SystemCall {
    open,
    read,
    write,
    pwrite,
    ftruncate,
    fsync,
    fchmod,
    fchown,
    fsetxattr,
    linkat,
    rename,
    unlink,
    close,
    count
};

inline constexpr std::array<std::string_view, static_cast<int>(SystemCall::count)> systemCallNames{
    "open",   "read",      "write",  "pwrite", "ftruncate", "fsync", "fchmod",
    "fchown", "fsetxattr", "linkat", "rename", "unlink",    "close"};

class SystemCallFaults {
  public:
    static constexpr int diedExitCode = 86;

    SystemCallFaults() {
        state() = State{};
        auto& calls = internal::systemCalls();
        calls.open = [](const char* path, int flags, mode_t mode) {
            if ((flags & O_TMPFILE) == O_TMPFILE && state().noUnnamedFiles) {
                errno = EOPNOTSUPP;
                return -1;
            }
            return fault(SystemCall::open) ? -1 : real().open(path, flags, mode);
        };
        calls.read = [](int file, void* buffer, size_t count) -> ssize_t {
            return fault(SystemCall::read) ? -1 : real().read(file, buffer, count);
        };
        calls.write = [](int file, const void* buffer, size_t count) -> ssize_t {
            return fault(SystemCall::write) ? -1 : real().write(file, buffer, count);
        };
        calls.pwrite = [](int file, const void* buffer, size_t count, off_t offset) -> ssize_t {
            return fault(SystemCall::pwrite) ? -1 : real().pwrite(file, buffer, count, offset);
        };
        calls.ftruncate = [](int file, off_t length) {
            return fault(SystemCall::ftruncate) ? -1 : real().ftruncate(file, length);
        };
        calls.fsync = [](int file) { return fault(SystemCall::fsync) ? -1 : real().fsync(file); };
        calls.fchmod = [](int file, mode_t mode) {
            return fault(SystemCall::fchmod) ? -1 : real().fchmod(file, mode);
        };
        calls.fchown = [](int file, uid_t owner, gid_t group) {
            return fault(SystemCall::fchown) ? -1 : real().fchown(file, owner, group);
        };
        calls.fsetxattr = [](int file, const char* name, const void* value, size_t size,
                             int flags) {
            return fault(SystemCall::fsetxattr) ? -1
                                                : real().fsetxattr(file, name, value, size, flags);
        };
        calls.linkat = [](int fromFolder, const char* from, int toFolder, const char* to,
                          int flags) {
            return fault(SystemCall::linkat) ? -1
                                             : real().linkat(fromFolder, from, toFolder, to, flags);
        };
        calls.rename = [](const char* from, const char* to) {
            return fault(SystemCall::rename) ? -1 : real().rename(from, to);
        };
        calls.unlink = [](const char* path) {
            return fault(SystemCall::unlink) ? -1 : real().unlink(path);
        };
        calls.close = [](int file) {
            if (!fault(SystemCall::close)) return real().close(file);
            // A failing close still closes, as on Linux.
            const int reason = errno;
            real().close(file);
            errno = reason;
            return -1;
        };
    }
    ~SystemCallFaults() { internal::systemCalls() = real(); }
    SystemCallFaults(const SystemCallFaults&) = delete;
    SystemCallFaults& operator=(const SystemCallFaults&) = delete;

    // The `position`th call of `call` from now fails with `error`.
    void failAt(SystemCall call, int position, int error) {
        reset();
        state().failCall = call;
        state().failPosition = position;
        state().failError = error;
    }
    // The process ends with diedExitCode just before its `step`th call from now.
    void dieAt(int step) {
        reset();
        state().dieStep = step;
    }
    // Behave as a file system without O_TMPFILE.
    void withoutUnnamedFiles() { state().noUnnamedFiles = true; }
    void reset() {
        const bool noUnnamedFiles = state().noUnnamedFiles;
        state() = State{};
        state().noUnnamedFiles = noUnnamedFiles;
    }

    [[nodiscard]] bool triggered() const { return state().triggered; }
    [[nodiscard]] int steps() const { return state().steps; }

    // Runs `work` in a child process that dies at `step`; its exit code (diedExitCode if it did,
    // else 0 when `work` answered true, 1 when false), or -1 when it ended otherwise.
    int runInChildDyingAt(int step, const std::function<bool()>& work) {
        const pid_t child = ::fork();
        if (child == 0) {
            dieAt(step);
            ::_exit(work() ? 0 : 1);
        }
        int status = 0;
        if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
        return WEXITSTATUS(status);
    }

  private:
    struct State {
        int steps = 0;
        std::array<int, static_cast<int>(SystemCall::count)> counts{};
        SystemCall failCall = SystemCall::count;
        int failPosition = -1;
        int failError = 0;
        int dieStep = -1;
        bool triggered = false;
        bool noUnnamedFiles = false;
    };
    static State& state() {
        static State shared;
        return shared;
    }
    static const internal::SystemCalls& real() { return internal::realSystemCalls(); }
    // True (with errno set) when this call is to fail.
    static bool fault(SystemCall call) {
        State& now = state();
        if (now.steps++ == now.dieStep) ::_exit(diedExitCode);
        const int position = now.counts[static_cast<int>(call)]++;
        if (call != now.failCall || position != now.failPosition) return false;
        now.triggered = true;
        errno = now.failError;
        return true;
    }
};

}  // namespace quod::testing
