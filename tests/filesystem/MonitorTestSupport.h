// What the monitor tests share: a scratch folder, a delegate that records its reports, waits that
// drive the main run loop, and counts of the process's descriptors and inotify watches.
#pragma once

#include <dirent.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "quoddle/filesystem/FileSystemMonitor.h"
#include "quoddle/filesystem/MonitorDelegate.h"
#include "quoddle/filesystem/SingleFolderMonitor.h"
#include "quoddle/runtime/RunLoop.h"
#include "tests/support/TemporaryFolder.h"

namespace quod::testing {

using namespace std::chrono_literals;

// Waits end as soon as their condition holds; this only matters when a test fails.
constexpr auto patience = 30s;
// Longer than a monitor's latency with room for a loaded machine: a report that was going to
// come has come by then.
constexpr auto pastLatency = 1500ms;

// On tmpfs when there is one: the stress tests make tens of thousands of files, and on ext4
// finding free inodes after other tests' mass deletions costs more than all the rest.
class MonitorFolder : public TemporaryFolder {
  public:
    MonitorFolder() : TemporaryFolder("quoddle-monitor", Storage::memoryWhenWritable) {}

    [[nodiscard]] Url url() const { return Url::fileURL(path().native(), true); }
    [[nodiscard]] Url url(const std::string& relative, bool isDirectory) const {
        return Url::fileURL(path(relative).native(), isDirectory);
    }
};

class Recorder : public MonitorDelegate {
  public:
    void monitorDidChange(const Url& url) override {
        if (!RunLoop::isMainThread()) {
            calledOffTheMainThread = true;
            return;
        }
        reports.push_back(url);
    }

    [[nodiscard]] long count(const Url& url) const { return std::ranges::count(reports, url); }
    [[nodiscard]] bool saw(const Url& url) const { return count(url) > 0; }
    [[nodiscard]] std::vector<std::string> sortedPaths() const {
        std::vector<std::string> paths;
        for (const Url& url : reports)
            paths.push_back(url.path() + (url.hasDirectoryPath() ? "/" : ""));
        std::ranges::sort(paths);
        return paths;
    }

    std::vector<Url> reports;  // main thread only
    std::atomic<bool> calledOffTheMainThread{false};
};

// Runs the main loop until `condition` holds. The loop is woken by its own work only, so the
// condition is also checked every few milliseconds for state that other threads change.
inline bool waitUntil(const std::function<bool()>& condition,
                      std::chrono::nanoseconds timeout = patience) {
    const auto deadline = RunLoop::Clock::now() + timeout;
    while (!condition()) {
        if (RunLoop::Clock::now() >= deadline) return false;
        RunLoop::main().runUntil(condition, 5ms);
    }
    return true;
}

inline void runFor(std::chrono::nanoseconds duration) {
    RunLoop::main().runUntil([] { return false; }, duration);
}

inline void writeFile(const std::string& path, const std::string& contents = "x") {
    std::ofstream(path, std::ios::app) << contents;
}

// Makes the descriptors that the process opens once and keeps (the main run loop's, the one of
// the thread that watches single-folder monitors), so that counts taken afterwards compare
// like with like.
inline void openLastingDescriptors(const Url& anyFolder) {
    SingleFolderMonitor first(anyFolder);
    first.stopMonitoring();
    waitUntil([&] { return first.fileDescriptor() == -1; });
}

inline int openDescriptorCount() {
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

// The registry's entry count once entries of monitors gone since are swept away (which making a
// monitor does), so that it counts exactly the live registrations.
inline std::size_t liveRegistrationCount(const Url& anyFolder) {
    { FileSystemMonitor sweeping(anyFolder, false); }
    return internal::registeredMonitorCount();
}

// Watches held by all inotify descriptors of the process, as the kernel lists them.
inline int inotifyWatchCount() {
    int count = 0;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fdinfo", error)) {
        std::ifstream info(entry.path());
        for (std::string line; std::getline(info, line);)
            count += line.starts_with("inotify wd:");
    }
    return count;
}

}  // namespace quod::testing
