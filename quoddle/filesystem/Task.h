// Running a command-line tool and collecting what it prints.
//
// `Task::run(arguments, launchPath, main)` starts the program at `launchPath` (a path, not looked
// up in PATH), reads its standard output and standard error, which share one pipe and so arrive
// interleaved as the tool wrote them, until both are closed, and returns that text. The child
// inherits the caller's environment and current folder.
//
// Arguments:
//   - one string with launchPath exactly "/bin/sh": the shell runs it as a command line
//     (`sh -c <string>`);
//   - one string with any other launchPath: the tool's only argument;
//   - a list of strings: the arguments as they are;
//   - anything else (a default-constructed `TaskArguments`): "" at once, nothing is started.
//
// `main` true writes one "\n" to the tool's standard input and closes it, so a tool that reads
// its input sees an empty line and then the end. With `main` false the input stays open and
// unwritten while the output is read: a tool that waits for the end of its input never finishes,
// and neither does this call. The input is closed once the output has ended, either way.
//
// The output is decoded chunk by chunk, each read of at most 1,024 bytes on its own: a chunk that
// is not well-formed UTF-8, such as one that ends inside a multi-byte character, is dropped whole.
// That is the framework's established behaviour, kept as it is; a tool whose output matters
// byte for byte must not be run through here.
//
// Failure is quiet: a program that is missing or cannot be executed gives "" at once. The exit
// status is never looked at; the end of the output is the only completion signal.
//
// The call blocks until the tool closes its output (run it off the main thread when that may take
// long). It is safe from any number of threads at once and leaves the host in charge of itself:
//   - every descriptor it opens is close-on-exec, and the child gets only descriptors 0 to 2
//     whatever the host has open, so no tool inherits another's pipe or the host's files;
//   - the child starts with default signal dispositions and an empty signal mask, whatever the
//     host ignores or blocks (apart from glibc's two internal signals, 32 and 33, which its
//     posix_spawn always leaves ignored: nothing outside glibc uses them);
//   - a tool that exits without reading its input does not kill the host with SIGPIPE;
//   - the child is reaped even though the caller does not wait: right away when it has already
//     exited, else by a background reaper that waits for that one process only. Nothing here ever
//     waits for "any child", so a host's own SIGCHLD handler and waitpid calls keep working. A
//     host that itself reaps every child (waitpid(-1)) may take ours; that is harmless.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "quoddle/Export.h"

namespace quod {

// What `Task::run` accepts as arguments: one string, a list of strings, or neither (the value a
// caller holds when its arguments came in some other form, which runs nothing).
class TaskArguments {
  public:
    using Value = std::variant<std::monostate, std::string, std::vector<std::string>>;

    TaskArguments() = default;
    TaskArguments(std::string argument) : value_(std::move(argument)) {}
    TaskArguments(const char* argument) : value_(std::string(argument)) {}
    TaskArguments(std::vector<std::string> arguments) : value_(std::move(arguments)) {}
    TaskArguments(std::initializer_list<std::string> arguments)
        : value_(std::vector<std::string>(arguments)) {}

    [[nodiscard]] const Value& value() const { return value_; }

  private:
    Value value_;
};

class QUODDLE_EXPORT Task {
  public:
    [[nodiscard]] static std::string run(const TaskArguments& arguments,
                                         std::string_view launchPath, bool main);
};

namespace internal {

// Writes `bytes` to a pipe. A pipe whose reader has gone gives false instead of SIGPIPE; a SIGPIPE
// that was already pending for the caller's thread stays pending, and the thread's signal mask is
// as it was. Partial writes are continued, EINTR retried.
bool writeWithoutBrokenPipeSignal(int descriptor, std::string_view bytes);

}  // namespace internal
}  // namespace quod
