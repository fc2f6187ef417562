// The monitors under load: floods of new folders and files, moves, a kernel queue overflow, many
// monitors coming and going, and a subtree deleted while it is written to.
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

#include "MonitorTestSupport.h"
#include "quoddle/filesystem/FileManager.h"
#include "quoddle/filesystem/FileSystemMonitor.h"
#include "quoddle/filesystem/SingleFolderMonitor.h"

namespace quod {
namespace {

using namespace quod::testing;
namespace fs = std::filesystem;

// Absorbs new reports into `missing` on every check, so a long wait stays cheap.
class Expectation {
  public:
    Expectation(const Recorder& recorder, std::vector<Url> expected)
        : recorder_(recorder), missing_(expected.begin(), expected.end()) {}

    [[nodiscard]] bool met() {
        for (; absorbed_ < recorder_.reports.size(); ++absorbed_)
            missing_.erase(recorder_.reports[absorbed_]);
        return missing_.empty();
    }
    [[nodiscard]] std::size_t missing() const { return missing_.size(); }

  private:
    const Recorder& recorder_;
    std::unordered_set<Url> missing_;
    std::size_t absorbed_ = 0;
};

TEST(FileSystemMonitorStress, TenThousandFilesInFreshNestedFoldersAreAllReported) {
    constexpr int chains = 10, depth = 10, filesEach = 100;
    // Three runs in folder mode, then one in file mode, where every file must be reported: files
    // made before their folder's watch existed are found only by listing the new folder.
    for (int run = 0; run < 4; ++run) {
        const bool onlyFolders = run < 3;
        MonitorFolder folder;
        auto recorder = std::make_shared<Recorder>();
        FileSystemMonitor monitor(folder.url(), onlyFolders);
        monitor.setDelegate(recorder);

        std::vector<std::string> folders;
        for (int chain = 0; chain < chains; ++chain) {
            std::string path = folder.path("chain" + std::to_string(chain));
            for (int level = 0; level < depth; ++level) {
                if (level > 0) path += "/level" + std::to_string(level);
                folders.push_back(path);
            }
        }
        std::vector<Url> expected;
        for (const std::string& path : folders) {
            for (int file = 0; file < filesEach && !onlyFolders; ++file)
                expected.push_back(Url::fileURL(path + "/" + std::to_string(file), false));
            if (onlyFolders) expected.push_back(Url::fileURL(path, true));
        }
        Expectation expectation(*recorder, expected);

        std::thread writer([&] {
            for (int chain = 0; chain < chains; ++chain)
                FileManager::createDirectory(Url::fileURL(folders[chain * depth + depth - 1], true),
                                             true);
            for (const std::string& path : folders) {
                for (int file = 0; file < filesEach; ++file)
                    writeFile(path + "/" + std::to_string(file));
            }
        });
        const bool all = waitUntil([&] { return expectation.met(); });
        writer.join();
        EXPECT_TRUE(all) << expectation.missing() << " of " << expected.size()
                         << " never reported in run " << run;
        // The root would only come from a queue overflow, i.e. lost events.
        EXPECT_FALSE(recorder->saw(folder.url())) << "run " << run;
    }
}

TEST(FileSystemMonitorStress, RenamedMovedInAndMovedOutFoldersAreFollowed) {
    MonitorFolder scratch;
    const std::string root = scratch.path("root");
    const std::string outside = scratch.path("outside");
    for (const std::string& path :
         {root + "/big/inner", root + "/leaving/deep", outside + "/arriving/deep"})
        fs::create_directories(path);
    for (int file = 0; file < 1000; ++file)
        writeFile(root + "/big/" + std::to_string(file));
    for (const std::string& path : {outside + "/arriving/a1", outside + "/arriving/a2",
                                    outside + "/arriving/deep/d.txt", root + "/leaving/deep/l"})
        writeFile(path);

    const int watchesBefore = inotifyWatchCount();
    auto recorder = std::make_shared<Recorder>();
    FileSystemMonitor monitor(Url::fileURL(root, true), false);
    monitor.setDelegate(recorder);
    EXPECT_EQ(inotifyWatchCount() - watchesBefore, 5);

    fs::rename(root + "/big", root + "/renamed");
    fs::rename(outside + "/arriving", root + "/arriving");
    fs::rename(root + "/leaving", outside + "/leaving");
    Expectation moves(
        *recorder,
        {Url::fileURL(root + "/big", false), Url::fileURL(root + "/renamed", true),
         Url::fileURL(root + "/leaving", false), Url::fileURL(root + "/arriving", true),
         Url::fileURL(root + "/arriving/a1", false), Url::fileURL(root + "/arriving/a2", false),
         Url::fileURL(root + "/arriving/deep", true),
         Url::fileURL(root + "/arriving/deep/d.txt", false)});
    ASSERT_TRUE(waitUntil([&] { return moves.met(); })) << moves.missing() << " missing";
    // root, renamed, renamed/inner, arriving, arriving/deep: the moved-out pair is given up.
    EXPECT_EQ(inotifyWatchCount() - watchesBefore, 5);

    recorder->reports.clear();
    for (const std::string& path :
         {root + "/renamed/inner/x.txt", root + "/renamed/7", root + "/arriving/deep/d.txt",
          outside + "/leaving/deep/l", outside + "/leaving/w.txt"})
        writeFile(path, "edit");
    ASSERT_TRUE(waitUntil([&] { return recorder->reports.size() >= 3; }));
    runFor(300ms);
    EXPECT_EQ(recorder->sortedPaths(),
              (std::vector<std::string>{root + "/arriving/deep/d.txt", root + "/renamed/7",
                                        root + "/renamed/inner/x.txt"}));
}

TEST(FileSystemMonitorStress, AQueueOverflowReportsTheRootAndWatchingGoesOn) {
    int queueLimit = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> queueLimit;
    ASSERT_GT(queueLimit, 0);
    MonitorFolder folder;
    fs::create_directory(folder.path("sub"));
    writeFile(folder.path("sub/a"));
    writeFile(folder.path("sub/b"));
    auto recorder = std::make_shared<Recorder>();
    FileSystemMonitor monitor(folder.url(), true);
    monitor.setDelegate(recorder);

    // The loop does not run meanwhile, so nothing drains the queue. Alternating names keep the
    // kernel from folding the events into one.
    for (int change = 0; change < queueLimit + 100; ++change) {
        const bool odd = change % 2 != 0;
        ::chmod(folder.path(odd ? "sub/a" : "sub/b").c_str(), odd ? 0600 : 0644);
    }
    fs::create_directory(folder.path("late"));  // its event is lost: the queue is full

    ASSERT_TRUE(waitUntil([&] { return recorder->saw(folder.url()); }));
    runFor(300ms);
    EXPECT_EQ(recorder->count(folder.url()), 1);

    writeFile(folder.path("late/x.txt"));
    EXPECT_TRUE(waitUntil([&] { return recorder->saw(folder.url("late", true)); }));
}

TEST(FileSystemMonitorStress, AThousandMonitorsComeAndGoLeavingNothingBehind) {
    MonitorFolder folder;
    fs::create_directories(folder.path("a/b"));
    fs::create_directory(folder.path("c"));
    openLastingDescriptors(folder.url());
    const int descriptors = openDescriptorCount();
    const int watches = inotifyWatchCount();
    const std::size_t registered = liveRegistrationCount(folder.url());
    auto recorder = std::make_shared<Recorder>();

    for (int cycle = 0; cycle < 1000; ++cycle) {
        FileSystemMonitor monitor(folder.url(), cycle % 2 == 0);
        monitor.setDelegate(recorder);
        writeFile(folder.path("a/b/f.txt"));
        RunLoop::main().runOnce(0ns);  // the change is read and waits in its batch
    }
    EXPECT_EQ(openDescriptorCount(), descriptors);
    EXPECT_EQ(inotifyWatchCount(), watches);
    EXPECT_EQ(internal::registeredMonitorCount(), registered);
    runFor(pastLatency);
    EXPECT_TRUE(recorder->reports.empty());
}

TEST(SingleFolderMonitorStress, AThousandMonitorsDestroyedWhileWatchingCloseTheirDescriptors) {
    MonitorFolder folder;
    openLastingDescriptors(folder.url());
    const int descriptors = openDescriptorCount();
    auto recorder = std::make_shared<Recorder>();
    int idle = 0;

    for (int cycle = 0; cycle < 1000; ++cycle) {
        {
            SingleFolderMonitor monitor(folder.url());
            monitor.setDelegate(recorder);
            idle += monitor.fileDescriptor() < 0;
            writeFile(folder.path(std::to_string(cycle)));
        }
        // Descriptors close on the shared queue; keep the number open at once small, so the
        // per-user limit of inotify instances is never what stops a monitor here.
        if (cycle % 20 == 19) waitUntil([&] { return openDescriptorCount() <= descriptors; });
    }
    EXPECT_EQ(idle, 0);
    EXPECT_TRUE(waitUntil([&] { return openDescriptorCount() == descriptors; }));
    runFor(300ms);
    EXPECT_TRUE(recorder->reports.empty());
}

TEST(FileSystemMonitorStress, AThousandWritesToOneFileMakeAtMostTwoReports) {
    MonitorFolder folder;
    auto recorder = std::make_shared<Recorder>();
    FileSystemMonitor monitor(folder.url(), false);
    monitor.setDelegate(recorder);

    std::atomic<bool> done{false};
    const auto started = RunLoop::Clock::now();
    std::thread writer([&] {
        // Spread over 0.4 s; a late write does not push the ones after it back.
        for (int write = 0; write < 1000; ++write) {
            std::this_thread::sleep_until(started + write * 400us);
            writeFile(folder.path("busy.log"), "line\n");
        }
        done = true;
    });
    waitUntil([&] { return done.load(); });
    writer.join();
    // Two batches at most is what a burst shorter than the latency can straddle.
    ASSERT_LT(RunLoop::Clock::now() - started, 900ms);
    runFor(pastLatency);
    EXPECT_GE(recorder->reports.size(), 1u);
    EXPECT_LE(recorder->reports.size(), 2u);
    EXPECT_EQ(recorder->count(folder.url("busy.log", false)),
              static_cast<long>(recorder->reports.size()));
}

TEST(FileSystemMonitorStress, DeletingAndMovingOutSubtreesWhileTheyAreWrittenIsSafe) {
    MonitorFolder scratch;
    const std::string root = scratch.path("root");
    std::vector<std::string> written;
    for (int top = 0; top < 10; ++top) {
        for (int sub = 0; sub < 10; ++sub) {
            written.push_back(root + "/tree/t" + std::to_string(top) + "/s" + std::to_string(sub));
            fs::create_directories(written.back());
        }
    }
    for (int top = 0; top < 5; ++top) {
        fs::create_directories(root + "/tree2/u" + std::to_string(top));
        written.push_back(root + "/tree2/u" + std::to_string(top));
        // Where the moved-out folders are written after the move.
        written.push_back(scratch.path("tree2/u" + std::to_string(top)));
    }
    const int watchesBefore = inotifyWatchCount();
    auto recorder = std::make_shared<Recorder>();
    FileSystemMonitor monitor(Url::fileURL(root, true), false);
    monitor.setDelegate(recorder);

    std::atomic<bool> stop{false};
    std::thread writer([&] {
        for (int round = 0; !stop; ++round) {
            for (const std::string& path : written)
                writeFile(path + "/f" + std::to_string(round % 5));
        }
    });
    std::thread remover([&] {
        std::this_thread::sleep_for(100ms);
        fs::rename(root + "/tree2", scratch.path("tree2"));
        std::error_code racing;  // the writer keeps adding files while the tree goes
        while (fs::exists(root + "/tree"))
            fs::remove_all(root + "/tree", racing);
        std::this_thread::sleep_for(200ms);
        stop = true;
    });
    waitUntil([&] { return stop.load(); });
    remover.join();
    writer.join();
    runFor(pastLatency);

    EXPECT_FALSE(recorder->reports.empty());
    for (const Url& url : recorder->reports)
        EXPECT_TRUE(url.path() == root || url.path().starts_with(root + "/")) << url.path();
    EXPECT_EQ(inotifyWatchCount() - watchesBefore, 1);  // the root alone is left

    recorder->reports.clear();
    writeFile(root + "/after.txt");
    EXPECT_TRUE(waitUntil([&] { return recorder->saw(Url::fileURL(root + "/after.txt", false)); }));
}

}  // namespace
}  // namespace quod
