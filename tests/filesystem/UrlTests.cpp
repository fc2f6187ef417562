#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "quoddle/filesystem/FileManager.h"
#include "quoddle/filesystem/Url.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

TEST(UrlTests, DirectoryFlagComesFromTheTrailingSlashOrTheDisk) {
    EXPECT_TRUE(Url::fileURL("/a/b/").hasDirectoryPath());
    EXPECT_EQ(Url::fileURL("/a/b/").path(), "/a/b");
    EXPECT_TRUE(Url::fileURL("/tmp").hasDirectoryPath());
    EXPECT_FALSE(Url::fileURL("/no/such/thing").hasDirectoryPath());
    EXPECT_FALSE(Url::fileURL("/tmp", false).hasDirectoryPath());
    EXPECT_TRUE(Url::fileURL("/").hasDirectoryPath());
    EXPECT_NE(Url::fileURL("/tmp", true), Url::fileURL("/tmp", false));
    EXPECT_TRUE(Url::fileURL("").isEmpty());
    EXPECT_EQ(Url::fileURL("relative", false).path(),
              std::filesystem::current_path().string() + "/relative");
}

TEST(UrlTests, ComponentsAreTakenOffAndPutOn) {
    const Url file = Url::fileURL("/a/b.txt", false);
    EXPECT_EQ(file.lastPathComponent(), "b.txt");
    EXPECT_EQ(file.deletingLastPathComponent(), Url::fileURL("/a", true));
    EXPECT_EQ(Url::fileURL("/a", true).deletingLastPathComponent(), Url::fileURL("/", true));
    EXPECT_EQ(Url::fileURL("/", true).deletingLastPathComponent().path(), "/");
    EXPECT_EQ(Url::fileURL("/", true).lastPathComponent(), "/");
    EXPECT_EQ(Url::fileURL("/", true).appendingPathComponent("x", false).path(), "/x");
    EXPECT_EQ(Url::fileURL("/a", true).appendingPathComponent("b/c/", true).path(), "/a/b/c");
    EXPECT_TRUE(Url::fileURL("/", true).appendingPathComponent("tmp").hasDirectoryPath());
}

TEST(UrlTests, StandardisationIsLexicalAndExpandsTheHomeFolder) {
    testing::ScopedEnvironment environment;
    EXPECT_EQ(standardizingPath("/a//b/./c/../d/"), "/a/b/d");
    EXPECT_EQ(standardizingPath("/a/b/."), "/a/b");
    EXPECT_EQ(standardizingPath("/.."), "/");
    EXPECT_EQ(standardizingPath("/."), "/");
    EXPECT_EQ(standardizingPath("a/../../b"), "../b");
    EXPECT_EQ(standardizingPath(""), "");
    environment.set("HOME", "/home/someone");
    EXPECT_EQ(standardizingPath("~/x/"), "/home/someone/x");
    EXPECT_EQ(standardizingPath("~"), "/home/someone");
    EXPECT_EQ(standardizingPath("/a/~"), "/a/~");
    EXPECT_EQ(Url::fileURL("/a//b/.", true).standardized(), Url::fileURL("/a/b", true));
}

TEST(UrlTests, AbsoluteStringPercentEncodesWhatAPathMayHoldButAUrlMayNot) {
    EXPECT_EQ(Url::fileURL("/a b/c%d", true).absoluteString(), "file:///a%20b/c%25d/");
    EXPECT_EQ(Url::fileURL("/\xc3\xa9", false).absoluteString(), "file:///%C3%A9");
    EXPECT_EQ(Url::fileURL("/", true).absoluteString(), "file:///");
}

class FileManagerTests : public ::testing::Test {
  protected:
    const testing::TemporaryFolder scratch_{"quoddle-fm"};
    const Url root_ = Url::fileURL(scratch_.path().native(), true);
};

TEST_F(FileManagerTests, ListingMarksFoldersNeverFollowsLinksAndSkipsHiddenOnRequest) {
    std::filesystem::create_directory(root_.path() + "/folder");
    std::ofstream(root_.path() + "/file") << "x";
    std::ofstream(root_.path() + "/.hidden") << "x";
    std::filesystem::create_directory_symlink(root_.path(), root_.path() + "/loop");
    std::filesystem::create_symlink(root_.path() + "/gone", root_.path() + "/dangling");

    auto all = FileManager::contentsOfDirectory(root_, DirectoryEnumerationOptions::none);
    ASSERT_TRUE(all);
    std::vector<std::pair<std::string, bool>> seen;
    for (const Url& url : *all)
        seen.emplace_back(url.lastPathComponent(), url.hasDirectoryPath());
    std::sort(seen.begin(), seen.end());
    const std::vector<std::pair<std::string, bool>> expected = {{".hidden", false},
                                                                {"dangling", false},
                                                                {"file", false},
                                                                {"folder", true},
                                                                {"loop", false}};
    EXPECT_EQ(seen, expected);

    auto visible = FileManager::contentsOfDirectory(
        root_, DirectoryEnumerationOptions::skipsSubdirectoryDescendants |
                   DirectoryEnumerationOptions::skipsHiddenFiles);
    ASSERT_TRUE(visible);
    EXPECT_EQ(visible->size(), 4u);
    EXPECT_FALSE(FileManager::contentsOfDirectory(root_.appendingPathComponent("file"),
                                                  DirectoryEnumerationOptions::none));
    EXPECT_FALSE(FileManager::fileExists(root_.appendingPathComponent("dangling")));
    EXPECT_TRUE(FileManager::fileExists(root_.appendingPathComponent("loop")));
}

TEST_F(FileManagerTests, CreatingFoldersWithAndWithoutParents) {
    const Url deep = root_.appendingPathComponent("a/b/c", true);
    EXPECT_FALSE(FileManager::createDirectory(deep, false));
    EXPECT_TRUE(FileManager::createDirectory(deep, true));
    EXPECT_TRUE(FileManager::isDirectory(deep));
    EXPECT_TRUE(FileManager::createDirectory(deep, true));  // already there
    EXPECT_FALSE(FileManager::createDirectory(deep, false));
    std::ofstream(root_.path() + "/plain") << "x";
    EXPECT_FALSE(
        FileManager::createDirectory(root_.appendingPathComponent("plain/sub", true), true));
}

}  // namespace
}  // namespace quod
