#include "Progress.h"

#include <unistd.h>

#include <cstdio>

namespace quod::tool {
namespace {
constexpr std::size_t reportedSize = 50'000'000;
}

Progress::Progress(std::string_view command, std::size_t inputBytes) {
    if (inputBytes <= reportedSize || ::isatty(STDERR_FILENO) == 0) return;
    char size[32];
    std::snprintf(size, sizeof size, "%.0f MB", static_cast<double>(inputBytes) / 1e6);
    prefix_ = "quod " + std::string(command) + ": " + size + ": ";
    shown_ = true;
}

Progress::~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::stage(std::string_view what) {
    if (!shown_) return;
    std::fprintf(stderr, "\r\033[K%s%.*s...", prefix_.c_str(), static_cast<int>(what.size()),
                 what.data());
    std::fflush(stderr);
}

}  // namespace quod::tool
