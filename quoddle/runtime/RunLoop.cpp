#include "quoddle/runtime/RunLoop.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "quoddle/base/Precondition.h"

namespace quod {
namespace internal {
namespace {

using Clock = RunLoop::Clock;

// epoll tags: the two internal descriptors, then the sources' ids.
constexpr std::uint64_t wakeTag = 0;
constexpr std::uint64_t timerTag = 1;
constexpr std::uint64_t firstSourceId = 2;

pid_t currentThreadId() {
    static thread_local const pid_t id = gettid();
    return id;
}

void runTask(RunLoop::Task& task) noexcept {
    task();
}
void runHandler(const std::function<void()>& handler) noexcept {
    handler();
}

void drainCounter(int fileDescriptor) {
    std::uint64_t count;
    while (read(fileDescriptor, &count, sizeof count) < 0 && errno == EINTR) {
    }
}

int toEpollTimeout(std::chrono::nanoseconds timeout) {
    if (timeout == RunLoop::forever) return -1;
    if (timeout <= std::chrono::nanoseconds::zero()) return 0;
    // Rounded up: waking a little late is harmless, waking early just costs another turn.
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(timeout).count();
    return static_cast<int>(std::min<std::int64_t>(milliseconds, INT_MAX));
}

Clock::time_point deadlineAfter(std::chrono::nanoseconds delay) {
    const Clock::time_point now = Clock::now();
    if (delay <= std::chrono::nanoseconds::zero()) return now;
    if (delay >= Clock::time_point::max() - now) return Clock::time_point::max();
    return now + delay;
}

}  // namespace

struct RunLoopState {
    struct Delayed {
        Clock::time_point deadline;
        std::uint64_t sequence;
        RunLoop::Task task;
    };
    // A max-heap on "later", so the front is the earliest deadline (ties: first posted).
    static bool later(const Delayed& a, const Delayed& b) {
        return a.deadline != b.deadline ? a.deadline > b.deadline : a.sequence > b.sequence;
    }
    struct Source {
        int fileDescriptor;
        std::function<void()> onReadable;
    };

    explicit RunLoopState(pid_t owner) : ownerThread(owner) {
        epoll = epoll_create1(EPOLL_CLOEXEC);
        wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
        QUOD_PRECONDITION(epoll >= 0 && wake >= 0 && timer >= 0,
                          "out of file descriptors for a run loop");
        for (auto [fileDescriptor, tag] : {std::pair{wake, wakeTag}, std::pair{timer, timerTag}}) {
            epoll_event event{};
            event.events = EPOLLIN;
            event.data.u64 = tag;
            const int added = epoll_ctl(epoll, EPOLL_CTL_ADD, fileDescriptor, &event);
            QUOD_PRECONDITION(added == 0, "cannot watch the run loop's own descriptors");
        }
    }

    ~RunLoopState() {
        for (int fileDescriptor : {timer, wake, epoll}) {
            if (fileDescriptor >= 0) close(fileDescriptor);
        }
    }

    RunLoopState(const RunLoopState&) = delete;
    RunLoopState& operator=(const RunLoopState&) = delete;

    void signalWake() const {
        const std::uint64_t one = 1;
        while (write(wake, &one, sizeof one) < 0 && errno == EINTR) {
        }
    }

    void post(RunLoop::Task task) {
        bool wasEmpty;
        {
            std::lock_guard lock(postMutex);
            wasEmpty = pending.empty();
            pending.push_back(std::move(task));
        }
        // Only the first task of a batch needs to wake the loop; it takes the whole batch.
        if (wasEmpty) signalWake();
    }

    void postAt(Clock::time_point deadline, RunLoop::Task task) {
        std::lock_guard lock(delayedMutex);
        delayed.push_back({deadline, nextSequence++, std::move(task)});
        std::push_heap(delayed.begin(), delayed.end(), later);
        armTimer();
    }

    // Points the timer at the earliest deadline. Called with `delayedMutex` held, so the armed
    // deadline always matches the heap.
    void armTimer() {
        const Clock::time_point earliest =
            delayed.empty() ? Clock::time_point::max() : delayed.front().deadline;
        if (earliest == armedDeadline) return;
        armedDeadline = earliest;
        itimerspec setting{};
        if (!delayed.empty()) {
            const auto sinceEpoch = earliest.time_since_epoch();
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch);
            setting.it_value.tv_sec = static_cast<time_t>(seconds.count());
            setting.it_value.tv_nsec = static_cast<long>((sinceEpoch - seconds).count());
            // A zero value would disarm the timer instead of firing it.
            if (setting.it_value.tv_sec == 0 && setting.it_value.tv_nsec == 0) {
                setting.it_value.tv_nsec = 1;
            }
        }
        timerfd_settime(timer, TFD_TIMER_ABSTIME, &setting, nullptr);
    }

    bool runOnce(std::chrono::nanoseconds timeout) {
        QUOD_PRECONDITION(currentThreadId() == ownerThread,
                          "a run loop is driven only by the thread it belongs to");
        epoll_event events[32];
        int count = epoll_wait(epoll, events, std::size(events), toEpollTimeout(timeout));
        if (count < 0) count = 0;  // interrupted by a signal: an empty turn

        std::uint64_t readySources[std::size(events)];
        int readyCount = 0;
        for (int i = 0; i < count; ++i) {
            const std::uint64_t tag = events[i].data.u64;
            if (tag == wakeTag) {
                drainCounter(wake);  // before taking the batch, so no post goes unnoticed
            } else if (tag == timerTag) {
                drainCounter(timer);
            } else {
                readySources[readyCount++] = tag;
            }
        }

        bool ran = false;

        std::vector<RunLoop::Task> batch = std::exchange(spareBatch, {});
        {
            std::lock_guard lock(postMutex);
            batch.swap(pending);
        }
        for (RunLoop::Task& task : batch) {
            runTask(task);
            ran = true;
        }
        batch.clear();
        if (spareBatch.capacity() < batch.capacity()) spareBatch = std::move(batch);

        std::vector<Delayed> due = std::exchange(spareDue, {});
        {
            std::lock_guard lock(delayedMutex);
            const Clock::time_point now = Clock::now();
            while (!delayed.empty() && delayed.front().deadline <= now) {
                std::pop_heap(delayed.begin(), delayed.end(), later);
                due.push_back(std::move(delayed.back()));
                delayed.pop_back();
            }
            if (!due.empty()) armTimer();
        }
        for (Delayed& entry : due) {
            runTask(entry.task);
            ran = true;
        }
        due.clear();
        if (spareDue.capacity() < due.capacity()) spareDue = std::move(due);

        for (std::uint64_t id : std::span(readySources, static_cast<std::size_t>(readyCount))) {
            auto found = sources.find(id);
            if (found == sources.end()) continue;  // disconnected earlier in this turn
            const std::shared_ptr<Source> source = found->second;
            runHandler(source->onReadable);
            ran = true;
        }
        return ran;
    }

    std::uint64_t addSource(int fileDescriptor, std::function<void()> onReadable) {
        QUOD_PRECONDITION(currentThreadId() == ownerThread,
                          "run loop sources are added on the loop's thread");
        const std::uint64_t id = nextSourceId++;
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = id;
        if (epoll_ctl(epoll, EPOLL_CTL_ADD, fileDescriptor, &event) != 0) return 0;
        sources.emplace(id,
                        std::make_shared<Source>(Source{fileDescriptor, std::move(onReadable)}));
        return id;
    }

    void removeSource(std::uint64_t id) {
        QUOD_PRECONDITION(currentThreadId() == ownerThread,
                          "run loop sources are removed on the loop's thread");
        auto found = sources.find(id);
        if (found == sources.end()) return;
        // Fails harmlessly when the caller already closed the descriptor (epoll forgot it then).
        epoll_ctl(epoll, EPOLL_CTL_DEL, found->second->fileDescriptor, nullptr);
        sources.erase(found);
    }

    const pid_t ownerThread;
    int epoll = -1;
    int wake = -1;
    int timer = -1;

    std::mutex postMutex;
    std::vector<RunLoop::Task> pending;
    // Owner thread only: buffers kept between turns, so that a turn allocates nothing.
    std::vector<RunLoop::Task> spareBatch;
    std::vector<Delayed> spareDue;

    std::mutex delayedMutex;
    std::vector<Delayed> delayed;
    std::uint64_t nextSequence = 0;
    Clock::time_point armedDeadline = Clock::time_point::max();

    std::atomic<bool> stopRequested{false};

    // Owner thread only.
    std::unordered_map<std::uint64_t, std::shared_ptr<Source>> sources;
    std::uint64_t nextSourceId = firstSourceId;
};

}  // namespace internal

RunLoop& RunLoop::main() {
    static RunLoop* const loop = new RunLoop(MainThreadTag{});
    return *loop;
}

bool RunLoop::isMainThread() {
    return internal::currentThreadId() == getpid();
}

RunLoop::RunLoop()
    : state_(std::make_shared<internal::RunLoopState>(internal::currentThreadId())) {}

RunLoop::RunLoop(MainThreadTag) : state_(std::make_shared<internal::RunLoopState>(getpid())) {}

RunLoop::~RunLoop() = default;

bool RunLoop::isCurrent() const {
    return internal::currentThreadId() == state_->ownerThread;
}

void RunLoop::post(Task task) {
    state_->post(std::move(task));
}

void RunLoop::postAfter(std::chrono::nanoseconds delay, Task task) {
    state_->postAt(internal::deadlineAfter(delay), std::move(task));
}

Connection RunLoop::addReadSource(int fileDescriptor, std::function<void()> onReadable) {
    const std::uint64_t id = state_->addSource(fileDescriptor, std::move(onReadable));
    if (id == 0) return Connection();
    std::weak_ptr<internal::RunLoopState> weakState = state_;
    return Connection([weakState, id] {
        if (auto state = weakState.lock()) state->removeSource(id);
    });
}

bool RunLoop::runOnce(std::chrono::nanoseconds timeout) {
    return state_->runOnce(timeout);
}

bool RunLoop::runUntil(const std::function<bool()>& predicate, std::chrono::nanoseconds timeout) {
    const Clock::time_point deadline = internal::deadlineAfter(timeout);
    for (;;) {
        if (predicate()) return true;
        const Clock::time_point now = Clock::now();
        if (now >= deadline) return false;
        runOnce(deadline == Clock::time_point::max() ? forever : deadline - now);
    }
}

void RunLoop::run() {
    while (!state_->stopRequested.exchange(false)) {
        runOnce(forever);
    }
}

void RunLoop::stop() {
    state_->stopRequested = true;
    state_->signalWake();
}

int RunLoop::descriptor() const {
    return state_->epoll;
}

}  // namespace quod
