#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "quoddle/runtime/RunLoop.h"

namespace quod {
namespace {

using namespace std::chrono_literals;
using Clock = RunLoop::Clock;

// Generous: waits end as soon as their condition holds, so this only matters when a test fails.
constexpr auto patience = 60s;

struct Pipe {
    Pipe() {
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
        readEnd = ends[0];
        writeEnd = ends[1];
    }
    ~Pipe() {
        close(readEnd);
        close(writeEnd);
    }
    void send(std::string_view bytes) const {
        EXPECT_EQ(write(writeEnd, bytes.data(), bytes.size()), std::ssize(bytes));
    }
    [[nodiscard]] std::string receive() const {
        char buffer[64];
        const ssize_t count = read(readEnd, buffer, sizeof buffer);
        return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : std::string();
    }
    int readEnd = -1;
    int writeEnd = -1;
};

TEST(RunLoop, RunsEveryPostedTaskOnceInEachProducersOrder) {
    RunLoop loop;
    constexpr int producers = 4;
    constexpr int tasksEach = 5000;
    std::array<std::vector<int>, producers> seen;  // touched only by the loop's thread
    int total = 0;
    std::vector<std::thread> threads;
    for (int producer = 0; producer < producers; ++producer) {
        threads.emplace_back([&, producer] {
            for (int i = 0; i < tasksEach; ++i) {
                loop.post([&seen, &total, producer, i] {
                    seen[producer].push_back(i);
                    ++total;
                });
            }
        });
    }
    ASSERT_TRUE(loop.runUntil([&] { return total == producers * tasksEach; }, patience));
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_FALSE(loop.runOnce(0ns)) << "a task ran twice";
    for (const std::vector<int>& order : seen) {
        ASSERT_EQ(order.size(), static_cast<std::size_t>(tasksEach));
        for (int i = 0; i < tasksEach; ++i)
            ASSERT_EQ(order[i], i);
    }
}

TEST(RunLoop, ATaskPostedDuringATurnRunsInALaterTurn) {
    RunLoop loop;
    std::vector<std::string> order;
    loop.post([&] {
        order.push_back("first");
        loop.post([&] { order.push_back("posted by first"); });
    });
    // Captures too big to keep inline, and ones that cannot be copied, are tasks as well.
    std::array<char, 200> large{};
    large.back() = 'd';
    loop.post([&order, owned = std::make_unique<std::string>("second"), large] {
        order.push_back(*owned + large.back());
    });
    EXPECT_TRUE(loop.runOnce(0ns));
    EXPECT_EQ(order, (std::vector<std::string>{"first", "secondd"}));
    EXPECT_TRUE(loop.runOnce(0ns));
    EXPECT_EQ(order.back(), "posted by first");
    EXPECT_FALSE(loop.runOnce(0ns));
}

TEST(RunLoop, DelayedTasksRunByDeadlineAndNeverEarly) {
    RunLoop loop;
    // Posted latest deadline first, so that running them in posting order would fail.
    const std::array delays = {500ms, 250ms, 0ms};
    std::array<Clock::time_point, 3> postedBefore{};
    std::array<Clock::time_point, 3> postedAfter{};
    std::array<Clock::time_point, 3> ranAt{};
    std::vector<int> order;
    for (int i = 0; i < 3; ++i) {
        postedBefore[i] = Clock::now();
        loop.postAfter(delays[i], [&, i] {
            ranAt[i] = Clock::now();
            order.push_back(i);
        });
        postedAfter[i] = Clock::now();
    }
    EXPECT_TRUE(order.empty()) << "a delayed task ran inside postAfter";
    ASSERT_TRUE(loop.runUntil([&] { return order.size() == 3; }, patience));
    for (int i = 0; i < 3; ++i) {
        EXPECT_GE(ranAt[i] - postedBefore[i], delays[i]) << "task " << i << " ran early";
    }
    // Each deadline lies in [postedBefore + delay, postedAfter + delay]; when those windows do not
    // overlap (they would only on a machine stalled for a quarter second), the order is certain.
    const bool windowsApart = postedAfter[2] + delays[2] < postedBefore[1] + delays[1] &&
                              postedAfter[1] + delays[1] < postedBefore[0] + delays[0];
    if (windowsApart) {
        EXPECT_EQ(order, (std::vector<int>{2, 1, 0}));
    }
}

TEST(RunLoop, ReadSourcesAreCalledWhileReadableUntilDisconnected) {
    RunLoop loop;
    Pipe pipe;
    std::string received;
    Connection source = loop.addReadSource(pipe.readEnd, [&] { received += pipe.receive(); });
    EXPECT_FALSE(loop.runOnce(0ns)) << "called before anything was written";
    pipe.send("ab");
    ASSERT_TRUE(loop.runUntil([&] { return received == "ab"; }, patience));
    pipe.send("c");
    ASSERT_TRUE(loop.runUntil([&] { return received == "abc"; }, patience));
    source.disconnect();
    pipe.send("d");
    EXPECT_FALSE(loop.runOnce(20ms));
    EXPECT_EQ(received, "abc");

    // A regular file, a closed descriptor, nonsense: nothing to watch, and nothing is called.
    const int regularFile = open("/proc/self/exe", O_RDONLY | O_CLOEXEC);
    for (int descriptor : {regularFile, pipe.writeEnd + 1000, -1}) {
        Connection inert = loop.addReadSource(descriptor, [&] { received = "called"; });
        EXPECT_FALSE(loop.runOnce(0ns));
    }
    close(regularFile);
    EXPECT_EQ(received, "abc");
}

TEST(RunLoop, ASourceDisconnectedDuringATurnIsNotCalledInIt) {
    RunLoop loop;
    Pipe first;
    Pipe second;
    Connection connections[2];
    int calls = 0;
    // Whichever runs first disconnects both; the other was ready too but must not be called.
    for (int i = 0; i < 2; ++i) {
        const Pipe& pipe = i == 0 ? first : second;
        connections[i] = loop.addReadSource(pipe.readEnd, [&] {
            ++calls;
            connections[0].disconnect();
            connections[1].disconnect();
        });
    }
    first.send("x");
    second.send("y");
    ASSERT_TRUE(loop.runUntil([&] { return calls > 0; }, patience));
    EXPECT_FALSE(loop.runOnce(20ms));
    EXPECT_EQ(calls, 1);
}

TEST(RunLoop, ItsDescriptorIsReadableExactlyWhileWorkIsWaiting) {
    RunLoop loop;
    auto readable = [&](int milliseconds) {
        pollfd watched{loop.descriptor(), POLLIN, 0};
        return poll(&watched, 1, milliseconds) == 1;
    };
    EXPECT_FALSE(readable(0));

    std::thread([&] { loop.post([] {}); }).join();
    EXPECT_TRUE(readable(0)) << "a posted task";
    EXPECT_TRUE(loop.runOnce(0ns));
    EXPECT_FALSE(readable(0));

    bool ran = false;
    loop.postAfter(30ms, [&] { ran = true; });
    EXPECT_TRUE(readable(60'000)) << "a delayed task that fell due";
    EXPECT_TRUE(loop.runOnce(0ns));
    EXPECT_TRUE(ran);
    EXPECT_FALSE(readable(0));

    Pipe pipe;
    Connection source = loop.addReadSource(pipe.readEnd, [&] { (void)pipe.receive(); });
    pipe.send("z");
    EXPECT_TRUE(readable(0)) << "a ready source";
    EXPECT_TRUE(loop.runOnce(0ns));
    EXPECT_FALSE(readable(0));
}

TEST(RunLoop, RunReturnsWhenStoppedAndRunUntilAtItsTimeout) {
    RunLoop loop;
    int ran = 0;
    loop.post([&] {
        ++ran;
        loop.stop();
    });
    loop.run();
    EXPECT_EQ(ran, 1);

    std::thread stopper([&] { loop.stop(); });
    loop.run();  // returns whether the stop came before or during the run
    stopper.join();

    const Clock::time_point start = Clock::now();
    EXPECT_FALSE(loop.runUntil([] { return false; }, 50ms));
    EXPECT_GE(Clock::now() - start, 50ms);
}

TEST(RunLoop, TheMainLoopBelongsToTheInitialThread) {
    EXPECT_TRUE(RunLoop::isMainThread());
    EXPECT_TRUE(RunLoop::main().isCurrent());
    bool mainThreadElsewhere = true;
    bool mainLoopCurrentElsewhere = true;
    bool ownLoopCurrentElsewhere = false;
    std::thread([&] {
        mainThreadElsewhere = RunLoop::isMainThread();
        mainLoopCurrentElsewhere = RunLoop::main().isCurrent();
        RunLoop own;
        ownLoopCurrentElsewhere = own.isCurrent();
    }).join();
    EXPECT_FALSE(mainThreadElsewhere);
    EXPECT_FALSE(mainLoopCurrentElsewhere);
    EXPECT_TRUE(ownLoopCurrentElsewhere);
}

TEST(RunLoopDeathTest, MisuseStops) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(std::thread([] { RunLoop::main().runOnce(0ns); }).join(),
                 "driven only by the thread it belongs to");
    EXPECT_DEATH(std::thread([] {
                     Pipe pipe;
                     Connection source = RunLoop::main().addReadSource(pipe.readEnd, [] {});
                 }).join(),
                 "added on the loop's thread");
    EXPECT_DEATH(
        {
            RunLoop loop;
            loop.post([] { throw std::runtime_error("escaped"); });
            loop.runOnce(0ns);
        },
        "");
}

}  // namespace
}  // namespace quod
