#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "quoddle/filesystem/File.h"
#include "quoddle/filesystem/UrlQueries.h"
#include "quoddle/filesystem/WellKnownFolders.h"
#include "quoddle/runtime/SystemLog.h"
#include "quoddle/strings/PathStrings.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

class FolderTests : public ::testing::Test {
  protected:
    void SetUp() override {
        previousSink_ =
            setSystemLogSink([this](std::string_view line) { log_.emplace_back(line); });
    }
    void TearDown() override { setSystemLogSink(std::move(previousSink_)); }

    Url folder(const std::string& relative) const {
        return Url::fileURL((root_ / relative).string(), true);
    }

    const testing::TemporaryFolder scratch_{"quoddle-folders"};
    testing::ScopedEnvironment environment;
    const std::filesystem::path root_ = scratch_.path();
    std::vector<std::string> log_;
    LogSink previousSink_;
};

// The only test that reads the cached user folders, so its environment is the one they see.
TEST_F(FolderTests, UserFoldersFollowTheXdgVariables) {
    const std::string home = (root_ / "home").string();
    environment.set("HOME", home);
    environment.set("XDG_DATA_HOME", (root_ / "data"));
    environment.set("XDG_CACHE_HOME", "relative/is/ignored");
    environment.set("XDG_CONFIG_HOME", (root_ / "config"));
    std::filesystem::create_directories(root_ / "config");
    std::ofstream(root_ / "config/user-dirs.dirs") << "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n";

    EXPECT_EQ(User::library(), folder("data"));
    EXPECT_EQ(User::caches(), folder("home/.cache"));
    EXPECT_EQ(User::documents(), folder("home/Papers"));
    EXPECT_EQ(User::applicationSupport(), folder("data"));
    EXPECT_TRUE(std::filesystem::is_directory(root_ / "data"));

    // No Info.plist beside the test program: its file name stands in for the identifier.
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").filename();
    EXPECT_EQ(User::appCaches(), folder("home/.cache/" + program));
    EXPECT_TRUE(std::filesystem::is_directory(root_ / "home/.cache" / program));
    EXPECT_TRUE(log_.empty());

    // Worked out once: later changes to the environment are not seen.
    environment.set("XDG_DATA_HOME", (root_ / "elsewhere"));
    EXPECT_EQ(User::library(), folder("data"));
    EXPECT_EQ(&User::library(), &User::library());
}

TEST_F(FolderTests, TheRealLibraryIgnoresTheSandboxedHome) {
    environment.set("HOME", (root_ / "container"));
    environment.set("XDG_DATA_HOME", (root_ / "container/data"));
    const std::string real = internal::passwordDatabaseHomeFolder();
    ASSERT_FALSE(real.empty());
    EXPECT_EQ(NonSandboxedUser::library(), Url::fileURL(real + "/.local/share", true));
}

TEST_F(FolderTests, BaseDirectoriesAndUserDirsFilesAreReadAsTheXdgRulesSay) {
    EXPECT_EQ(internal::xdgBaseDirectory("/x/data/", "/home/a", ".local/share"),
              Url::fileURL("/x/data", true));
    for (const char* ignored : {static_cast<const char*>(nullptr), "", "~/data"})
        EXPECT_EQ(internal::xdgBaseDirectory(ignored, "/home/a", ".cache"),
                  Url::fileURL("/home/a/.cache", true));

    const std::string file =
        "# written by xdg-user-dirs-update\n"
        "  XDG_DOCUMENTS_DIR=\"$HOME/My \\\"Papers\\\"\"\n"
        "XDG_MUSIC_DIR=\"/srv/music\"\n"
        "XDG_PICTURES_DIR=\"$HOME\"\n"
        "XDG_VIDEOS_DIR=\"Videos\"\n"
        "XDG_TEMPLATES_DIR=\"$HOME/Templates\n"
        "XDG_PUBLICSHARE_DIR=\"$HOMEWARD/Public\"\n"
        "XDG_MUSIC_DIR=\"/srv/later\"\n";
    const auto lookup = [&](std::string_view key) {
        return internal::userDirectory(file, key, "/home/a");
    };
    EXPECT_EQ(lookup("XDG_DOCUMENTS_DIR"), Url::fileURL("/home/a/My \"Papers\"", true));
    EXPECT_EQ(lookup("XDG_MUSIC_DIR"), Url::fileURL("/srv/later", true));  // the last one wins
    EXPECT_EQ(lookup("XDG_PICTURES_DIR"), Url::fileURL("/home/a", true));
    // Relative, unterminated, not $HOME, absent, a prefix of a key.
    for (const char* key : {"XDG_VIDEOS_DIR", "XDG_TEMPLATES_DIR", "XDG_PUBLICSHARE_DIR",
                            "XDG_DOWNLOAD_DIR", "XDG_MUSIC"})
        EXPECT_EQ(lookup(key), std::nullopt) << key;
}

TEST_F(FolderTests, AnApplicationSupportFolderThatCannotBeMadeFallsBackAndIsLogged) {
    std::ofstream(root_ / "file") << "in the way";
    const Url blocked = folder("file/data");
    EXPECT_EQ(internal::applicationSupportFolder(blocked, blocked),
              folder("file/data/Application Support"));
    ASSERT_EQ(log_.size(), 1u);
    EXPECT_EQ(log_[0], "File manager error: " + blocked.path() + ": Not a directory");

    log_.clear();
    EXPECT_EQ(internal::applicationSupportFolder(folder("fresh/data"), blocked),
              folder("fresh/data"));
    EXPECT_TRUE(std::filesystem::is_directory(root_ / "fresh/data"));
    EXPECT_TRUE(log_.empty());
}

TEST_F(FolderTests, TheApplicationsOwnFolderIsMadeOrLoggedButAlwaysNamed) {
    EXPECT_EQ(internal::currentAppSupportFolder(folder("share"), "quillmere"),
              folder("share/quillmere"));
    EXPECT_TRUE(std::filesystem::is_directory(root_ / "share/quillmere"));
    EXPECT_TRUE(log_.empty());

    std::ofstream(root_ / "file") << "in the way";
    EXPECT_EQ(internal::currentAppSupportFolder(folder("file"), "quillmere"),
              folder("file/quillmere"));
    EXPECT_EQ(log_, std::vector<std::string>{"Could not create application support folder"});
}

TEST(UrlQueryTests, EqualityStandardisesBothPaths) {
    EXPECT_TRUE(equalTo(Url::fileURL("/a/b/.", true), Url::fileURL("/a/b", true)));
    EXPECT_TRUE(equalTo(Url::fileURL("/a//b", false), Url::fileURL("/a/b", true)));
    EXPECT_TRUE(equalTo(Url::fileURL("/a/x/../b", false), Url::fileURL("/a/b", false)));
    EXPECT_FALSE(equalTo(Url::fileURL("/a/b", false), Url::fileURL("/a/c", false)));
    EXPECT_FALSE(equalTo(Url::fileURL("/a/b", false), Url()));
    EXPECT_FALSE(isUbiquitous(Url::fileURL("/a/b", false)));
}

TEST(UrlQueryTests, DisplayPathsShortenHomeAndCloudFolders) {
    testing::ScopedEnvironment environment;
    environment.set("HOME", "/home/anna/");
    const auto shown = [](std::string_view path, bool last = false, std::string_view cloud = "") {
        return localizedDisplayPath(Url::fileURL(path, false), last, cloud);
    };
    EXPECT_EQ(shown("/home/anna/notes/./a.txt"), "~/notes/a.txt");
    EXPECT_EQ(shown("/home/anna"), "~");
    EXPECT_EQ(shown("/home/annabel//a.txt"), "/home/annabel/a.txt");
    EXPECT_EQ(shown("/home/anna/notes/a.txt", true), "a.txt");
    EXPECT_EQ(shown("/", true), "/");
    EXPECT_EQ(shown("/home/anna/Cloud/notes/a.txt", false, "/home/anna/Cloud/"),
              "Cloud Documents/notes/a.txt");
    EXPECT_EQ(shown("/home/anna/Cloudy", false, "/home/anna/Cloud"), "~/Cloudy");
    environment.set("HOME", "/");
    EXPECT_EQ(shown("/etc/fstab"), "/etc/fstab");
}

}  // namespace
}  // namespace quod
