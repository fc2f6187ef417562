#include "quoddle/filesystem/Task.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include "quoddle/base/FileDescriptor.h"
#include "quoddle/filesystem/ChildReaper.h"
#include "quoddle/strings/Utf8Scan.h"

extern char** environ;

namespace quod {
namespace {

constexpr std::size_t chunkSize = 1024;

// The argument vector after argv[0], or no value when the arguments are of no usable kind.
std::optional<std::vector<std::string>> argumentList(const TaskArguments& arguments,
                                                     std::string_view launchPath) {
    if (const auto* line = std::get_if<std::string>(&arguments.value())) {
        if (launchPath == "/bin/sh") return std::vector<std::string>{"-c", *line};
        return std::vector<std::string>{*line};
    }
    if (const auto* list = std::get_if<std::vector<std::string>>(&arguments.value())) return *list;
    return std::nullopt;
}

// A descriptor numbered 3 or above. When the host runs with a standard stream closed, a new pipe
// can land on 0, 1 or 2, and the child's dup2 calls would then overwrite one pipe end with another.
FileDescriptor aboveStandardStreams(FileDescriptor descriptor) {
    if (!descriptor.valid() || descriptor.get() > STDERR_FILENO) return descriptor;
    return FileDescriptor(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

struct Pipe {
    FileDescriptor read;
    FileDescriptor write;

    static Pipe make() {
        int ends[2] = {-1, -1};
        if (::pipe2(ends, O_CLOEXEC) != 0) return {};
        return {aboveStandardStreams(FileDescriptor(ends[0])),
                aboveStandardStreams(FileDescriptor(ends[1]))};
    }
    [[nodiscard]] bool valid() const { return read.valid() && write.valid(); }
};

// posix_spawn's two settings objects, destroyed however the launch ends.
struct SpawnSettings {
    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};

    SpawnSettings() {
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawnattr_init(&attributes);
    }
    ~SpawnSettings() {
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&actions);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
};

// Starts the tool with `input` as its standard input and `output` as both its standard output and
// standard error; the process id, or no value when it could not be started.
std::optional<pid_t> spawn(const std::string& launchPath, const std::vector<std::string>& arguments,
                           int input, int output) {
    SpawnSettings settings;
    // dup2 clears close-on-exec on the copy, so exactly these three survive the exec; closefrom
    // (close_range inside glibc) then drops everything above, whatever the host left inheritable,
    // in one call however high the descriptor limit is.
    if (::posix_spawn_file_actions_adddup2(&settings.actions, input, STDIN_FILENO) != 0 ||
        ::posix_spawn_file_actions_adddup2(&settings.actions, output, STDOUT_FILENO) != 0 ||
        ::posix_spawn_file_actions_adddup2(&settings.actions, output, STDERR_FILENO) != 0 ||
        ::posix_spawn_file_actions_addclosefrom_np(&settings.actions, STDERR_FILENO + 1) != 0) {
        return std::nullopt;
    }
    // A tool should start as if from a fresh shell: what the host ignores (SIGPIPE, often) or
    // blocks is the host's business, and a tool with SIGPIPE ignored would not stop when the
    // reader of its output goes away.
    sigset_t all;
    sigset_t none;
    ::sigfillset(&all);
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigdefault(&settings.attributes, &all);
    ::posix_spawnattr_setsigmask(&settings.attributes, &none);
    ::posix_spawnattr_setflags(&settings.attributes,
                               POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

    std::vector<char*> argv;
    argv.reserve(arguments.size() + 2);
    argv.push_back(const_cast<char*>(launchPath.c_str()));
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    // glibc reports a failed exec (a missing or non-executable program) as the result here and
    // has already collected the short-lived child itself.
    pid_t pid = 0;
    if (::posix_spawn(&pid, launchPath.c_str(), &settings.actions, &settings.attributes,
                      argv.data(), environ) != 0) {
        return std::nullopt;
    }
    return pid;
}

// Reads until end-of-output; each chunk counts only if it is well-formed UTF-8 on its own.
std::string readOutput(int descriptor) {
    std::string text;
    char chunk[chunkSize];
    for (;;) {
        const ssize_t count = ::read(descriptor, chunk, sizeof chunk);
        if (count < 0 && errno == EINTR) continue;  // a host's signal handler ran on this thread
        if (count <= 0) return text;
        const auto bytes = std::span(reinterpret_cast<const std::uint8_t*>(chunk),
                                     static_cast<std::size_t>(count));
        if (internal::scanUtf8(bytes).wellFormed) text.append(chunk, bytes.size());
    }
}

}  // namespace

namespace internal {

// SIGPIPE raised by a write to a pipe is directed at the writing thread, so blocking it on this
// thread alone is enough: no process-wide disposition changes under the host's feet, and other
// threads are not affected. If the write raised it, it is now pending on this thread and is taken
// off with a zero-timeout sigtimedwait before the old mask comes back; one that was pending before
// the write is somebody else's and stays.
bool writeWithoutBrokenPipeSignal(int descriptor, std::string_view bytes) {
    sigset_t brokenPipe;
    sigset_t previousMask;
    sigset_t pending;
    ::sigemptyset(&brokenPipe);
    ::sigaddset(&brokenPipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &brokenPipe, &previousMask);
    ::sigpending(&pending);
    const bool wasPending = ::sigismember(&pending, SIGPIPE) == 1;

    bool written = true;
    bool readerGone = false;
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0) {
            if (errno == EINTR) continue;
            readerGone = errno == EPIPE;
            written = false;
            break;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }

    if (readerGone && !wasPending) {
        const timespec immediately{};
        while (::sigtimedwait(&brokenPipe, nullptr, &immediately) < 0 && errno == EINTR) {
        }
    }
    ::pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
    return written;
}

}  // namespace internal

std::string Task::run(const TaskArguments& arguments, std::string_view launchPath, bool main) {
    const auto argumentVector = argumentList(arguments, launchPath);
    if (!argumentVector) return {};

    Pipe output = Pipe::make();
    Pipe input = Pipe::make();
    if (!output.valid() || !input.valid()) return {};

    const auto pid =
        spawn(std::string(launchPath), *argumentVector, input.read.get(), output.write.get());
    // Our copies of the child's ends go now: the output then ends when the child's copies close,
    // and a failed launch reads as empty output.
    output.write.reset();
    input.read.reset();

    // Opened before anything can reap the child, so it names this child and no later process
    // that might get the same id. The raw system call, since glibc 2.36's <sys/pidfd.h> declares
    // pidfd_open without C linkage and C++ cannot link to it.
    FileDescriptor processHandle(pid ? static_cast<int>(::syscall(SYS_pidfd_open, *pid, 0)) : -1);

    if (pid && main) {
        (void)internal::writeWithoutBrokenPipeSignal(input.write.get(), "\n");
        input.write.reset();
    }
    std::string text = readOutput(output.read.get());
    output.read.reset();
    input.write.reset();

    if (pid && !internal::reapIfExited(*pid, processHandle))
        internal::reapInBackground(*pid, std::move(processHandle));
    return text;
}

}  // namespace quod
