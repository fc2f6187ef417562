// The recursive inotify watch behind FileSystemMonitor: one folder and everything below it,
// reported on the main run loop as batches of changed paths.
//
// What is reported. Every inotify event of a watched folder names a path: the entry it is about,
// or the folder itself when it has no name. Paths are full paths without a trailing "/", begin
// with the root path as given (no symbolic links resolved) and never name anything outside the
// root. A path is reported whether or not it still exists (a deleted file's path, a renamed
// folder's old and new paths). The root may also be a single file; it is then the only path.
//
// Batches. The first path of a batch opens it; `latency` later the callback receives every path
// gathered meanwhile, each once, in the order first seen, as one call. The callback gets the
// stream's handle and the paths, nothing else: it finds its client through the handle.
//
// Keeping the watch whole:
//   * A folder that appears (made, or moved in from outside) is watched first and listed after,
//     all the way down, so that entries made before its watch existed are not lost: every path
//     the listing finds joins the batch as if it had an event of its own.
//   * A folder renamed inside the tree keeps its watches (inotify keeps them across a rename);
//     the recorded paths of it and everything below it are rewritten, so later changes there are
//     reported under the new path.
//   * A folder moved out of the tree loses its watches and everything below it does too.
//     Whether a watched folder has moved is decided by comparing the inode now at its recorded
//     path with the one watched, so a folder made in its old place at once is not mistaken for it.
//   * When the kernel's event queue overflows, events were lost: the root joins the batch (once)
//     and the whole tree is walked again, watching what is new and dropping watches of folders
//     that are gone or moved away.
//   * When the per-user watch limit is reached, the folders that could be watched stay watched and
//     one line goes to the system log (once per stream).
//   * When the root itself is deleted or moved away, the stream reports the root and stops
//     watching: the path no longer names the folder it watched.
//
// Lifetime: `create` answers no stream when inotify cannot be set up or the root cannot be
// watched (missing, unreadable). Events queue from `create` on and are read once `start` put the
// stream on the main run loop. Destroying the stream ends everything: a batch still waiting for
// its latency is dropped, and the inotify descriptor with all its watches is closed. Streams are
// made, started and destroyed on the main thread.
//
// Costs: a folder's appearance costs a listing of its subtree on the main thread; a rename or a
// move costs a look at every watch.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "quoddle/base/Signal.h"

namespace quod::internal {

class FileSystemEventStream : public std::enable_shared_from_this<FileSystemEventStream> {
  public:
    // Tells streams apart; never reused within the process.
    using Handle = std::uint64_t;
    using Callback = void (*)(Handle stream, const std::vector<std::string>& paths);

    [[nodiscard]] static std::shared_ptr<FileSystemEventStream> create(
        Callback callback, std::string rootPath, std::chrono::nanoseconds latency);

    ~FileSystemEventStream();
    FileSystemEventStream(const FileSystemEventStream&) = delete;
    FileSystemEventStream& operator=(const FileSystemEventStream&) = delete;

    [[nodiscard]] Handle handle() const { return handle_; }

    // Starts reading events on the main run loop.
    void start();

  private:
    struct Watch {
        std::string path;
        dev_t device;
        ino_t inode;
    };
    struct Event {
        int watch;
        std::uint32_t mask;
        std::uint32_t cookie;
        std::string name;
        bool pairedWithEarlierMove = false;
    };
    enum class Contents { quiet, reported };

    FileSystemEventStream(Callback callback, std::string rootPath, std::chrono::nanoseconds latency,
                          int inotify);

    void readEvents();
    [[nodiscard]] std::vector<Event> takeQueuedEvents() const;
    void handle(std::vector<Event>& events, std::size_t index);

    [[nodiscard]] int addWatch(const std::string& path);
    // Watches `top` and every folder below it not yet visited; answers whether `top` is watched.
    bool watchTree(const std::string& top, Contents contents, std::unordered_set<int>& visited);
    bool watchTree(const std::string& top, Contents contents);
    void followMovedTree(const std::string& from, const std::string& to);
    void forgetMovedTree(const std::string& top);
    void forgetWatch(std::unordered_map<int, Watch>::iterator watch);
    void forgetEverything();
    void resynchronise();
    [[nodiscard]] bool isStillAtItsPath(const Watch& watch) const;

    void addToBatch(std::string path);
    static void deliverBatch(const std::weak_ptr<FileSystemEventStream>& stream);

    const Callback callback_;
    const std::string root_;
    const std::chrono::nanoseconds latency_;
    const Handle handle_;
    const int inotify_;
    Connection source_;

    // Every watch this stream holds, by watch descriptor. A path here is where the folder was last
    // seen; it is rewritten when a rename is read.
    std::unordered_map<int, Watch> watches_;
    int rootWatch_ = -1;
    bool loggedWatchLimit_ = false;

    // A delivery is waiting on the run loop exactly while the batch is not empty.
    std::vector<std::string> batch_;
    std::unordered_set<std::string> batched_;
};

}  // namespace quod::internal
