// Runtime throughput: tasks through the main run loop, ThreadSafe reads and writes,
// Limit::interval calls, serial-queue work and notification posts.
#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "quoddle/runtime/DispatchQueue.h"
#include "quoddle/runtime/Limit.h"
#include "quoddle/runtime/NotificationCenter.h"
#include "quoddle/runtime/RunLoop.h"
#include "quoddle/runtime/ThreadSafe.h"

namespace quod::bench {
namespace {

using namespace std::chrono_literals;

// One iteration: 1,000,000 small tasks posted to RunLoop::main() by `producers` threads while the
// main thread runs the loop until every task has run. 0 producers: the main thread posts them all
// first, then runs them (posting and running without any contention).
void BM_MainLoopPostAndRun(benchmark::State& state) {
    constexpr int taskCount = 1'000'000;
    const int producers = static_cast<int>(state.range(0));
    RunLoop& loop = RunLoop::main();
    for (auto _ : state) {
        int ran = 0;
        if (producers == 0) {
            for (int i = 0; i < taskCount; ++i)
                loop.post([&ran] { ++ran; });
        }
        std::vector<std::thread> threads;
        for (int producer = 0; producer < producers; ++producer) {
            threads.emplace_back([&loop, &ran, producers] {
                for (int i = 0; i < taskCount / producers; ++i)
                    loop.post([&ran] { ++ran; });
            });
        }
        loop.runUntil([&] { return ran == taskCount; }, RunLoop::forever);
        for (std::thread& thread : threads)
            thread.join();
    }
    state.SetItemsProcessed(state.iterations() * taskCount);
}
BENCHMARK(BM_MainLoopPostAndRun)
    ->Arg(0)
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// Uncontended with 1 thread; with 2, both threads hit the same wrapper.
void BM_ThreadSafeGet(benchmark::State& state) {
    static ThreadSafe<std::int64_t> shared(42);
    for (auto _ : state)
        benchmark::DoNotOptimize(shared.wrappedValue());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ThreadSafeGet)->Threads(1)->Threads(2)->UseRealTime();

void BM_ThreadSafeSet(benchmark::State& state) {
    static ThreadSafe<std::int64_t> shared(0);
    std::int64_t value = 0;
    for (auto _ : state)
        shared.setWrappedValue(++value);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ThreadSafeSet)->Threads(1)->Threads(2)->UseRealTime();

void BM_ThreadSafeGetString(benchmark::State& state) {
    static ThreadSafe<std::string> shared(std::string(64, 'x'));
    for (auto _ : state)
        benchmark::DoNotOptimize(shared.wrappedValue());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ThreadSafeGetString)->Threads(1)->Threads(2)->UseRealTime();

// Calls of one identifier that the limiter keeps skipping (arg 0: duration 60 s) or always runs
// (arg 1: negative duration); with 2 threads every call still takes the one limit queue.
void BM_LimitInterval(benchmark::State& state) {
    const double duration = state.range(0) == 0 ? 60.0 : -1.0;
    const std::string identifier = "bench " + std::to_string(state.thread_index());
    int runs = 0;
    for (auto _ : state)
        Limit::interval(identifier, duration, [&runs] { ++runs; });
    benchmark::DoNotOptimize(runs);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LimitInterval)->Arg(0)->Arg(1)->Threads(1)->Threads(2)->UseRealTime();

// 100,000 tasks sent with async to one serial queue, then one sync that waits for them.
void BM_SerialQueueAsync(benchmark::State& state) {
    constexpr int taskCount = 100'000;
    DispatchQueue queue("com.example.bench");
    for (auto _ : state) {
        int ran = 0;
        for (int i = 0; i < taskCount; ++i)
            queue.async([&ran] { ++ran; });
        queue.sync([&] { benchmark::DoNotOptimize(ran); });
    }
    state.SetItemsProcessed(state.iterations() * taskCount);
}
BENCHMARK(BM_SerialQueueAsync)->Unit(benchmark::kMillisecond)->UseRealTime();

// One post to a centre with `range(0)` observers of other names and one of the posted name.
void BM_NotificationPost(benchmark::State& state) {
    NotificationCenter center;
    std::vector<Connection> connections;
    for (int i = 0; i < state.range(0); ++i) {
        connections.push_back(
            center.addObserver("Other" + std::to_string(i), nullptr, [](const Notification&) {}));
    }
    int delivered = 0;
    connections.push_back(
        center.addObserver("ThemeChanged", nullptr, [&](const Notification&) { ++delivered; }));
    for (auto _ : state)
        center.post("ThemeChanged");
    benchmark::DoNotOptimize(delivered);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_NotificationPost)->Arg(0)->Arg(30);

}  // namespace
}  // namespace quod::bench
