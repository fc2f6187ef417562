#include "quoddle/filesystem/FileSystemMonitor.h"

#include <type_traits>
#include <unordered_map>

#include "quoddle/base/Precondition.h"
#include "quoddle/filesystem/FileSystemEventStream.h"
#include "quoddle/runtime/RunLoop.h"

namespace quod {
namespace {

using Stream = internal::FileSystemEventStream;
static_assert(std::is_same_v<Stream::Handle, std::uint64_t>,
              "FileSystemMonitor.h spells the stream handle's type out");

using Registry = std::unordered_map<Stream::Handle, std::weak_ptr<FileSystemMonitor>>;

// Made on first use; touched only on the main thread, so not locked.
Registry& monitors() {
    static Registry* const registry = new Registry;
    return *registry;
}

}  // namespace

FileSystemMonitor::FileSystemMonitor(Url url, bool onlyFolders)
    : url_(std::move(url)),
      onlyFolders_(onlyFolders),
      registration_(this, [](FileSystemMonitor*) {}) {
    QUOD_PRECONDITION(RunLoop::isMainThread(), "a FileSystemMonitor is made on the main thread");
    startMonitoring();
    if (streamRef_) {
        Registry& registry = monitors();
        std::erase_if(registry, [](const auto& entry) { return entry.second.expired(); });
        registry[streamRef_->handle()] = registration_;
    }
}

FileSystemMonitor::~FileSystemMonitor() {
    if (streamRef_) {
        monitors().erase(streamRef_->handle());
        streamRef_.reset();  // stops the stream and closes its descriptor
    }
}

void FileSystemMonitor::startMonitoring() {
    streamRef_.reset();
    streamRef_ =
        Stream::create(onlyFolders_ ? &folderCallback : &fileCallback, url_.path(), latency);
    if (streamRef_) streamRef_->start();
}

void FileSystemMonitor::stopMonitoring() {
    streamRef_.reset();
}

void FileSystemMonitor::fileCallback(StreamHandle stream, const std::vector<std::string>& paths) {
    std::unordered_set<Url> urls;
    for (const std::string& path : paths)
        urls.insert(Url::fileURL(path));
    report(stream, urls);
}

void FileSystemMonitor::folderCallback(StreamHandle stream, const std::vector<std::string>& paths) {
    std::unordered_set<Url> urls;
    for (const std::string& path : paths) {
        Url url = Url::fileURL(path);
        urls.insert(url.hasDirectoryPath() ? std::move(url) : url.deletingLastPathComponent());
    }
    report(stream, urls);
}

void FileSystemMonitor::report(StreamHandle stream, const std::unordered_set<Url>& urls) {
    for (const Url& url : urls) {
        // Looked up for every URL: a delegate may stop or destroy the monitor in between.
        const auto found = monitors().find(stream);
        if (found == monitors().end()) continue;
        const std::shared_ptr<FileSystemMonitor> monitor = found->second.lock();
        if (!monitor) continue;
        if (const std::shared_ptr<MonitorDelegate> delegate = monitor->delegate_.lock())
            delegate->monitorDidChange(url);
    }
}

namespace internal {

std::size_t registeredMonitorCount() {
    return monitors().size();
}

}  // namespace internal

}  // namespace quod
