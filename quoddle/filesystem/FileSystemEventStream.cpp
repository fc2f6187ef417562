#include "quoddle/filesystem/FileSystemEventStream.h"

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "quoddle/filesystem/FileManager.h"
#include "quoddle/filesystem/InotifyRecords.h"
#include "quoddle/runtime/RunLoop.h"
#include "quoddle/runtime/SystemLog.h"

namespace quod::internal {
namespace {

constexpr std::uint32_t changes = IN_ATTRIB | IN_CREATE | IN_DELETE | IN_DELETE_SELF | IN_MODIFY |
                                  IN_MOVE_SELF | IN_MOVED_FROM | IN_MOVED_TO | IN_EXCL_UNLINK;
// Below the root only folders are watched, and never through a symbolic link: a link to a folder
// is an entry like any other, as in a listing, so the walk cannot loop.
constexpr std::uint32_t belowRoot = IN_ONLYDIR | IN_DONT_FOLLOW;

// Reading stops after this many buffers so that a flood cannot keep the main thread from
// delivering; the rest is read in the next turn.
constexpr int readsPerTurn = 64;

bool isAtOrBelow(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) &&
           (path.size() == folder.size() || folder.back() == '/' || path[folder.size()] == '/');
}

std::string joined(const std::string& folder, std::string_view name) {
    std::string path = folder;
    if (path.back() != '/') path += '/';
    path += name;
    return path;
}

FileSystemEventStream::Handle nextHandle() {
    static FileSystemEventStream::Handle last = 0;  // main thread only
    return ++last;
}

}  // namespace

std::shared_ptr<FileSystemEventStream> FileSystemEventStream::create(
    Callback callback, std::string rootPath, std::chrono::nanoseconds latency) {
    if (rootPath.empty()) return nullptr;
    const int inotify = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (inotify < 0) return nullptr;
    std::shared_ptr<FileSystemEventStream> stream(
        new FileSystemEventStream(callback, std::move(rootPath), latency, inotify));
    if (!stream->watchTree(stream->root_, Contents::quiet)) return nullptr;
    return stream;
}

FileSystemEventStream::FileSystemEventStream(Callback callback, std::string rootPath,
                                             std::chrono::nanoseconds latency, int inotify)
    : callback_(callback),
      root_(std::move(rootPath)),
      latency_(latency),
      handle_(nextHandle()),
      inotify_(inotify) {}

FileSystemEventStream::~FileSystemEventStream() {
    source_.disconnect();  // before the descriptor goes, so the loop never polls a stale number
    close(inotify_);
}

void FileSystemEventStream::start() {
    // `this` outlives the source: the connection is a member.
    source_ = RunLoop::main().addReadSource(inotify_, [this] { readEvents(); });
}

void FileSystemEventStream::readEvents() {
    std::vector<Event> events = takeQueuedEvents();
    for (std::size_t index = 0; index < events.size(); ++index)
        handle(events, index);
}

std::vector<FileSystemEventStream::Event> FileSystemEventStream::takeQueuedEvents() const {
    std::vector<Event> events;
    readInotifyRecords(
        inotify_, readsPerTurn, [&](const inotify_event& header, std::string_view name) {
            events.push_back({header.wd, header.mask, header.cookie, std::string(name)});
        });
    return events;
}

// `events` is everything read in this turn, so that a folder's move out can be told from a rename
// inside the tree by looking ahead for the arrival with the same cookie.
void FileSystemEventStream::handle(std::vector<Event>& events, std::size_t index) {
    const Event& event = events[index];
    if (event.mask & IN_Q_OVERFLOW) {
        addToBatch(root_);
        resynchronise();
        return;
    }
    const auto found = watches_.find(event.watch);
    if (found == watches_.end()) return;  // a watch given up on already
    if (event.mask & IN_IGNORED) {
        watches_.erase(found);
        return;
    }
    const std::string path =
        event.name.empty() ? found->second.path : joined(found->second.path, event.name);
    addToBatch(path);

    if (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF)) {
        if (event.watch == rootWatch_) {
            forgetEverything();
        } else if (event.mask & IN_MOVE_SELF) {
            // Normally the parent's move-out or rename was read first; this catches a folder
            // whose parent was not watched.
            forgetMovedTree(path);
        }
        return;
    }
    if (!(event.mask & IN_ISDIR)) return;
    if (event.mask & IN_CREATE) {
        watchTree(path, Contents::reported);
    } else if (event.mask & IN_MOVED_FROM) {
        const auto arrival =
            std::find_if(events.begin() + static_cast<std::ptrdiff_t>(index) + 1, events.end(),
                         [&](const Event& later) {
                             return (later.mask & IN_MOVED_TO) && later.cookie == event.cookie;
                         });
        const auto destination =
            arrival == events.end() ? watches_.end() : watches_.find(arrival->watch);
        if (destination == watches_.end()) {
            forgetMovedTree(path);
        } else {
            arrival->pairedWithEarlierMove = true;
            followMovedTree(path, joined(destination->second.path, arrival->name));
        }
    } else if ((event.mask & IN_MOVED_TO) && !event.pairedWithEarlierMove) {
        watchTree(path, Contents::reported);
    }
}

int FileSystemEventStream::addWatch(const std::string& path) {
    const bool isRoot = path == root_;
    const int watch = inotify_add_watch(inotify_, path.c_str(), changes | (isRoot ? 0 : belowRoot));
    if (watch < 0) {
        if (errno == ENOSPC && !loggedWatchLimit_) {
            loggedWatchLimit_ = true;
            systemLog(
                "FileSystemMonitor: the inotify watch limit is reached; changes in some "
                "folders below " +
                root_ + " are not reported (see fs.inotify.max_user_watches)");
        }
        return -1;
    }
    if (isRoot) rootWatch_ = watch;
    return watch;
}

bool FileSystemEventStream::watchTree(const std::string& top, Contents contents) {
    std::unordered_set<int> visited;
    return watchTree(top, contents, visited);
}

bool FileSystemEventStream::watchTree(const std::string& top, Contents contents,
                                      std::unordered_set<int>& visited) {
    // Watch first, list second: whatever is made after the watch has an event, whatever was made
    // before it is in the listing.
    std::vector<std::string> pending;
    const auto visit = [&](const std::string& path) {
        const int watch = addWatch(path);
        // A folder met twice in one walk (a bind mount of an ancestor) keeps its first path.
        if (watch < 0 || !visited.insert(watch).second) return false;
        // Already watched where it is: it was listed when its watch was made, and everything
        // since has had events. `mkdir -p a/b/c` would otherwise list c three times.
        const auto known = watches_.find(watch);
        if (contents == Contents::reported && known != watches_.end() && known->second.path == path)
            return true;
        struct stat status {};
        const int found =
            path == root_ ? stat(path.c_str(), &status) : lstat(path.c_str(), &status);
        watches_[watch] =
            Watch{path, found == 0 ? status.st_dev : 0, found == 0 ? status.st_ino : 0};
        pending.push_back(path);
        return true;
    };
    if (!visit(top)) return false;
    while (!pending.empty()) {
        const std::string folder = std::move(pending.back());
        pending.pop_back();
        const auto entries = FileManager::contentsOfDirectory(Url::fileURL(folder, true),
                                                              DirectoryEnumerationOptions::none);
        if (!entries) continue;
        for (const Url& entry : *entries) {
            if (contents == Contents::reported) addToBatch(entry.path());
            if (entry.hasDirectoryPath()) visit(entry.path());
        }
    }
    return true;
}

bool FileSystemEventStream::isStillAtItsPath(const Watch& watch) const {
    struct stat status {};
    return lstat(watch.path.c_str(), &status) == 0 && status.st_dev == watch.device &&
           status.st_ino == watch.inode;
}

void FileSystemEventStream::followMovedTree(const std::string& from, const std::string& to) {
    bool followed = false;
    for (auto& [watch, entry] : watches_) {
        if (watch == rootWatch_ || !isAtOrBelow(entry.path, from) || isStillAtItsPath(entry))
            continue;
        entry.path = to + entry.path.substr(from.size());
        followed = true;
    }
    // A folder we held no watch for (the watch limit, or it came and went unseen): watch it now.
    if (!followed) watchTree(to, Contents::reported);
}

void FileSystemEventStream::forgetMovedTree(const std::string& top) {
    for (auto it = watches_.begin(); it != watches_.end();) {
        const auto next = std::next(it);
        if (it->first != rootWatch_ && isAtOrBelow(it->second.path, top) &&
            !isStillAtItsPath(it->second)) {
            forgetWatch(it);
        }
        it = next;
    }
}

void FileSystemEventStream::forgetWatch(std::unordered_map<int, Watch>::iterator watch) {
    // The kernel answers with IN_IGNORED, which then finds nothing to clean up.
    inotify_rm_watch(inotify_, watch->first);
    watches_.erase(watch);
}

void FileSystemEventStream::forgetEverything() {
    while (!watches_.empty())
        forgetWatch(watches_.begin());
    rootWatch_ = -1;
}

void FileSystemEventStream::resynchronise() {
    std::unordered_set<int> visited;
    if (!watchTree(root_, Contents::quiet, visited)) {
        forgetEverything();
        return;
    }
    for (auto it = watches_.begin(); it != watches_.end();) {
        const auto next = std::next(it);
        if (!visited.contains(it->first)) forgetWatch(it);
        it = next;
    }
}

void FileSystemEventStream::addToBatch(std::string path) {
    if (!isAtOrBelow(path, root_)) return;
    if (batch_.empty()) {
        RunLoop::main().postAfter(latency_, [stream = weak_from_this()] { deliverBatch(stream); });
    }
    if (batched_.insert(path).second) batch_.push_back(std::move(path));
}

void FileSystemEventStream::deliverBatch(const std::weak_ptr<FileSystemEventStream>& stream) {
    Callback callback = nullptr;
    Handle handle = 0;
    std::vector<std::string> paths;
    {
        const std::shared_ptr<FileSystemEventStream> live = stream.lock();
        if (!live) return;  // stopped while the batch waited
        callback = live->callback_;
        handle = live->handle_;
        paths = std::exchange(live->batch_, {});
        live->batched_.clear();
    }
    // The stream is not held while the callback runs: its client may stop or destroy it.
    callback(handle, paths);
}

}  // namespace quod::internal
