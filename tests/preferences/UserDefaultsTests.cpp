#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/runtime/SystemLog.h"
#include "tests/base/SystemCallFaults.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;

std::string fileContents(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return std::move(bytes).str();
}

TEST(UserDefaults, TypedGettersCoerceAsThePlatformDoes) {
    auto store = UserDefaults::inMemory();
    const std::pair<PlistValue, std::tuple<bool, int64_t, double, std::optional<std::string>>>
        cases[] = {
            {PlistValue(true), {true, 1, 1.0, "1"}},
            {PlistValue(int64_t{42}), {true, 42, 42.0, "42"}},
            {PlistValue(0.0), {false, 0, 0.0, "0"}},
            {PlistValue(2.67), {true, 2, 2.67, "2.67"}},
            {PlistValue(-2.67), {true, -2, -2.67, "-2.67"}},
            {PlistValue(3.0), {true, 3, 3.0, "3"}},
            {PlistValue("YES"), {true, 0, 0.0, "YES"}},
            {PlistValue("true"), {true, 0, 0.0, "true"}},
            {PlistValue(" 007"), {true, 7, 7.0, " 007"}},
            {PlistValue("-1"), {true, -1, -1.0, "-1"}},
            {PlistValue("3.5"), {true, 3, 3.5, "3.5"}},
            {PlistValue("0.5"), {false, 0, 0.5, "0.5"}},
            {PlistValue("1e3"), {true, 1, 1000.0, "1e3"}},
            {PlistValue(" 7x"), {true, 7, 7.0, " 7x"}},
            {PlistValue("0x1A"), {false, 0, 0.0, "0x1A"}},
            {PlistValue("NO"), {false, 0, 0.0, "NO"}},
            {PlistValue("+x"), {false, 0, 0.0, "+x"}},
            {PlistValue("99999999999999999999"), {true, INT64_MAX, 1e20, "99999999999999999999"}},
            {PlistValue(PlistArray{1}), {false, 0, 0.0, std::nullopt}},
            {PlistValue(Data{1}), {false, 0, 0.0, std::nullopt}},
        };
    for (const auto& [stored, expected] : cases) {
        store->setObject("key", stored);
        const auto& [asBool, asInteger, asDouble, asString] = expected;
        EXPECT_EQ(store->boolForKey("key"), asBool) << xmlPropertyList(stored);
        EXPECT_EQ(store->integerForKey("key"), asInteger) << xmlPropertyList(stored);
        EXPECT_DOUBLE_EQ(store->doubleForKey("key"), asDouble) << xmlPropertyList(stored);
        EXPECT_EQ(store->stringForKey("key"), asString) << xmlPropertyList(stored);
    }
    store->setObject("list", PlistValue(PlistArray{"a"}));
    EXPECT_EQ(store->arrayForKey("list"), (PlistArray{"a"}));
    EXPECT_EQ(store->dictionaryForKey("list"), std::nullopt);
    EXPECT_EQ(store->dataForKey("list"), std::nullopt);
    EXPECT_FALSE(store->boolForKey("missing"));
    EXPECT_EQ(store->integerForKey("missing"), 0);
    EXPECT_EQ(store->floatForKey("missing"), 0.0f);
    EXPECT_EQ(store->stringForKey("missing"), std::nullopt);
}

TEST(UserDefaults, RegisteredDefaultsAnswerOnlyWhereNothingIsStored) {
    auto store = UserDefaults::inMemory();
    store->registerDefaults({{"TabWidth", int64_t{4}}, {"Theme", "stockholm"}});
    store->setInteger("TabWidth", 8);
    EXPECT_EQ(store->integerForKey("TabWidth"), 8);
    EXPECT_EQ(store->stringForKey("Theme"), "stockholm");
    store->removeObject("TabWidth");
    EXPECT_EQ(store->integerForKey("TabWidth"), 4);
    EXPECT_TRUE(store->persistentDomain().empty());
}

TEST(UserDefaults, EveryReadSeesTheFileAsItIsNow) {
    const TemporaryFolder folder("quoddle-defaults");
    const fs::path file = folder.path() / "sub" / "com.example.app.plist";
    auto first = UserDefaults::persistent(file);
    auto second = UserDefaults::persistent(file);
    EXPECT_EQ(first->stringForKey("k"), std::nullopt);
    first->setObject("k", PlistValue("one"));
    EXPECT_EQ(second->stringForKey("k"), "one");
    second->setObject("k", PlistValue("two"));  // same size, other content
    EXPECT_EQ(first->stringForKey("k"), "two");
    first->setObject("k", std::nullopt);
    EXPECT_EQ(second->objectForKey("k"), std::nullopt);
    // What is on disk is an XML property list that any reader can take.
    EXPECT_NE(fileContents(file).find("<plist version=\"1.0\">"), std::string::npos);
}

TEST(UserDefaults, AWriteThatChangesNothingLeavesTheFileAlone) {
    const TemporaryFolder folder("quoddle-defaults");
    const fs::path file = folder.path() / "d.plist";
    auto store = UserDefaults::persistent(file);
    store->setInteger("n", 5);
    struct stat before {};
    ASSERT_EQ(::stat(file.c_str(), &before), 0);
    store->setInteger("n", 5);
    store->removeObject("never-there");
    struct stat after {};
    ASSERT_EQ(::stat(file.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST(UserDefaults, SeveralEntriesAreStoredTogetherAndUnchangedOnesWriteNothing) {
    const TemporaryFolder folder("quoddle-defaults");
    const fs::path file = folder.path() / "d.plist";
    auto store = UserDefaults::persistent(file);
    store->setObjects({{"a", PlistValue(int64_t{1})}, {"b", PlistValue("two")}});
    struct stat first {};
    ASSERT_EQ(::stat(file.c_str(), &first), 0);
    store->setObjects({{"a", PlistValue(int64_t{1})}, {"b", PlistValue("two")}});
    struct stat unchanged {};
    ASSERT_EQ(::stat(file.c_str(), &unchanged), 0);
    EXPECT_EQ(first.st_ino, unchanged.st_ino);

    store->setObjects({{"a", PlistValue(int64_t{1})}, {"c", PlistValue(true)}});
    const auto other = UserDefaults::persistent(file);
    EXPECT_EQ(other->integerForKey("a"), 1);
    EXPECT_EQ(other->stringForKey("b"), "two");
    EXPECT_TRUE(other->boolForKey("c"));
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"d.plist", "d.plist.lock"}));
}

TEST(UserDefaults, KeepsTheModeAndReadsDroppedInBinaryFiles) {
    const TemporaryFolder folder("quoddle-defaults");
    const fs::path file = folder.path() / "d.plist";
    const Data binary =
        binaryPropertyList(PlistValue(PlistDictionary{{"Resume", true}, {"Tab", int64_t{3}}}));
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(binary.data()), binary.size());
    ::chmod(file.c_str(), 0640);
    auto store = UserDefaults::persistent(file);
    EXPECT_TRUE(store->boolForKey("Resume"));
    EXPECT_EQ(store->integerForKey("Tab"), 3);
    store->setInteger("Tab", 4);
    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_EQ(UserDefaults::persistent(file)->integerForKey("Tab"), 4);
}

TEST(UserDefaults, ADamagedFileReadsEmptyAndIsKeptBesideBeforeTheFirstWrite) {
    const TemporaryFolder folder("quoddle-defaults");
    const fs::path file = folder.path() / "d.plist";
    for (const std::string& damaged :
         {std::string("<plist><dict><key>a</key>"), std::string("\x00\xff\x13garbage", 10),
          std::string("<plist><array><string>x</string></array></plist>")}) {
        std::ofstream(file, std::ios::binary) << damaged;
        auto store = UserDefaults::persistent(file);
        EXPECT_TRUE(store->persistentDomain().empty());
        EXPECT_EQ(store->stringForKey("a"), std::nullopt);
        store->setBool("fresh", true);
        EXPECT_TRUE(UserDefaults::persistent(file)->boolForKey("fresh"));
        int backups = 0;
        for (const auto& entry : fs::directory_iterator(folder.path())) {
            if (entry.path().filename().string().starts_with("d.plist.corrupt-") &&
                fileContents(entry.path()) == damaged) {
                ++backups;
            }
        }
        EXPECT_EQ(backups, 1);
        fs::remove(file);
    }
}

TEST(UserDefaults, AFailedWriteLeavesTheStoreAsItWasAndIsLoggedOnce) {
    const TemporaryFolder folder("quoddle-defaults");
    const fs::path file = folder.path() / "d.plist";
    auto store = UserDefaults::persistent(file);
    ASSERT_TRUE(store->setInteger("TabWidth", 4));
    const std::string before = fileContents(file);
    std::vector<std::string> logged;
    const LogSink previous =
        setSystemLogSink([&](std::string_view line) { logged.emplace_back(line); });
    {
        testing::SystemCallFaults faults;
        for (const int error : {ENOSPC, EIO}) {
            faults.failAt(testing::SystemCall::write, 0, error);
            EXPECT_FALSE(store->setInteger("TabWidth", 8));
            faults.failAt(testing::SystemCall::write, 0, error);  // the disk is still full
            EXPECT_FALSE(store->setObjects({{"A", true}, {"B", false}}));
        }
    }
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0], "File manager error: " + file.string() + ": No space left on device");
    EXPECT_EQ(fileContents(file), before);
    EXPECT_EQ(store->integerForKey("TabWidth"), 4);
    EXPECT_EQ(UserDefaults::persistent(file)->integerForKey("TabWidth"), 4);
    std::vector<std::string> entries;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        entries.push_back(entry.path().filename().string());
    }
    std::ranges::sort(entries);
    EXPECT_EQ(entries, (std::vector<std::string>{"d.plist", "d.plist.lock"}));

    // The next success ends the outage; a new one is logged again.
    EXPECT_TRUE(store->setInteger("TabWidth", 8));
    {
        testing::SystemCallFaults faults;
        faults.failAt(testing::SystemCall::fsync, 0, EIO);
        EXPECT_FALSE(store->setInteger("TabWidth", 2));
    }
    setSystemLogSink(previous);
    EXPECT_EQ(logged.size(), 2u);
    EXPECT_EQ(store->integerForKey("TabWidth"), 8);
}

TEST(UserDefaults, ANewStoreIsPrivateAndALinkToItStaysALink) {
    const TemporaryFolder folder("quoddle-defaults");
    const fs::path file = folder.path() / "fresh.plist";
    ASSERT_TRUE(UserDefaults::persistent(file)->setBool("Resume", true));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);

    const fs::path link = folder.path() / "linked.plist";
    fs::create_symlink(file, link);
    ASSERT_TRUE(UserDefaults::persistent(link)->setBool("Resume", false));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_FALSE(UserDefaults::persistent(file)->boolForKey("Resume"));
}

// ---- Several processes at once ----

TEST(UserDefaultsStress, ConcurrentWritersLoseNoUpdate) {
    const TemporaryFolder folder("quoddle-defaults");
    const fs::path file = folder.path() / "shared.plist";
    std::vector<pid_t> writers;
    for (int writer = 0; writer < 4; ++writer) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            auto store = UserDefaults::persistent(file);
            for (int key = 0; key < 250; ++key) {
                store->setInteger("w" + std::to_string(writer) + "k" + std::to_string(key), key);
            }
            ::_exit(0);
        }
        writers.push_back(child);
    }
    for (const pid_t child : writers) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    const PlistDictionary domain = UserDefaults::persistent(file)->persistentDomain();
    EXPECT_EQ(domain.size(), 1000u);
    for (int writer = 0; writer < 4; ++writer) {
        for (int key = 0; key < 250; ++key) {
            const auto found =
                domain.find("w" + std::to_string(writer) + "k" + std::to_string(key));
            ASSERT_NE(found, domain.end());
            EXPECT_EQ(found->second, PlistValue(int64_t{key}));
        }
    }
}

TEST(UserDefaultsStress, AKilledWriterNeverLeavesATornFileOrLosesAnAcknowledgedWrite) {
    const TemporaryFolder folder("quoddle-defaults");
    const fs::path file = folder.path() / "killed.plist";
    std::mt19937 random(11);
    int acknowledged = 0;  // keys 0 .. acknowledged-1 were reported written
    // At least 50 kills, and on until more than 50 writes were acknowledged: a loaded machine
    // fsyncs slowly, and a run that kills before most writes finish proves little.
    for (int round = 0; round < 50 || (acknowledged <= 50 && round < 1000); ++round) {
        int channel[2];
        ASSERT_EQ(::pipe(channel), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::close(channel[0]);
            auto store = UserDefaults::persistent(file);
            for (int key = acknowledged;; ++key) {
                store->setInteger("key" + std::to_string(key), key);
                ::write(channel[1], &key, sizeof key);
            }
        }
        ::close(channel[1]);
        std::this_thread::sleep_for(std::chrono::microseconds(500 + random() % 20000));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        int key = 0;
        while (::read(channel[0], &key, sizeof key) == sizeof key)
            acknowledged = key + 1;
        ::close(channel[0]);

        if (!fs::exists(file)) {  // killed before its first write was done
            ASSERT_EQ(acknowledged, 0) << "round " << round;
            continue;
        }
        const auto parsed = parsePropertyList(fileContents(file));
        ASSERT_TRUE(parsed && parsed->as<PlistDictionary>()) << "round " << round;
        const PlistDictionary& domain = *parsed->as<PlistDictionary>();
        for (int written = 0; written < acknowledged; ++written) {
            ASSERT_TRUE(domain.contains("key" + std::to_string(written))) << "round " << round;
        }
    }
    EXPECT_GT(acknowledged, 50);
    // Whatever the kills left, the next write removes.
    ASSERT_TRUE(UserDefaults::persistent(file)->setBool("after", true));
    std::vector<std::string> entries;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        entries.push_back(entry.path().filename().string());
    }
    std::ranges::sort(entries);
    EXPECT_EQ(entries, (std::vector<std::string>{"killed.plist", "killed.plist.lock"}));
}

TEST(UserDefaultsStress, AnotherProcessReadsTheLatestOfSameSizeWrites) {
    const TemporaryFolder folder("quoddle-defaults");
    const fs::path file = folder.path() / "flip.plist";
    UserDefaults::persistent(file)->setObject("value", PlistValue("A"));
    int toReader[2], fromReader[2];
    ASSERT_EQ(::pipe(toReader), 0);
    ASSERT_EQ(::pipe(fromReader), 0);
    const pid_t reader = ::fork();
    ASSERT_GE(reader, 0);
    if (reader == 0) {
        ::close(toReader[1]);  // or the read below would never see the end
        ::close(fromReader[0]);
        auto store = UserDefaults::persistent(file);
        char request = 0;
        while (::read(toReader[0], &request, 1) == 1) {
            const char seen = store->stringForKey("value").value_or("?")[0];
            ::write(fromReader[1], &seen, 1);
        }
        ::_exit(0);
    }
    ::close(toReader[0]);
    ::close(fromReader[1]);
    auto writer = UserDefaults::persistent(file);
    int mismatches = 0;
    for (int round = 0; round < 1000; ++round) {
        const char value = round % 2 == 0 ? 'B' : 'A';
        writer->setObject("value", PlistValue(std::string(1, value)));
        ::write(toReader[1], &value, 1);
        char seen = 0;
        ASSERT_EQ(::read(fromReader[0], &seen, 1), 1);
        if (seen != value) ++mismatches;
    }
    ::close(toReader[1]);
    ::close(fromReader[0]);
    ::waitpid(reader, nullptr, 0);
    EXPECT_EQ(mismatches, 0);
}

}  // namespace
}  // namespace quod
