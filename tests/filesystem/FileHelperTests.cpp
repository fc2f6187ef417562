#include <gtest/gtest.h>
#include <mntent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>
#include <string>
#include <utility>

#include "quoddle/filesystem/File.h"
#include "quoddle/filesystem/FileManager.h"
#include "quoddle/filesystem/Misc.h"
#include "quoddle/strings/PathStrings.h"
#include "tests/support/GLibThreadSanitizer.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

class ScratchFolder : public ::testing::Test {
  protected:
    Url url(const std::string& relative) const { return Url::fileURL((root_ / relative).string()); }

    const testing::TemporaryFolder scratch_{"quoddle-files"};
    testing::ScopedEnvironment environment;
    const std::filesystem::path root_ = scratch_.path();
};

using SearchPathTests = ScratchFolder;

TEST_F(SearchPathTests, DropsEmptyRepeatedAndRelativeEntries) {
    scratch_.write("paths", "/usr/bin\n/bin\n");
    std::filesystem::create_directory(root_ / "paths.d");
    EXPECT_EQ(internal::assembleSearchPath(url("paths"), url("paths.d"), "/bin:/opt/x:relative"),
              "/usr/bin:/bin:/opt/x:/usr/local/bin:/usr/local/sbin");
    // Missing files add nothing; a line break inside an entry is taken out of the result.
    EXPECT_EQ(internal::assembleSearchPath(url("none"), url("none.d"), std::nullopt),
              "/usr/local/bin:/usr/local/sbin");
    EXPECT_EQ(internal::assembleSearchPath(url("none"), url("none.d"), "/a\nb"),
              "/ab:/usr/local/bin:/usr/local/sbin");
}

TEST_F(SearchPathTests, FolderEntriesComeBetweenThePathsFileAndPath) {
    scratch_.write("paths", "/first\n");
    scratch_.write("paths.d/tool", "/from-folder\n/first\n");
    scratch_.write("paths.d/.hidden", "/hidden\n");
    scratch_.write("paths.d/latin1", "/caf\xE9\n");            // not UTF-8: contributes nothing
    std::filesystem::create_directory(root_ / "paths.d/sub");  // a folder cannot be read as text
    EXPECT_EQ(internal::assembleSearchPath(url("paths"), url("paths.d"), "/usr/local/bin:/last"),
              "/first:/from-folder:/usr/local/bin:/last:/usr/local/sbin");
}

TEST(DefaultSearchPathTests, IsAssembledOnceFromTheEnvironment) {
    testing::ScopedEnvironment environment;
    environment.set("PATH", "/quoddle/probe:/bin");
    const std::string first = Misc::defaultPATH();
    EXPECT_EQ(first, internal::assembleSearchPath(Url::fileURL("/private/etc/paths", false),
                                                  Url::fileURL("/private/etc/paths.d/"),
                                                  "/quoddle/probe:/bin"));
    environment.set("PATH", "/changed");
    EXPECT_EQ(&Misc::defaultPATH(), &Misc::defaultPATH());
    EXPECT_EQ(Misc::defaultPATH(), first);
}

using TemporaryLocationTests = ScratchFolder;

TEST_F(TemporaryLocationTests, NamesTheProcessAndTheTimeAndCreatesNothing) {
    environment.set("TMPDIR", root_);
    const Url location = File::temporaryURL();
    EXPECT_EQ(location.deletingLastPathComponent().path(), root_.string());
    EXPECT_FALSE(location.hasDirectoryPath());

    const std::string prefix = "QDL-" + std::to_string(::getpid()) + "-";
    const std::string name = location.lastPathComponent();
    ASSERT_TRUE(name.starts_with(prefix)) << name;
    const double seconds = std::stod(name.substr(prefix.size()));
    const double expected =
        std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count() -
        978307200.0;
    EXPECT_NEAR(seconds, expected, 60.0);
    EXPECT_TRUE(std::filesystem::is_empty(root_));
}

TEST_F(TemporaryLocationTests, ATakenNameGivesWayToAUuid) {
    const Url folder = Url::fileURL(root_.string(), true);
    EXPECT_EQ(internal::unusedLocation(folder, "free").lastPathComponent(), "free");

    scratch_.write("taken", "x");
    std::filesystem::create_symlink(root_ / "nowhere", root_ / "dangling");
    const std::regex uuid("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    for (const char* name : {"taken", "dangling"}) {
        const Url other = internal::unusedLocation(folder, name);
        EXPECT_TRUE(std::regex_match(other.lastPathComponent(), uuid)) << other.path();
        EXPECT_EQ(other.deletingLastPathComponent(), folder);
    }
}

TEST(RealHomeFolderTests, ComesFromThePasswordDatabaseWhateverHomeSays) {
    testing::ScopedEnvironment environment;
    environment.set("HOME",
                    "/tmp/some-container/home");  // before the first use, as a sandbox would
    const std::string real = internal::passwordDatabaseHomeFolder();
    ASSERT_FALSE(real.empty()) << "no password entry for this user";
    EXPECT_EQ(File::nonSandboxedHomeFolderURL(), Url::fileURL(real, true));
    EXPECT_EQ(File::nonSandboxedHomeFolderPath(), Url::fileURL(real, true).path());
    EXPECT_EQ(&File::nonSandboxedHomeFolderURL(), &File::nonSandboxedHomeFolderURL());
}

TEST(ReadOnlyVolumeTests, FollowsTheMountFlags) {
    EXPECT_FALSE(File::isReadOnlyVolume(FileManager::temporaryDirectory()));
    EXPECT_FALSE(File::isReadOnlyVolume(Url::fileURL("/no/such/place", false)));
    EXPECT_FALSE(File::isReadOnlyVolume(Url()));
    // Every mount point reads as its mount says (there may be no read-only one); a later mount
    // on the same point hides the earlier.
    std::map<std::string, bool> readOnly;
    FILE* mounts = ::setmntent("/proc/self/mounts", "r");
    ASSERT_NE(mounts, nullptr);
    while (const mntent* mount = ::getmntent(mounts))
        readOnly[mount->mnt_dir] = ::hasmntopt(mount, "ro") != nullptr;
    ::endmntent(mounts);
    for (const auto& [point, expected] : readOnly) {
        if (std::filesystem::is_directory(point)) {
            EXPECT_EQ(File::isReadOnlyVolume(Url::fileURL(point, true)), expected) << point;
        }
    }
}

TEST(PercentDecodingTests, DecodesEscapesAndRefusesBrokenOnes) {
    EXPECT_EQ(internal::removingPercentEncoding("Text%20Editor%c3%A9"), "Text Editor\xC3\xA9");
    EXPECT_EQ(internal::removingPercentEncoding(""), "");
    for (const char* broken : {"100%", "%4", "%zz", "%FF"})  // the last is not UTF-8
        EXPECT_EQ(internal::removingPercentEncoding(broken), std::nullopt) << broken;
}

// GIO reads the association database once per process, from the XDG folders in the
// environment at that moment. Each test below builds a private set of folders and points the
// environment at it first; ctest runs every test in its own process, so each gets its own.
class DefaultApplicationTests : public ScratchFolder {
  protected:
    void SetUp() override {
        static bool databaseRead = false;
        if (std::exchange(databaseRead, true))
            GTEST_SKIP() << "GIO already read another test's folders in this process; run the "
                            "default-application tests one per process (ctest does)";
        for (const char* name : {"data", "system-data", "config", "system-config"})
            std::filesystem::create_directory(root_ / name);
        environment.set("XDG_DATA_HOME", (root_ / "data"));
        environment.set("XDG_DATA_DIRS", (root_ / "system-data"));
        environment.set("XDG_CONFIG_HOME", (root_ / "config"));
        environment.set("XDG_CONFIG_DIRS", (root_ / "system-config"));
        environment.unset("XDG_CURRENT_DESKTOP");  // no desktop-specific association lists
        environment.set("LANGUAGE", "de");

        // Content types by file name only, so nothing depends on the system's MIME database.
        scratch_.write("data/mime/globs2",
                       "50:text/x-quoddle-note:*.note\n50:text/x-quoddle-source:*.qsrc\n"
                       "50:text/x-quoddle-orphan:*.orphan\n");
        desktopFile("org.example.Viewer.desktop", "Viewer", "Betrachter", "text/x-quoddle-note;");
        desktopFile("org.quoddle.Quillmere.desktop", "Quillmere", "",
                    "text/x-quoddle-source;text/x-quoddle-note;");
        desktopFile("web%20browser.desktop", "Browser", "", "x-scheme-handler/https;");
        document_ = url("notes/letter.note");
        scratch_.write("notes/letter.note", "Dear reader,\n");
        scratch_.write("notes/main.qsrc", "int main() {}\n");
        scratch_.write("notes/lonely.orphan", "no application\n");
    }

    void desktopFile(const std::string& name, const std::string& title,
                     const std::string& germanTitle, const std::string& types) {
        scratch_.write("data/applications/" + name,
                       "[Desktop Entry]\nType=Application\nName=" + title + "\n" +
                           (germanTitle.empty() ? "" : "Name[de]=" + germanTitle + "\n") +
                           "Exec=/bin/true %f\nMimeType=" + types + "\n");
    }

    void associations(const std::string& lines) {
        scratch_.write("config/mimeapps.list", "[Default Applications]\n" + lines);
    }

    std::string application(const std::string& name) const {
        return (root_ / "data/applications" / name).string();
    }

    Url document_;
};

TEST_F(DefaultApplicationTests, TheDesktopFileStandsForTheApplication) {
    associations("text/x-quoddle-note=org.example.Viewer.desktop\n");
    const auto app = File::defaultAppURL(document_);
    ASSERT_TRUE(app);
    EXPECT_EQ(*app, Url::fileURL(application("org.example.Viewer.desktop"), false));
    EXPECT_EQ(File::defaultAppName(document_), "org.example.Viewer.desktop");
    EXPECT_EQ(File::defaultLocalizedAppName(document_), "Betrachter");
    // A file that is not there yet is judged by its name.
    EXPECT_EQ(File::defaultAppURL(url("notes/not-yet.note")), app);

    for (const Url& nothing : {url("notes/lonely.orphan"), Url()}) {
        EXPECT_EQ(File::defaultAppURL(nothing), std::nullopt);
        EXPECT_EQ(File::defaultAppName(nothing), std::nullopt);
        EXPECT_EQ(File::defaultLocalizedAppName(nothing), std::nullopt);
    }
}

TEST_F(DefaultApplicationTests, TheEditorItselfGivesWayToTheBrowser) {
    associations(
        "text/x-quoddle-source=org.quoddle.Quillmere.desktop\n"
        "x-scheme-handler/https=web%20browser.desktop\n");
    const Url source = url("notes/main.qsrc");
    EXPECT_EQ(File::defaultAppURL(source),
              Url::fileURL(application("web%20browser.desktop"), false));
    EXPECT_EQ(File::defaultAppName(source), "web browser.desktop");
    EXPECT_EQ(File::defaultLocalizedAppName(source), "Browser");
}

TEST_F(DefaultApplicationTests, TheEditorItselfWithoutABrowserGivesNothing) {
    associations("text/x-quoddle-source=org.quoddle.Quillmere.desktop\n");
    std::filesystem::remove(application("web%20browser.desktop"));
    const Url source = url("notes/main.qsrc");
    EXPECT_EQ(File::defaultAppURL(source), std::nullopt);
    EXPECT_EQ(File::defaultAppName(source), std::nullopt);
    EXPECT_EQ(File::defaultLocalizedAppName(source), std::nullopt);
}

}  // namespace
}  // namespace quod
