// A dispatch source over an inotify descriptor: runs an event handler on a queue for every event
// the descriptor delivers until it is cancelled, then a cancel handler on the same queue.
//
// An event is one record read from the descriptor, whatever its kind, except IN_IGNORED (the
// kernel saying that a watch is gone) and the arrival half of a rename whose departure came in
// the same read: a rename inside a folder is one change to it, as a write to a folder is one
// event on systems that watch folders as files. A queue overflow is one event. The kernel folds a
// record identical to the one queued just before it (same watch, kind and name) into that one,
// so two identical changes in a row may make a single event; different changes never merge.
//
//     auto source = FileSystemObjectSource::make(inotify, queue);
//     source->setEventHandler([] { ... });
//     source->setCancelHandler([] { ... });
//     source->resume();
//     ...
//     source->cancel();  // the cancel handler runs once the descriptor is closed
//
// Ownership: the source owns the descriptor from `make` on (made with IN_NONBLOCK). It closes it
// when cancelled, after any event handler already running has returned and before the cancel
// handler runs, or when its last reference goes if it was never cancelled. So a client that
// forgets the source without cancelling leaks nothing; it only misses the cancel handler.
//
// Order and threads: handlers are set before `resume()` and run on `queue`, never two of one
// source at a time. After `cancel()` returns no event handler starts; one already running
// finishes first, and the cancel handler runs exactly once, after it. `cancel()` twice is
// harmless. All member functions may be called from any thread.
//
// Readiness is watched by one thread per process (epoll, started on first use, never stopped),
// which only hands ready sources to their queues; reading and handling happen on the queue.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "quoddle/runtime/DispatchQueue.h"

namespace quod::internal {

class FileSystemObjectSource : public std::enable_shared_from_this<FileSystemObjectSource> {
  public:
    using Handler = std::function<void()>;

    [[nodiscard]] static std::shared_ptr<FileSystemObjectSource> make(int inotifyDescriptor,
                                                                      DispatchQueue queue);
    ~FileSystemObjectSource();
    FileSystemObjectSource(const FileSystemObjectSource&) = delete;
    FileSystemObjectSource& operator=(const FileSystemObjectSource&) = delete;

    void setEventHandler(Handler handler) { eventHandler_ = std::move(handler); }
    void setCancelHandler(Handler handler) { cancelHandler_ = std::move(handler); }

    void resume();
    void cancel();

  private:
    FileSystemObjectSource(int inotifyDescriptor, DispatchQueue queue);

    void descriptorBecameReady();
    void handleEvents();
    void finishCancelling();
    [[nodiscard]] int readEventCount() const;

    const DispatchQueue queue_;
    Handler eventHandler_;
    Handler cancelHandler_;

    std::mutex mutex_;  // guards what follows
    int descriptor_;
    std::uint64_t registration_ = 0;  // with the readiness thread; 0: none
    bool resumed_ = false;
    bool handling_ = false;  // handed to the queue, or handling there
    bool cancelled_ = false;
};

}  // namespace quod::internal
