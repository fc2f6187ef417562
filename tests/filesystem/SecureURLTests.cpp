#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "quoddle/filesystem/SecureURL.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/runtime/SystemLog.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

class SecureURLTests : public ::testing::Test {
  protected:
    void SetUp() override {
        UserDefaults::setStandard(UserDefaults::inMemory());
        std::ofstream(file_.path()) << "x";
    }

    const testing::TemporaryFolder scratch_{"quoddle-secure"};
    const Url folder_ = Url::fileURL(scratch_.path().native(), true);
    const Url file_ = folder_.appendingPathComponent("chosen file.txt", false);
};

TEST_F(SecureURLTests, ABookmarkResolvesToTheSameUrlAndOpensItsScopeOnce) {
    const std::string oddName = folder_.path() + "/caf\xe9";  // Latin-1, not UTF-8
    std::ofstream(oddName) << "x";
    for (const Url& url : {file_, folder_, Url::fileURL(oddName, false)}) {
        const auto data = SecureURL(url).bookmark();
        ASSERT_TRUE(data) << url.path();
        const int closedBefore = internal::closedSecurityScopeCount();
        {
            auto restored = SecureURL::fromData(*data);
            ASSERT_TRUE(restored);
            EXPECT_EQ(restored->url(), url);
            SecureURL moved = std::move(*restored);
            restored.reset();  // the moved-from object has nothing left to close
            EXPECT_EQ(internal::closedSecurityScopeCount(), closedBefore);
        }
        EXPECT_EQ(internal::closedSecurityScopeCount(), closedBefore + 1);
    }
    const int closedBefore = internal::closedSecurityScopeCount();
    { const SecureURL plain(file_); }
    EXPECT_EQ(internal::closedSecurityScopeCount(), closedBefore);
}

TEST_F(SecureURLTests, MalformedRecordsDoNotResolve) {
    const Data good = *SecureURL(file_).bookmark();
    ASSERT_TRUE(SecureURL::fromData(good));
    for (size_t size = 0; size < good.size(); ++size)
        EXPECT_FALSE(SecureURL::fromData(std::span(good).first(size))) << "truncated to " << size;

    const auto damaged = [&](size_t index, uint8_t value) {
        Data copy = good;
        copy[index] = value;
        return copy;
    };
    EXPECT_FALSE(SecureURL::fromData(damaged(0, 'X')));   // magic
    EXPECT_FALSE(SecureURL::fromData(damaged(4, 2)));     // version
    EXPECT_FALSE(SecureURL::fromData(damaged(5, 2)));     // unknown flag
    EXPECT_FALSE(SecureURL::fromData(damaged(9, 1)));     // length far past the end
    EXPECT_FALSE(SecureURL::fromData(damaged(10, 'x')));  // relative path
    EXPECT_FALSE(SecureURL::fromData(damaged(12, 0)));    // NUL inside the path
    Data overlong = good;
    overlong.push_back('x');
    EXPECT_FALSE(SecureURL::fromData(overlong));

    const auto record = [](const std::string& path) {
        Data data{'Q', 'D', 'L', 'B', 1, 0};
        for (int i = 0; i < 4; ++i)
            data.push_back(static_cast<uint8_t>(path.size() >> (8 * i)));
        data.insert(data.end(), path.begin(), path.end());
        return data;
    };
    EXPECT_TRUE(SecureURL::fromData(record("/" + std::string(PATH_MAX - 2, 'a'))));
    EXPECT_FALSE(SecureURL::fromData(record("/" + std::string(PATH_MAX - 1, 'a'))));
    EXPECT_FALSE(SecureURL::fromData(record("")));
}

TEST_F(SecureURLTests, NoBookmarkOfWhatCannotBeReachedAndSavingItLogsAndKeepsTheOldValue) {
    std::filesystem::create_symlink(folder_.path() + "/gone", folder_.path() + "/dangling");
    EXPECT_FALSE(SecureURL(Url()).bookmark());
    EXPECT_FALSE(SecureURL(folder_.appendingPathComponent("missing", false)).bookmark());
    EXPECT_FALSE(SecureURL(folder_.appendingPathComponent("dangling", false)).bookmark());
    EXPECT_FALSE(SecureURL(Url::fileURL(file_.path() + std::string(1, '\0'), false)).bookmark());

    std::vector<std::string> lines;
    const LogSink previous =
        setSystemLogSink([&](std::string_view line) { lines.emplace_back(line); });
    const auto defaults = UserDefaults::standard();
    defaults->setObject("Chosen", PlistValue("earlier"));
    SecureURL(folder_.appendingPathComponent("missing", false)).saveBookmark("Chosen");
    EXPECT_EQ(lines, std::vector<std::string>{"Couldn't save secure bookmark to defaults"});
    EXPECT_EQ(defaults->stringForKey("Chosen"), "earlier");

    SecureURL(file_).saveBookmark("Chosen");
    EXPECT_EQ(lines.size(), 1u);
    EXPECT_EQ(defaults->dataForKey("Chosen"), SecureURL(file_).bookmark());
    setSystemLogSink(previous);
}

TEST_F(SecureURLTests, RestoringFromAKeyRemovesBrokenEntriesOnly) {
    const auto defaults = UserDefaults::standard();
    defaults->setObject("Other", PlistValue(int64_t{7}));
    const PlistDictionary untouched = defaults->persistentDomain();
    EXPECT_FALSE(SecureURL::fromKey("Missing"));
    EXPECT_EQ(defaults->persistentDomain(), untouched);

    defaults->setObject("Text", PlistValue(file_.path()));
    EXPECT_FALSE(SecureURL::fromKey("Text"));
    EXPECT_FALSE(defaults->objectForKey("Text"));

    defaults->setObject("Corrupt", PlistValue(Data{'Q', 'D', 'L', 'B', 9}));
    EXPECT_FALSE(SecureURL::fromKey("Corrupt"));
    EXPECT_FALSE(defaults->objectForKey("Corrupt"));
    EXPECT_EQ(defaults->persistentDomain(), untouched);

    // A good entry stays as it was: resolution never finds it stale, so nothing is rewritten.
    SecureURL(file_).saveBookmark("Good");
    const auto stored = defaults->dataForKey("Good");
    const int closedBefore = internal::closedSecurityScopeCount();
    {
        const auto restored = SecureURL::fromKey("Good");
        ASSERT_TRUE(restored);
        EXPECT_EQ(restored->url(), file_);
    }
    EXPECT_EQ(internal::closedSecurityScopeCount(), closedBefore + 1);
    EXPECT_EQ(defaults->dataForKey("Good"), stored);
}

TEST_F(SecureURLTests, ASavedBookmarkSurvivesARestartOfTheStore) {
    const auto file = std::filesystem::path(folder_.path()) / "defaults.plist";
    UserDefaults::setStandard(UserDefaults::persistent(file));
    SecureURL(folder_).saveBookmark("LastFolder");

    UserDefaults::setStandard(UserDefaults::persistent(file));  // as the next run would open it
    const auto restored = SecureURL::fromKey("LastFolder");
    ASSERT_TRUE(restored);
    EXPECT_EQ(restored->url(), folder_);
    EXPECT_TRUE(restored->url().hasDirectoryPath());
    EXPECT_TRUE(UserDefaults::standard()->dataForKey("LastFolder"));
}

}  // namespace
}  // namespace quod
