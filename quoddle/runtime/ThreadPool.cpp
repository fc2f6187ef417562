#include "quoddle/runtime/ThreadPool.h"

#include <algorithm>
#include <utility>

namespace quod::internal {
namespace {

std::size_t levelOf(QualityOfService qualityOfService) {
    if (qualityOfService == QualityOfService::unspecified) {
        return static_cast<std::size_t>(QualityOfService::standard);
    }
    return static_cast<std::size_t>(qualityOfService);
}

// Jobs are the framework's and the host's closures; an exception escaping one has no receiver.
void runJob(ThreadPool::Job& job) noexcept {
    job();
}

}  // namespace

ThreadPool& ThreadPool::shared() {
    static ThreadPool* const pool = [] {
        const int hardware = static_cast<int>(std::thread::hardware_concurrency());
        return new ThreadPool(std::clamp(hardware, 2, 8));
    }();
    return *pool;
}

ThreadPool::ThreadPool(int threadCount) {
    workers_.reserve(static_cast<std::size_t>(std::max(threadCount, 1)));
    for (int i = 0; i < std::max(threadCount, 1); ++i) {
        workers_.emplace_back([this] { work(); });
    }
}

ThreadPool::~ThreadPool() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    jobAvailable_.notify_all();
    for (std::thread& worker : workers_) {
        worker.join();
    }
}

void ThreadPool::submit(QualityOfService qualityOfService, Job job) {
    {
        std::lock_guard lock(mutex_);
        jobs_[levelOf(qualityOfService)].push_back(std::move(job));
        ++waitingJobs_;
    }
    jobAvailable_.notify_one();
}

void ThreadPool::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        jobAvailable_.wait(lock, [this] { return waitingJobs_ > 0 || stopping_; });
        if (waitingJobs_ == 0) return;  // stopping, and nothing is left
        auto level =
            std::find_if(jobs_.begin(), jobs_.end(), [](auto& list) { return !list.empty(); });
        Job job = std::move(level->front());
        level->pop_front();
        --waitingJobs_;
        lock.unlock();
        runJob(job);
        job = nullptr;  // captured state is released outside the lock too
        lock.lock();
    }
}

}  // namespace quod::internal
