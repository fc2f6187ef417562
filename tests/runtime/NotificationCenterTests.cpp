#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "quoddle/runtime/NotificationCenter.h"

namespace quod {
namespace {

TEST(NotificationCenter, DeliversToTheObserversWhoseNameAndSenderMatch) {
    NotificationCenter center;
    const int first = 0;
    const int second = 0;
    struct Wanted {
        std::optional<std::string> name;
        const void* sender;
    };
    const Wanted observers[] = {{"A", nullptr},
                                {"A", &first},
                                {std::nullopt, nullptr},
                                {"B", nullptr},
                                {std::nullopt, &second}};
    std::vector<int> calledNow;
    std::vector<Connection> connections;
    for (int index = 0; index < std::ssize(observers); ++index) {
        connections.push_back(
            center.addObserver(observers[index].name, observers[index].sender,
                               [&, index](const Notification&) { calledNow.push_back(index); }));
    }
    struct Post {
        const char* name;
        const void* sender;
        std::vector<int> called;  // in the order the observers were added
    };
    const Post posts[] = {{"A", nullptr, {0, 2}},    {"A", &first, {0, 1, 2}},
                          {"A", &second, {0, 2, 4}}, {"B", &first, {2, 3}},
                          {"C", nullptr, {2}},       {"", &second, {2, 4}}};
    for (const Post& post : posts) {
        calledNow.clear();
        center.post(post.name, post.sender);
        EXPECT_EQ(calledNow, post.called) << post.name;
    }
}

TEST(NotificationCenter, DeliversSynchronouslyOnThePostingThreadWithItsUserInfo) {
    NotificationCenter center;
    std::thread::id deliveredOn;
    std::string receivedName;
    int receivedLine = 0;
    const int sender = 0;
    const void* receivedSender = nullptr;
    Connection observer = center.addObserver("Moved", nullptr, [&](const Notification& note) {
        deliveredOn = std::this_thread::get_id();
        receivedName = note.name;
        receivedSender = note.object;
        receivedLine = std::any_cast<int>(note.userInfo.at("line"));
    });
    std::thread::id postedOn;
    std::thread([&] {
        postedOn = std::this_thread::get_id();
        center.post("Moved", &sender, {{"line", 12}});
        EXPECT_EQ(receivedLine, 12) << "post returned before the observer ran";
    }).join();
    EXPECT_EQ(deliveredOn, postedOn);
    EXPECT_EQ(receivedName, "Moved");
    EXPECT_EQ(receivedSender, &sender);
}

TEST(NotificationCenter, ChangesDuringAPostTakeEffectAsDocumented) {
    NotificationCenter center;
    std::vector<std::string> calls;
    Connection first;
    Connection second;
    Connection third;
    std::vector<Connection> added;
    first = center.addObserver("N", nullptr, [&](const Notification&) {
        calls.push_back("first");
        third.disconnect();  // before its turn: not called in this post
        added.push_back(center.addObserver("N", nullptr,
                                           [&](const Notification&) { calls.push_back("added"); }));
    });
    second = center.addObserver("N", nullptr, [&](const Notification&) {
        calls.push_back("second");
        second.disconnect();  // itself, while running
    });
    third =
        center.addObserver("N", nullptr, [&](const Notification&) { calls.push_back("third"); });

    center.post("N");
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "second"}));
    calls.clear();
    center.post("N");
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "added"}));
    EXPECT_EQ(center.observerCount(), 3u);  // first and the two added ones
}

TEST(NotificationCenter, ThreadsPostAndObserveAtOnce) {
    NotificationCenter center;
    std::atomic<int> seenByWatcher = 0;
    Connection watcher =
        center.addObserver("Tick", nullptr, [&](const Notification&) { ++seenByWatcher; });
    constexpr int threadCount = 4;
    constexpr int postsEach = 500;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&] {
            // Each thread also comes and goes as an observer of its own while the others post.
            for (int i = 0; i < postsEach; ++i) {
                Connection passing =
                    center.addObserver("Tick", nullptr, [](const Notification&) {});
                center.post("Tick");
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(seenByWatcher, threadCount * postsEach);
    EXPECT_EQ(center.observerCount(), 1u);
}

TEST(NotificationCenter, ConnectionsMayOutliveTheirCentre) {
    auto center = std::make_unique<NotificationCenter>();
    Connection observer = center->addObserver(std::nullopt, nullptr, [](const Notification&) {});
    EXPECT_EQ(center->observerCount(), 1u);
    center.reset();
    observer.disconnect();  // nothing left to remove from; must not touch the freed centre
}

}  // namespace
}  // namespace quod
