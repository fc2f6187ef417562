// The event loop of one thread: immediate tasks, delayed tasks and file-descriptor sources.
//
// `RunLoop::main()` is the host's main-thread loop. Everything the framework delivers "on the main
// thread" (Delay, monitor reports, gutter refreshes) is posted there. It belongs to the process's
// initial thread (the one that entered `main`); `isMainThread()` asks whether the caller is it.
// Other loops belong to the thread that made them.
//
// Posting is allowed from any thread and never waits for running tasks: producers share one short
// lock with the loop's hand-over of the pending list, and tasks run outside it. Tasks posted from
// one thread run in the order posted; a task posted while the loop runs (by a task, say) runs in
// a later turn, never in the turn that posted it. Delayed tasks run once their monotonic-clock
// deadline has passed, earliest first (ties in posting order), never before it and never inside
// the call that posted them, even with a delay of zero.
//
// Sources: `addReadSource(fd, handler)` calls `handler` on the loop's thread whenever `fd` is
// readable (or at end of file or error), for as long as the returned Connection lives. The
// descriptor stays the caller's; the loop never reads or closes it, so a handler that does not
// drain it is called again in the next turn. A source disconnected during a turn is not called
// for the rest of that turn, even if it was ready. Sources are added and removed on the loop's
// thread. A descriptor that cannot be watched (closed, a regular file) gives an inert Connection.
//
// Driving the loop:
//   * `run()` runs turns until `stop()` (from any thread, or from a task) asks it to return.
//   * `runOnce(timeout)` waits up to `timeout` for something to do, runs one turn and answers
//     whether anything ran. A turn runs the tasks pending when it began, then the delayed tasks
//     that are due, then the ready sources.
//   * `runUntil(predicate, timeout)` runs turns until `predicate()` is true or the timeout passes,
//     and answers the predicate's last value.
//   * A host with its own loop (Qt, GTK, poll) watches `descriptor()` for readability and calls
//     `runOnce(0ns)` when it is readable. It is readable exactly while a task is pending, a delayed
//     task is due or a source is ready. It is an epoll descriptor over an eventfd (posted work),
//     a timerfd (the earliest deadline) and the sources' descriptors.
// Only the loop's thread may drive it; runs may nest (a task may run a modal loop).
//
// A task or handler that throws ends the process: the loop cannot tell which of the tasks after it
// still make sense to run.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "quoddle/Export.h"
#include "quoddle/base/Signal.h"
#include "quoddle/runtime/UniqueFunction.h"

namespace quod {

namespace internal {
struct RunLoopState;
}

class QUODDLE_EXPORT RunLoop {
  public:
    using Task = UniqueFunction<void()>;
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::nanoseconds forever = std::chrono::nanoseconds::max();

    // The main thread's loop, made on first use and never destroyed.
    [[nodiscard]] static RunLoop& main();
    [[nodiscard]] static bool isMainThread();

    // A loop for the calling thread. Tasks still pending when it is destroyed are dropped unrun.
    RunLoop();
    ~RunLoop();
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;

    // Whether the calling thread is the one that runs this loop.
    [[nodiscard]] bool isCurrent() const;

    void post(Task task);
    // Runs `task` once `delay` has passed; a zero or negative delay means the next turn.
    void postAfter(std::chrono::nanoseconds delay, Task task);

    [[nodiscard]] Connection addReadSource(int fileDescriptor, std::function<void()> onReadable);

    bool runOnce(std::chrono::nanoseconds timeout);
    bool runUntil(const std::function<bool()>& predicate, std::chrono::nanoseconds timeout);
    void run();
    void stop();

    [[nodiscard]] int descriptor() const;

  private:
    struct MainThreadTag {};
    explicit RunLoop(MainThreadTag);

    std::shared_ptr<internal::RunLoopState> state_;
};

}  // namespace quod
