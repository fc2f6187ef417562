// Watches a folder and everything below it and tells a delegate which items, or which folders,
// changed.
//
// Reports come in batches: the first change opens a batch, and one `latency` (1.0 s) later the
// delegate hears of everything that changed meanwhile, each URL once per batch, in no particular
// order. What a report names depends on `onlyFolders`, chosen when monitoring starts:
//   * false: each changed item's file URL. Whether it is a directory URL is decided by looking at
//     the disk at delivery, so a deleted folder comes as a plain file URL of its own path.
//   * true: a changed folder as itself, anything else as its parent folder. Three files changed
//     in one folder make one report of that folder; a deleted item is no longer a folder on
//     disk, so it is reported as its parent.
// A folder that appears is listed at once (the stream behind it sees to that), so entries made in
// it before the monitor noticed it are reported too. Renames report the old and the new path. If
// the kernel drops events (its queue overflowed), the root is reported instead, once in that
// batch, and watching goes on. Nothing outside the watched folder is ever reported.
//
//     auto recorder = std::make_shared<Recorder>();  // a MonitorDelegate
//     FileSystemMonitor monitor(Url::fileURL("/home/me/project", true), true);
//     monitor.setDelegate(recorder);
//
// Lifecycle. The constructor starts monitoring and, if that worked, registers the monitor under
// its stream's handle: that registration is the only way a batch finds its monitor. Hence:
//   * A monitor whose folder cannot be watched (missing, inotify unavailable) stays stopped and
//     silent; starting it later works but is not registered (next point).
//   * `startMonitoring()` on a constructed monitor makes a new stream that is not registered, so
//     its batches are dropped. This is kept on purpose: make a new monitor instead of
//     restarting one.
//   * `setOnlyFolders` changes nothing until the next `startMonitoring()`.
//   * `stopMonitoring()` ends reports at once (a batch still waiting is dropped); twice is
//     harmless. The registration stays until destruction.
//   * Destruction removes the registration, then ends the stream; no report arrives after it.
//   * Events before a delegate is set, or while there is none, are consumed and lost.
// Everything happens on the main thread: construction, the member functions, destruction and the
// reports, which RunLoop::main() delivers. Not copyable or movable: the registration points at it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/filesystem/MonitorType.h"

namespace quod {

namespace internal {
class FileSystemEventStream;
}

class QUODDLE_EXPORT FileSystemMonitor final : public MonitorType {
  public:
    static constexpr std::chrono::nanoseconds latency = std::chrono::seconds(1);

    FileSystemMonitor(Url url, bool onlyFolders);
    ~FileSystemMonitor() override;
    FileSystemMonitor(const FileSystemMonitor&) = delete;
    FileSystemMonitor& operator=(const FileSystemMonitor&) = delete;

    [[nodiscard]] const Url& url() const override { return url_; }
    [[nodiscard]] std::shared_ptr<MonitorDelegate> delegate() const override {
        return delegate_.lock();
    }
    void setDelegate(std::weak_ptr<MonitorDelegate> delegate) override {
        delegate_ = std::move(delegate);
    }
    [[nodiscard]] bool onlyFolders() const { return onlyFolders_; }
    void setOnlyFolders(bool onlyFolders) { onlyFolders_ = onlyFolders; }

    void startMonitoring() override;
    void stopMonitoring() override;

  private:
    // The stream's handle (FileSystemEventStream::Handle, which stays out of the installed
    // headers).
    using StreamHandle = std::uint64_t;

    // The stream's callbacks: no client context, only the handle to look the monitor up by.
    static void fileCallback(StreamHandle stream, const std::vector<std::string>& paths);
    static void folderCallback(StreamHandle stream, const std::vector<std::string>& paths);
    static void report(StreamHandle stream, const std::unordered_set<Url>& urls);

    std::shared_ptr<internal::FileSystemEventStream> streamRef_;
    std::weak_ptr<MonitorDelegate> delegate_;
    const Url url_;
    bool onlyFolders_;
    // What the registry's weak values point at: never owns the monitor (its deleter does
    // nothing) and expires with it.
    const std::shared_ptr<FileSystemMonitor> registration_;
};

namespace internal {

// Entries in the registry of monitors by stream handle, including those whose monitor is gone
// (a monitor stopped before its destruction leaves one until the next registration sweeps it).
[[nodiscard]] std::size_t registeredMonitorCount();

}  // namespace internal

}  // namespace quod
