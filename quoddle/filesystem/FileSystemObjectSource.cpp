#include "quoddle/filesystem/FileSystemObjectSource.h"

#include <sys/epoll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "quoddle/filesystem/InotifyRecords.h"

namespace quod::internal {
namespace {

// Reading stops after this many buffers so that a flood on one descriptor cannot hold a queue
// thread forever; the descriptor is still readable, so it comes back at once.
constexpr int readsPerRound = 16;

// The one thread that waits for descriptors to become readable. Each registration fires once
// (EPOLLONESHOT) and is re-armed after its source has read what was there, so a source is never
// handed to its queue twice at a time.
class ReadinessThread {
  public:
    static ReadinessThread& shared() {
        static ReadinessThread* const thread = new ReadinessThread;
        return *thread;
    }

    // Answers the registration, or 0 when the descriptor cannot be watched.
    std::uint64_t add(int descriptor, std::function<void()> onReady) {
        std::lock_guard lock(mutex_);
        const std::uint64_t registration = nextRegistration_++;
        if (epoll_ < 0 || !control(EPOLL_CTL_ADD, descriptor, registration)) return 0;
        onReady_.emplace(registration, std::move(onReady));
        return registration;
    }

    void rearm(int descriptor, std::uint64_t registration) const {
        if (registration != 0) control(EPOLL_CTL_MOD, descriptor, registration);
    }

    // Callers remove a registration before closing its descriptor, so the number cannot have
    // been reused by a newer registration yet.
    void remove(int descriptor, std::uint64_t registration) {
        if (registration == 0) return;
        std::lock_guard lock(mutex_);
        epoll_ctl(epoll_, EPOLL_CTL_DEL, descriptor, nullptr);
        onReady_.erase(registration);
    }

  private:
    ReadinessThread() : epoll_(epoll_create1(EPOLL_CLOEXEC)) {
        if (epoll_ >= 0) std::thread([this] { run(); }).detach();
    }

    bool control(int operation, int descriptor, std::uint64_t registration) const {
        epoll_event event{};
        event.events = EPOLLIN | EPOLLONESHOT;
        event.data.u64 = registration;
        return epoll_ctl(epoll_, operation, descriptor, &event) == 0;
    }

    [[noreturn]] void run() {
        epoll_event events[64];
        for (;;) {
            const int count = epoll_wait(epoll_, events, std::size(events), -1);
            for (int i = 0; i < count; ++i) {
                std::function<void()> onReady;
                {
                    std::lock_guard lock(mutex_);
                    const auto found = onReady_.find(events[i].data.u64);
                    if (found != onReady_.end()) onReady = found->second;
                }
                if (onReady) onReady();
            }
        }
    }

    const int epoll_;
    std::mutex mutex_;
    std::unordered_map<std::uint64_t, std::function<void()>> onReady_;
    std::uint64_t nextRegistration_ = 1;
};

}  // namespace

std::shared_ptr<FileSystemObjectSource> FileSystemObjectSource::make(int inotifyDescriptor,
                                                                     DispatchQueue queue) {
    return std::shared_ptr<FileSystemObjectSource>(
        new FileSystemObjectSource(inotifyDescriptor, std::move(queue)));
}

FileSystemObjectSource::FileSystemObjectSource(int inotifyDescriptor, DispatchQueue queue)
    : queue_(std::move(queue)), descriptor_(inotifyDescriptor) {}

FileSystemObjectSource::~FileSystemObjectSource() {
    // Only a source that was never cancelled still has a registration and a descriptor here.
    if (registration_ != 0) ReadinessThread::shared().remove(descriptor_, registration_);
    if (descriptor_ >= 0) close(descriptor_);
}

void FileSystemObjectSource::resume() {
    std::lock_guard lock(mutex_);
    if (resumed_ || cancelled_) return;
    resumed_ = true;
    registration_ = ReadinessThread::shared().add(descriptor_, [source = weak_from_this()] {
        if (const auto live = source.lock()) live->descriptorBecameReady();
    });
}

void FileSystemObjectSource::cancel() {
    bool finishNow;
    {
        std::lock_guard lock(mutex_);
        if (cancelled_) return;
        cancelled_ = true;
        ReadinessThread::shared().remove(descriptor_, registration_);
        registration_ = 0;
        finishNow = !handling_;
    }
    // Otherwise the handling under way finishes the cancellation when it is done.
    if (finishNow) queue_.async([self = shared_from_this()] { self->finishCancelling(); });
}

void FileSystemObjectSource::descriptorBecameReady() {
    {
        std::lock_guard lock(mutex_);
        if (cancelled_) return;
        handling_ = true;
    }
    queue_.async([self = shared_from_this()] { self->handleEvents(); });
}

void FileSystemObjectSource::handleEvents() {
    const int count = readEventCount();
    for (int event = 0; event < count; ++event) {
        {
            std::lock_guard lock(mutex_);
            if (cancelled_) break;
        }
        if (eventHandler_) eventHandler_();
    }
    bool finish;
    {
        std::lock_guard lock(mutex_);
        handling_ = false;
        finish = cancelled_;
        if (!finish) ReadinessThread::shared().rearm(descriptor_, registration_);
    }
    if (finish) finishCancelling();
}

// Only one handling runs at a time and cancelling waits for it, so the descriptor is open here.
int FileSystemObjectSource::readEventCount() const {
    int count = 0;
    std::vector<std::uint32_t> departures;  // cookies of the renames that left in this read
    readInotifyRecords(
        descriptor_, readsPerRound, [&](const inotify_event& header, std::string_view) {
            if (header.mask & IN_IGNORED) return;
            if (header.mask & IN_MOVED_FROM) departures.push_back(header.cookie);
            const bool arrivalOfADeparture =
                (header.mask & IN_MOVED_TO) &&
                std::find(departures.begin(), departures.end(), header.cookie) != departures.end();
            if (!arrivalOfADeparture) ++count;
        });
    return count;
}

void FileSystemObjectSource::finishCancelling() {
    int descriptor;
    {
        std::lock_guard lock(mutex_);
        descriptor = std::exchange(descriptor_, -1);
    }
    if (descriptor >= 0) close(descriptor);
    eventHandler_ = nullptr;
    const Handler cancelHandler = std::exchange(cancelHandler_, nullptr);
    if (cancelHandler) cancelHandler();
}

}  // namespace quod::internal
