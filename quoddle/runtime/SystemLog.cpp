#include "quoddle/runtime/SystemLog.h"

#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <string>

namespace quod {
namespace {

std::mutex& sinkMutex() {
    static std::mutex mutex;
    return mutex;
}

LogSink& currentSink() {
    static LogSink sink;
    return sink;
}

void writeToStandardError(std::string_view message) {
    std::string line = program_invocation_short_name;
    line += ": ";
    line += message;
    line += '\n';
    const char* next = line.data();
    size_t left = line.size();
    while (left > 0) {
        const ssize_t written = ::write(STDERR_FILENO, next, left);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;  // nowhere to report that the report failed
        next += written;
        left -= static_cast<size_t>(written);
    }
}

}  // namespace

void systemLog(std::string_view message) {
    std::lock_guard lock(sinkMutex());
    if (currentSink())
        currentSink()(message);
    else
        writeToStandardError(message);
}

LogSink setSystemLogSink(LogSink sink) {
    std::lock_guard lock(sinkMutex());
    std::swap(currentSink(), sink);
    return sink;
}

}  // namespace quod
