#include "quoddle/filesystem/SingleFolderMonitor.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <mutex>
#include <string>

#include "quoddle/filesystem/FileManager.h"
#include "quoddle/filesystem/FileSystemObjectSource.h"
#include "quoddle/runtime/Const.h"
#include "quoddle/runtime/DispatchQueue.h"
#include "quoddle/runtime/RunLoop.h"

namespace quod {

using internal::FileSystemObjectSource;

struct SingleFolderMonitor::State {
    explicit State(Url watched) : url(std::move(watched)) {}

    // The cancel handler sets these on the shared queue.
    mutable std::mutex mutex;
    int fileDescriptor = -1;
    std::shared_ptr<FileSystemObjectSource> source;

    std::weak_ptr<MonitorDelegate> delegate;  // main thread only
    const Url url;
};

namespace {

const DispatchQueue& sharedQueue() {
    static const DispatchQueue* const queue =
        new DispatchQueue(std::string(Const::QueueLabel::singleFolderMonitor),
                          QualityOfService::standard, DispatchQueue::Attributes::concurrent);
    return *queue;
}

// An inotify descriptor watching `url` for writes, or -1.
int openEventOnly(const Url& url) {
    const std::uint32_t writes = FileManager::isDirectory(url)
                                     ? IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO
                                     : IN_MODIFY;
    const int descriptor = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (descriptor < 0) return -1;
    if (inotify_add_watch(descriptor, url.path().c_str(), writes) < 0) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

}  // namespace

SingleFolderMonitor::SingleFolderMonitor(Url url)
    : state_(std::make_shared<State>(std::move(url))) {
    startMonitoring();
}

SingleFolderMonitor::~SingleFolderMonitor() {
    stopMonitoring();
    // A report already posted finds no delegate, even if a handler on the queue still holds the
    // state for a moment.
    state_->delegate.reset();
}

const Url& SingleFolderMonitor::url() const {
    return state_->url;
}

std::shared_ptr<MonitorDelegate> SingleFolderMonitor::delegate() const {
    return state_->delegate.lock();
}

void SingleFolderMonitor::setDelegate(std::weak_ptr<MonitorDelegate> delegate) {
    state_->delegate = std::move(delegate);
}

int SingleFolderMonitor::fileDescriptor() const {
    std::lock_guard lock(state_->mutex);
    return state_->fileDescriptor;
}

void SingleFolderMonitor::startMonitoring() {
    if (!FileManager::fileExists(state_->url)) return;
    const int descriptor = openEventOnly(state_->url);
    {
        std::lock_guard lock(state_->mutex);
        state_->fileDescriptor = descriptor;
    }
    if (descriptor == -1) return;

    const std::shared_ptr<FileSystemObjectSource> source =
        FileSystemObjectSource::make(descriptor, sharedQueue());
    const std::weak_ptr<State> weakState = state_;
    source->setEventHandler([weakState] {
        RunLoop::main().post([weakState] {
            const std::shared_ptr<State> state = weakState.lock();
            if (!state) return;
            if (const std::shared_ptr<MonitorDelegate> delegate = state->delegate.lock())
                delegate->monitorDidChange(state->url);
        });
    });
    // The source has closed the descriptor by the time this runs.
    source->setCancelHandler([weakState, cancelled = source.get()] {
        const std::shared_ptr<State> state = weakState.lock();
        if (!state) return;
        std::lock_guard lock(state->mutex);
        if (state->source.get() != cancelled) return;  // restarted since: the new watch stays
        state->fileDescriptor = -1;
        state->source.reset();
    });
    {
        std::lock_guard lock(state_->mutex);
        state_->source = source;
    }
    source->resume();
}

void SingleFolderMonitor::stopMonitoring() {
    std::shared_ptr<FileSystemObjectSource> source;
    {
        std::lock_guard lock(state_->mutex);
        source = state_->source;
    }
    if (source) source->cancel();
}

}  // namespace quod
