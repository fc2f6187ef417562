#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "MonitorTestSupport.h"
#include "quoddle/filesystem/FileSystemMonitor.h"
#include "quoddle/filesystem/SingleFolderMonitor.h"

namespace quod {
namespace {

using namespace quod::testing;
namespace fs = std::filesystem;

class FileSystemMonitorTests : public ::testing::Test {
  protected:
    MonitorFolder folder;
    std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
};

TEST_F(FileSystemMonitorTests, FileModeReportsEachItemOncePerBatchAndDeletedFoldersAsThemselves) {
    writeFile(folder.path("a.txt"));
    fs::create_directory(folder.path("gone"));
    fs::create_directory(folder.path("sub"));
    FileSystemMonitor monitor(folder.url(), false);
    monitor.setDelegate(recorder);

    for (int i = 0; i < 20; ++i)
        writeFile(folder.path("a.txt"), "more");
    fs::remove(folder.path("gone"));
    writeFile(folder.path("sub/new.txt"));

    const Url gone = folder.url("gone", false);
    ASSERT_TRUE(waitUntil([&] { return recorder->reports.size() >= 3; }));
    runFor(300ms);
    EXPECT_EQ(recorder->sortedPaths(),
              (std::vector<std::string>{folder.path("a.txt"), folder.path("gone"),
                                        folder.path("sub/new.txt")}));
    EXPECT_FALSE(recorder->calledOffTheMainThread);
}

TEST_F(FileSystemMonitorTests, FolderModeReportsTheChangedFolderOrTheItemsParent) {
    for (const char* name : {"docs", "pictures", "old"})
        fs::create_directory(folder.path(name));
    for (const char* name : {"docs/1", "docs/2", "docs/3", "old/x.txt"})
        writeFile(folder.path(name));
    FileSystemMonitor monitor(folder.url(), true);
    monitor.setDelegate(recorder);

    for (const char* name : {"docs/1", "docs/2", "docs/3"})
        writeFile(folder.path(name), "changed");
    ASSERT_EQ(::chmod(folder.path("pictures").c_str(), 0700), 0);
    fs::remove(folder.path("old/x.txt"));

    ASSERT_TRUE(waitUntil([&] { return recorder->reports.size() >= 3; }));
    runFor(300ms);
    EXPECT_EQ(recorder->sortedPaths(),
              (std::vector<std::string>{folder.path("docs/"), folder.path("old/"),
                                        folder.path("pictures/")}));
}

TEST_F(FileSystemMonitorTests, EventsWithoutADelegateAreConsumed) {
    FileSystemMonitor monitor(folder.url(), false);
    writeFile(folder.path("unheard.txt"));
    runFor(pastLatency);

    monitor.setDelegate(recorder);
    runFor(200ms);
    EXPECT_TRUE(recorder->reports.empty());

    writeFile(folder.path("heard.txt"));
    ASSERT_TRUE(waitUntil([&] { return !recorder->reports.empty(); }));
    EXPECT_EQ(recorder->reports, std::vector<Url>{folder.url("heard.txt", false)});
}

TEST_F(FileSystemMonitorTests, StoppingEndsReportsAtOnceAndTwiceIsHarmless) {
    const std::size_t registered = liveRegistrationCount(folder.url());
    FileSystemMonitor monitor(folder.url(), false);
    monitor.setDelegate(recorder);
    writeFile(folder.path("pending.txt"));
    runFor(100ms);  // the change is read and waits in its batch

    monitor.stopMonitoring();
    monitor.stopMonitoring();
    EXPECT_EQ(internal::registeredMonitorCount(), registered + 1);  // stays until destruction
    writeFile(folder.path("later.txt"));
    runFor(pastLatency);
    EXPECT_TRUE(recorder->reports.empty());
}

TEST_F(FileSystemMonitorTests, OnlyFoldersWaitsForARestartWhoseEventsAreDropped) {
    fs::create_directory(folder.path("sub"));
    FileSystemMonitor monitor(folder.url(), false);
    monitor.setDelegate(recorder);

    monitor.setOnlyFolders(true);
    EXPECT_TRUE(monitor.onlyFolders());
    writeFile(folder.path("sub/f.txt"));
    ASSERT_TRUE(waitUntil([&] { return !recorder->reports.empty(); }));
    runFor(200ms);
    EXPECT_EQ(recorder->reports, std::vector<Url>{folder.url("sub/f.txt", false)});

    monitor.startMonitoring();
    writeFile(folder.path("sub/g.txt"));
    runFor(pastLatency);
    EXPECT_EQ(recorder->reports.size(), 1u);
}

TEST_F(FileSystemMonitorTests, DestructionUnregistersBeforeAnyLaterReport) {
    const std::size_t registered = liveRegistrationCount(folder.url());
    {
        FileSystemMonitor monitor(folder.url(), false);
        monitor.setDelegate(recorder);
        EXPECT_EQ(internal::registeredMonitorCount(), registered + 1);
        writeFile(folder.path("pending.txt"));
        runFor(100ms);
    }
    EXPECT_EQ(internal::registeredMonitorCount(), registered);
    {
        // Stopped first: the entry outlives the monitor until the next registration sweeps it.
        FileSystemMonitor stopped(folder.url(), false);
        stopped.stopMonitoring();
    }
    EXPECT_EQ(internal::registeredMonitorCount(), registered + 1);
    FileSystemMonitor next(folder.url(), false);
    EXPECT_EQ(internal::registeredMonitorCount(), registered + 1);

    runFor(pastLatency);
    EXPECT_TRUE(recorder->reports.empty());
}

TEST_F(FileSystemMonitorTests, AFolderThatCannotBeWatchedLeavesTheMonitorStoppedAndSilent) {
    const std::size_t registered = liveRegistrationCount(folder.url());
    FileSystemMonitor missing(folder.url("missing", true), true);
    FileSystemMonitor empty(Url(), true);
    missing.setDelegate(recorder);
    empty.setDelegate(recorder);
    EXPECT_EQ(internal::registeredMonitorCount(), registered);

    fs::create_directory(folder.path("missing"));
    writeFile(folder.path("missing/x.txt"));
    runFor(pastLatency);
    EXPECT_TRUE(recorder->reports.empty());
}

class SingleFolderMonitorTests : public FileSystemMonitorTests {};

TEST_F(SingleFolderMonitorTests, AMissingPathStaysIdleEvenWhenItAppears) {
    SingleFolderMonitor monitor(folder.url("later", true));
    monitor.setDelegate(recorder);
    EXPECT_EQ(monitor.fileDescriptor(), -1);

    fs::create_directory(folder.path("later"));
    writeFile(folder.path("later/x.txt"));
    runFor(300ms);
    EXPECT_TRUE(recorder->reports.empty());
    EXPECT_EQ(monitor.fileDescriptor(), -1);
}

TEST_F(SingleFolderMonitorTests, EveryEntryChangeReportsTheFolderOnTheMainThread) {
    writeFile(folder.path("b"));
    writeFile(folder.path("kept.txt"));
    fs::create_directory(folder.path("sub"));
    SingleFolderMonitor monitor(folder.url());
    monitor.setDelegate(recorder);
    EXPECT_GE(monitor.fileDescriptor(), 0);
    EXPECT_EQ(monitor.url(), folder.url());

    // Neither writes the folder: editing an entry, or changing one below a subfolder.
    writeFile(folder.path("kept.txt"), "edited");
    writeFile(folder.path("sub/deeper.txt"));
    // Three changes, each reported: an arrival, a removal, and a rename, whose departure and
    // arrival are one change to the folder.
    writeFile(folder.path("a"));
    fs::remove(folder.path("a"));
    fs::rename(folder.path("b"), folder.path("c"));

    ASSERT_TRUE(waitUntil([&] { return recorder->reports.size() >= 3; }));
    runFor(300ms);
    EXPECT_EQ(recorder->reports, std::vector<Url>(3, folder.url()));
    EXPECT_FALSE(recorder->calledOffTheMainThread);
}

TEST_F(SingleFolderMonitorTests, StoppingClosesTheDescriptorAndStartingAgainWatchesAgain) {
    openLastingDescriptors(folder.url());
    const int before = openDescriptorCount();
    SingleFolderMonitor monitor(folder.url());
    monitor.setDelegate(recorder);
    const int descriptor = monitor.fileDescriptor();
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(openDescriptorCount(), before + 1);

    monitor.stopMonitoring();
    ASSERT_TRUE(waitUntil([&] { return monitor.fileDescriptor() == -1; }));
    EXPECT_EQ(openDescriptorCount(), before);
    monitor.stopMonitoring();
    EXPECT_EQ(monitor.fileDescriptor(), -1);
    writeFile(folder.path("unseen"));
    runFor(300ms);
    EXPECT_TRUE(recorder->reports.empty());

    monitor.startMonitoring();
    EXPECT_GE(monitor.fileDescriptor(), 0);
    writeFile(folder.path("seen"));
    ASSERT_TRUE(waitUntil([&] { return !recorder->reports.empty(); }));
    EXPECT_EQ(recorder->reports, std::vector<Url>{folder.url()});
}

TEST_F(SingleFolderMonitorTests, AFileIsWatchedForWritesToIt) {
    writeFile(folder.path("log.txt"));
    SingleFolderMonitor monitor(folder.url("log.txt", false));
    monitor.setDelegate(recorder);
    writeFile(folder.path("log.txt"), "one");
    ASSERT_TRUE(waitUntil([&] { return !recorder->reports.empty(); }));
    EXPECT_EQ(recorder->reports.front(), folder.url("log.txt", false));
}

}  // namespace
}  // namespace quod
