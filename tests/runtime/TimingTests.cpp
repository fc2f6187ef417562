#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "quoddle/runtime/Background.h"
#include "quoddle/runtime/Delay.h"
#include "quoddle/runtime/Limit.h"
#include "quoddle/runtime/RunLoop.h"

namespace quod {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto patience = 60s;

double seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

// The limiter reads the clock inside the call, somewhere between our readings before and after
// it. From those bounds a call's outcome under the quiet-period rule is either certain or, on a
// badly stalled machine, unknown; only certain outcomes are checked, so the test cannot flake.
struct MeasuredCall {
    std::string identifier;
    Clock::time_point before;
    Clock::time_point after;
    bool ran;
};

std::optional<bool> certainOutcome(const std::vector<MeasuredCall>& calls, std::size_t index,
                                   double duration) {
    const MeasuredCall& call = calls[index];
    for (std::size_t earlier = index; earlier-- > 0;) {
        if (calls[earlier].identifier != call.identifier) continue;
        const double least = seconds(call.before - calls[earlier].after);
        const double most = seconds(call.after - calls[earlier].before);
        if (least > duration) return true;
        if (most <= duration) return false;
        return std::nullopt;
    }
    return true;  // the identifier's first call
}

TEST(Limit, RunsAfterAQuietPeriodLongerThanTheDurationCountedFromTheLastCall) {
    constexpr double duration = 0.4;
    struct Step {
        const char* identifier;
        double pauseBefore;  // in units of `duration`
    };
    // Identifier a is called 0.1, 0.7 and 0.7 durations apart: each call is inside the window of
    // the one before, although by the last one 1.5 durations have passed since a's closure ran,
    // so a limiter counting from the last run would run it there. Identifier b, limited on its
    // own, runs meanwhile. After a pause of 1.5 durations a runs again.
    const Step steps[] = {{"quiet a", 0},   {"quiet b", 0},   {"quiet a", 0.1},
                          {"quiet a", 0.7}, {"quiet a", 0.7}, {"quiet b", 0.1},
                          {"quiet a", 0.7}, {"quiet a", 1.5}, {"quiet a", 0.1}};
    const bool expected[] = {true, true, false, false, false, true, false, true, false};

    std::vector<MeasuredCall> calls;
    for (const Step& step : steps) {
        std::this_thread::sleep_for(std::chrono::duration<double>(step.pauseBefore * duration));
        bool ran = false;
        const Clock::time_point before = Clock::now();
        Limit::interval(step.identifier, duration, [&] { ran = true; });
        calls.push_back({step.identifier, before, Clock::now(), ran});
    }
    int checked = 0;
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const std::optional<bool> certain = certainOutcome(calls, i, duration);
        if (!certain) continue;
        ++checked;
        EXPECT_EQ(*certain, expected[i]) << "the plan itself is wrong at step " << i;
        EXPECT_EQ(calls[i].ran, *certain) << "step " << i << " (" << calls[i].identifier << ")";
    }
    EXPECT_GE(checked, 2);
}

TEST(Limit, ZeroAndNegativeDurations) {
    // Zero: a call runs unless it falls in the same clock tick as the one before; waiting for the
    // clock to move between calls makes every call run. Negative: every call runs, even at once.
    for (const double duration : {0.0, -1.0}) {
        const std::string identifier = "edge " + std::to_string(duration);
        int runs = 0;
        for (int i = 0; i < 50; ++i) {
            Limit::interval(identifier, duration, [&] { ++runs; });
            if (duration == 0.0) {
                const Clock::time_point returned = Clock::now();
                while (Clock::now() == returned) {
                }
            }
        }
        EXPECT_EQ(runs, 50) << "duration " << duration;
    }
}

TEST(Limit, ClosuresRunOneAtATimeAcrossIdentifiersAndThreads) {
    std::atomic<int> inside = 0;
    std::atomic<bool> overlapped = false;
    std::atomic<int> runs = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 200; ++i) {
                Limit::interval("thread " + std::to_string(thread), -1, [&] {
                    if (++inside > 1) overlapped = true;
                    ++runs;
                    --inside;
                });
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(runs, 800);
    EXPECT_FALSE(overlapped);
}

TEST(LimitDeathTest, AClosureThatCallsLimitStops) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(Limit::interval("outer", 1, [] { Limit::interval("inner", 1, [] {}); }),
                 "com.fernholt.limit.interval");
}

TEST(Delay, RunsLaterOnTheMainThreadWhoeverSchedulesIt) {
    enum class From { mainThread, otherThread, backgroundQueue };
    struct Case {
        From from;
        double delay;
    };
    for (const Case& schedule :
         {Case{From::mainThread, 0.0}, Case{From::mainThread, -1.0}, Case{From::mainThread, 0.02},
          Case{From::otherThread, 0.0}, Case{From::backgroundQueue, 0.02}}) {
        std::atomic<bool> ran = false;
        std::atomic<bool> onMainThread = false;
        auto closure = [&] {
            onMainThread = RunLoop::isMainThread();
            ran = true;
        };
        switch (schedule.from) {
            case From::mainThread:
                Delay(schedule.delay, closure);
                EXPECT_FALSE(ran) << "ran inside Delay";
                break;
            case From::otherThread:
                std::thread([&] { Delay(schedule.delay, closure); }).join();
                break;
            case From::backgroundQueue:
                Background().async([&] { Delay(schedule.delay, closure); });
                break;
        }
        ASSERT_TRUE(RunLoop::main().runUntil([&] { return ran.load(); }, patience));
        EXPECT_TRUE(onMainThread);
    }
}

TEST(Delay, WaitsAtLeastItsDelay) {
    bool ran = false;
    const Clock::time_point start = Clock::now();
    Clock::time_point ranAt;
    Delay(0.15, [&] {
        ranAt = Clock::now();
        ran = true;
    });
    ASSERT_TRUE(RunLoop::main().runUntil([&] { return ran; }, patience));
    EXPECT_GE(ranAt - start, 150ms);
}

}  // namespace
}  // namespace quod
