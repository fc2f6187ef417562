#include "Progress.h"

#include <unistd.h>

#include <cstdio>

namespace quod::tool {
namespace {
constexpr std::size_t reportedSize = 16'000'000;
constexpr int barWidth = 20;
}  // namespace

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
    stage_ = what;
    percent_ = -1;
    show();
}

void Progress::advance(std::size_t done, std::size_t total) {
    if (!shown_ || total == 0) return;
    const int percent =
        static_cast<int>(static_cast<double>(done) * 100.0 / static_cast<double>(total));
    // A line per percent at most: a terminal that redraws on every window slows the command.
    if (percent == percent_) return;
    percent_ = percent;
    show();
}

void Progress::show() {
    std::string line = "\r\033[K" + prefix_ + stage_;
    if (percent_ < 0) {
        line += "...";
    } else {
        const int filled = percent_ * barWidth / 100;
        line += " [" + std::string(static_cast<std::size_t>(filled), '#') +
                std::string(static_cast<std::size_t>(barWidth - filled), ' ') + "] " +
                std::to_string(percent_) + "%";
    }
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace quod::tool
