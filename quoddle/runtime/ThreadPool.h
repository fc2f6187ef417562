// The small set of worker threads that every queue of the process runs on.
//
// Queues never own threads: a serial queue submits one job that drains it, a concurrent queue
// submits each task. Jobs wait in one list per quality of service; an idle worker takes the
// oldest job of the most urgent non-empty list, so within a level jobs start in submission order.
//
// `shared()` has max(2, min(8, hardware threads)) workers, started on first use and never
// stopped (it outlives every static, so work submitted during exit still has somewhere to run).
// The pool does not grow: a job that blocks until another pool job has run can starve it. The
// queues are written so that `sync` never needs a free worker (see DispatchQueue.h).
//
// A job that throws ends the process: there is no caller left to hand the exception to.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "quoddle/runtime/QualityOfService.h"
#include "quoddle/runtime/UniqueFunction.h"

namespace quod::internal {

class ThreadPool {
  public:
    using Job = UniqueFunction<void()>;

    static ThreadPool& shared();

    // Starts `threadCount` (at least 1) workers at once.
    explicit ThreadPool(int threadCount);
    // Runs every job already submitted, then joins the workers.
    ~ThreadPool();

    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    // Callable from any thread, including a worker of this pool.
    void submit(QualityOfService qualityOfService, Job job);

    [[nodiscard]] int threadCount() const { return static_cast<int>(workers_.size()); }

  private:
    static constexpr std::size_t levelCount = 5;  // `unspecified` waits with `standard`

    void work();

    std::mutex mutex_;
    std::condition_variable jobAvailable_;
    std::array<std::deque<Job>, levelCount> jobs_;  // index: QualityOfService, most urgent first
    std::size_t waitingJobs_ = 0;
    bool stopping_ = false;
    std::vector<std::thread> workers_;
};

}  // namespace quod::internal
