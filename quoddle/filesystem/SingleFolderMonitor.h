// Watches one file-system object, without recursion, and tells its delegate each time it is
// written; for a folder that means an entry was created, deleted or renamed in it.
//
// Every report names the monitor's own `url`: the watch does not say which entry changed. There
// is no coalescing: each event (see FileSystemObjectSource.h) is one report, so a rename, which
// the kernel reports as a departure and an arrival, makes two.
//
// What counts as a write:
//   * a folder: IN_CREATE, IN_DELETE, IN_MOVED_FROM and IN_MOVED_TO of its entries, the changes
//     that write the folder itself. Editing a file inside writes the file, not the folder, and is
//     not reported (an editor that saves by renaming a new copy into place is, by the rename).
//   * anything else: IN_MODIFY, a write to its contents.
// The watch is an inotify descriptor, which, like an event-only handle, never keeps a volume from
// being unmounted.
//
// Lifecycle:
//   * The constructor starts monitoring. When nothing is at the path, or it cannot be watched,
//     the monitor stays idle (`fileDescriptor()` is -1) and silent, even if the path appears later.
//   * `stopMonitoring()` cancels the watch. Its descriptor is closed on the shared queue soon
//     after, and then `fileDescriptor()` reads -1; a second call before or after that does
//     nothing. Stop before starting again: `startMonitoring()` on a watching monitor replaces the
//     watch without cancelling it (the replaced one stops and closes its descriptor once nothing
//     holds it). A restart right after a stop is not undone by the old watch's cancellation.
//   * Destruction cancels the watch. The monitor has always left the descriptor of a monitor
//     destroyed while watching open, because only the cancel handler closed it and that handler
//     can no longer reach the monitor. Here the descriptor belongs to the watch itself, which
//     closes it when cancelled, so the monitor's fields are still left alone after destruction but
//     nothing leaks, however many monitors come and go. No report arrives after destruction.
//
// Threads: events are handled on one concurrent queue shared by all instances, labelled
// "com.fernholt.SingleFolderMonitor" with the default quality of service, made on first use; each
// one posts its report to the main run loop. Construction, the member functions and destruction
// belong to the main thread; `fileDescriptor()` may be read anywhere.
#pragma once

#include <memory>

#include "quoddle/Export.h"
#include "quoddle/filesystem/MonitorType.h"

namespace quod {

class QUODDLE_EXPORT SingleFolderMonitor final : public MonitorType {
  public:
    explicit SingleFolderMonitor(Url url);
    ~SingleFolderMonitor() override;
    SingleFolderMonitor(const SingleFolderMonitor&) = delete;
    SingleFolderMonitor& operator=(const SingleFolderMonitor&) = delete;

    [[nodiscard]] const Url& url() const override;
    [[nodiscard]] std::shared_ptr<MonitorDelegate> delegate() const override;
    void setDelegate(std::weak_ptr<MonitorDelegate> delegate) override;

    void startMonitoring() override;
    void stopMonitoring() override;

    // The watch's inotify descriptor, -1 when idle.
    [[nodiscard]] int fileDescriptor() const;

  private:
    // The monitor's fields, shared weakly with the handlers on the queue and the main thread.
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace quod
