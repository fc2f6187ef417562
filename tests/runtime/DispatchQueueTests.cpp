#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <latch>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "quoddle/runtime/Background.h"
#include "quoddle/runtime/DispatchQueue.h"
#include "quoddle/runtime/Limit.h"
#include "quoddle/runtime/ThreadPool.h"
#include "quoddle/runtime/ThreadSafe.h"

namespace quod {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 60s;

// A flag that threads wait on with a deadline, so a broken queue fails a test instead of hanging.
class Gate {
  public:
    void open() {
        {
            std::lock_guard lock(mutex_);
            open_ = true;
        }
        opened_.notify_all();
    }
    bool waitOpen() {
        std::unique_lock lock(mutex_);
        return opened_.wait_for(lock, patience, [&] { return open_; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool open_ = false;
};

TEST(DispatchQueue, ASerialQueueRunsOneTaskAtATimeInArrivalOrder) {
    DispatchQueue queue("com.example.serial", QualityOfService::utility);
    constexpr int producers = 4;
    constexpr int tasksEach = 2000;
    std::vector<std::pair<int, int>> ran;  // guarded by nothing but the queue itself
    std::atomic<int> running = 0;
    std::atomic<bool> overlapped = false;
    std::vector<std::thread> threads;
    for (int producer = 0; producer < producers; ++producer) {
        threads.emplace_back([&, producer] {
            for (int i = 0; i < tasksEach; ++i) {
                queue.async([&, producer, i] {
                    if (++running > 1) overlapped = true;
                    ran.emplace_back(producer, i);
                    --running;
                });
                // Interleave a few turns of `sync` callers with the queued work.
                if (i % 500 == 0) queue.sync([&] { ran.emplace_back(producer, -1); });
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const std::size_t count = queue.sync([&] { return ran.size(); });

    EXPECT_FALSE(overlapped);
    ASSERT_EQ(count, static_cast<std::size_t>(producers * (tasksEach + tasksEach / 500)));
    std::vector<int> next(producers, 0);
    for (auto [producer, i] : ran) {
        if (i < 0) continue;
        ASSERT_EQ(i, next[producer]++) << "producer " << producer << " out of order";
    }
}

TEST(DispatchQueue, SyncWaitsForEarlierWorkAndReturnsItsResult) {
    DispatchQueue queue("com.example.results");
    std::vector<int> values;
    for (int i = 0; i < 100; ++i) {
        queue.async([&values, i] { values.push_back(i); });
    }
    EXPECT_EQ(queue.sync([&] { return values.size(); }), 100u);
    std::string text = queue.sync([] { return std::string("moved out"); });
    EXPECT_EQ(text, "moved out");
    EXPECT_THROW(queue.sync([]() -> int { throw std::runtime_error("from sync"); }),
                 std::runtime_error);
    EXPECT_EQ(queue.sync([&] { return values.back(); }), 99) << "the queue is usable after a throw";
}

TEST(DispatchQueue, SyncNeedsNoFreePoolThread) {
    // Every pool worker is held until the end. Serial-queue work that no worker can pick up must
    // still run, by the `sync` callers that wait behind it.
    const int workers = internal::ThreadPool::shared().threadCount();
    std::latch allHeld(workers);
    std::latch allReleased(workers);
    Gate release;
    std::atomic<bool> aWorkerGaveUp = false;
    for (int i = 0; i < workers; ++i) {
        Background().async([&] {
            allHeld.count_down();
            if (!release.waitOpen()) aWorkerGaveUp = true;
            allReleased.count_down();
        });
    }
    allHeld.wait();

    DispatchQueue queue("com.example.starved");
    std::vector<std::string> order;
    // Work queued on an idle queue: the next `sync` caller runs it first.
    queue.async([&] { order.push_back("queued on an idle queue"); });
    queue.sync([&] { order.push_back("first sync"); });

    // Work queued while a `sync` caller holds the queue, with a second caller waiting behind it
    // (usually; if it comes late it finds the work unclaimed, which must work as well).
    std::latch holding(1);
    Gate mayFinish;
    std::thread holder([&] {
        queue.sync([&] {
            holding.count_down();
            mayFinish.waitOpen();
            order.push_back("holder");
        });
    });
    holding.wait();
    queue.async([&] { order.push_back("queued behind the holder"); });
    std::thread waiter([&] { queue.sync([&] { order.push_back("waiter"); }); });
    std::this_thread::sleep_for(20ms);
    mayFinish.open();
    holder.join();
    waiter.join();

    release.open();
    allReleased.wait();  // the workers are done with this frame's gate and latches
    EXPECT_FALSE(aWorkerGaveUp) << "sync waited for a pool thread";
    EXPECT_EQ(order, (std::vector<std::string>{"queued on an idle queue", "first sync", "holder",
                                               "queued behind the holder", "waiter"}));
}

TEST(DispatchQueue, TheBackgroundQueueRunsWorkInParallel) {
    const DispatchQueue& queue = Background();
    // Two tasks that can only both finish if they run at the same time.
    std::mutex mutex;
    std::condition_variable changed;
    int arrived = 0;
    int metTheOther = 0;
    std::latch done(2);
    for (int i = 0; i < 2; ++i) {
        queue.async([&] {
            std::unique_lock lock(mutex);
            ++arrived;
            changed.notify_all();
            if (changed.wait_for(lock, patience, [&] { return arrived == 2; })) ++metTheOther;
            lock.unlock();
            done.count_down();
        });
    }
    done.wait();
    EXPECT_EQ(metTheOther, 2);
}

TEST(DispatchQueue, WorkKnowsTheLabelOfItsQueue) {
    EXPECT_EQ(DispatchQueue::currentLabel(), std::nullopt) << "outside any queue";

    DispatchQueue outer("com.example.outer");
    DispatchQueue inner("com.example.inner", QualityOfService::background,
                        DispatchQueue::Attributes::concurrent);
    std::vector<std::optional<std::string>> labels;
    outer.sync([&] {
        labels.push_back(DispatchQueue::currentLabel());
        inner.sync([&] { labels.push_back(DispatchQueue::currentLabel()); });
        labels.push_back(DispatchQueue::currentLabel());
    });
    EXPECT_EQ(labels, (std::vector<std::optional<std::string>>{
                          "com.example.outer", "com.example.inner", "com.example.outer"}));

    std::promise<std::optional<std::string>> fromBackground;
    Background().async([&] { fromBackground.set_value(DispatchQueue::currentLabel()); });
    EXPECT_EQ(fromBackground.get_future().get(), "com.fernholt.backgroundqueue");

    std::optional<std::string> fromLimit;
    Limit::interval("label check", -1, [&] { fromLimit = DispatchQueue::currentLabel(); });
    EXPECT_EQ(fromLimit, "com.fernholt.limit.interval");
}

TEST(ThreadPool, MoreUrgentWorkStartsFirst) {
    internal::ThreadPool pool(1);
    Gate release;
    std::latch held(1);
    std::vector<QualityOfService> started;  // written only by the pool's one worker
    pool.submit(QualityOfService::background, [&] {
        held.count_down();
        release.waitOpen();
    });
    held.wait();
    for (QualityOfService level : {QualityOfService::background, QualityOfService::unspecified,
                                   QualityOfService::utility, QualityOfService::userInteractive,
                                   QualityOfService::standard, QualityOfService::userInitiated}) {
        pool.submit(level, [&started, level] { started.push_back(level); });
    }
    release.open();
    std::latch drained(1);
    pool.submit(QualityOfService::background, [&] { drained.count_down(); });
    drained.wait();
    // `unspecified` waits with `standard`, behind it since it came first.
    EXPECT_EQ(started, (std::vector<QualityOfService>{
                           QualityOfService::userInteractive, QualityOfService::userInitiated,
                           QualityOfService::unspecified, QualityOfService::standard,
                           QualityOfService::utility, QualityOfService::background}));
}

TEST(DispatchQueueDeathTest, SyncOnTheQueueThatIsRunningTheCallerStops) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            DispatchQueue queue("com.example.reentered");
            queue.sync([&] { queue.sync([] {}); });
        },
        "com.example.reentered");
    EXPECT_DEATH(
        {
            DispatchQueue first("com.example.first");
            DispatchQueue second("com.example.second");
            first.async([&] { second.sync([&] { first.sync([] {}); }); });
            first.sync([] {});
        },
        "com.example.first");
}

struct Pair {
    std::string left;
    std::string right;
};

TEST(ThreadSafe, ReadsNeverSeeAHalfWrittenValue) {
    ThreadSafe<Pair> shared(Pair{"0", "0"});
    std::atomic<int> tornReads = 0;
    std::vector<std::thread> threads;
    for (int writer = 0; writer < 2; ++writer) {
        threads.emplace_back([&, writer] {
            for (int i = 0; i < 5000; ++i) {
                const std::string text = std::to_string(writer) + ":" + std::to_string(i);
                shared.setWrappedValue(Pair{text, text});
            }
        });
    }
    for (int reader = 0; reader < 2; ++reader) {
        threads.emplace_back([&] {
            for (int i = 0; i < 5000; ++i) {
                const Pair seen = shared.wrappedValue();
                if (seen.left != seen.right) ++tornReads;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(tornReads, 0);
}

TEST(ThreadSafe, ModifyIsAReadThenASeparateWrite) {
    ThreadSafe<int> value(1);
    std::latch changing(1);
    Gate otherWriteDone;
    std::thread modifier([&] {
        value.modify([&](int& copy) {
            changing.count_down();
            otherWriteDone.waitOpen();
            copy += 10;
        });
    });
    changing.wait();
    // The wrapper is free while the change runs, so this write goes through, and is then lost.
    auto write = std::async(std::launch::async, [&] { value.setWrappedValue(100); });
    const bool writeWentThrough = write.wait_for(patience) == std::future_status::ready;
    otherWriteDone.open();
    modifier.join();
    EXPECT_TRUE(writeWentThrough) << "modify held the wrapper during the change";
    EXPECT_EQ(value.wrappedValue(), 11);
}

TEST(ThreadSafe, CopiesHoldTheirOwnValue) {
    ThreadSafe<std::vector<int>> original(std::vector<int>{1, 2});
    ThreadSafe<std::vector<int>> copy = original;
    copy.modify([](std::vector<int>& values) { values.push_back(3); });
    EXPECT_EQ(original.wrappedValue(), (std::vector<int>{1, 2}));
    EXPECT_EQ(copy.wrappedValue(), (std::vector<int>{1, 2, 3}));
    original = copy;
    EXPECT_EQ(original.wrappedValue(), (std::vector<int>{1, 2, 3}));
}

}  // namespace
}  // namespace quod
