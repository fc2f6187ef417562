#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "quoddle/filesystem/FileItem.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/preferences/UserDefaults.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

std::vector<std::string> names(const std::vector<FileItem>& items) {
    std::vector<std::string> result;
    for (const FileItem& item : items)
        result.push_back(item.name);
    return result;
}

class FileItemTests : public ::testing::Test {
  protected:
    void SetUp() override { UserDefaults::setStandard(UserDefaults::inMemory()); }
    // A test may lock the folder; it must be open again before it can be removed.
    void TearDown() override { ::chmod(root_.path().c_str(), 0700); }

    std::string at(const std::string& relative) const { return root_.path() + "/" + relative; }
    void folder(const std::string& relative) const {
        std::filesystem::create_directories(at(relative));
    }
    void file(const std::string& relative) const { std::ofstream(at(relative)) << "x"; }

    const testing::TemporaryFolder scratch_{"quoddle-items"};
    const Url root_ = Url::fileURL(scratch_.path().native(), true);
};

TEST_F(FileItemTests, FilesAreLeavesAndFoldersListTheirEntriesInFinderOrder) {
    file("b");
    file("a10");
    file("a2");
    folder("sub/inner");
    file("sub/inner/deep");

    const FileItem leaf(Url::fileURL(at("a2")));
    EXPECT_EQ(leaf.name, "a2");
    EXPECT_TRUE(leaf.children.empty());
    EXPECT_FALSE(leaf.isRoot);
    EXPECT_FALSE(leaf.icon);
    // The directory flag of the URL decides, not the disk.
    EXPECT_TRUE(FileItem(Url::fileURL(at("sub"), false)).children.empty());

    const FileItem tree(root_);
    EXPECT_EQ(tree.name, root_.lastPathComponent());
    EXPECT_EQ(names(tree.children), (std::vector<std::string>{"a2", "a10", "b", "sub"}));
    const FileItem& sub = tree.children[3];
    EXPECT_EQ(sub.url, Url::fileURL(at("sub"), true));
    ASSERT_EQ(names(sub.children), std::vector<std::string>{"inner"});
    EXPECT_EQ(names(sub.children[0].children), std::vector<std::string>{"deep"});
    EXPECT_FALSE(tree.children[0].url.hasDirectoryPath());
}

TEST_F(FileItemTests, AllChildrenListsDirectChildrenBeforeEachChildsDescendants) {
    folder("A");
    file("A/A1");
    folder("A/A2");
    file("A/A2/A2x");
    folder("B");
    file("B/B1");

    FileItem tree(root_);
    std::vector<std::string> order;
    for (const FileItem* item : std::as_const(tree).allChildren())
        order.push_back(item->name);
    EXPECT_EQ(order, (std::vector<std::string>{"A", "B", "A1", "A2", "A2x", "B1"}));

    // The mutable form reaches the nodes themselves, so a view can fill in icons.
    for (FileItem* item : tree.allChildren())
        item->icon = item->url.hasDirectoryPath() ? "folder" : "text-x-generic";
    EXPECT_EQ(tree.children[0].children[1].children[0].icon, "text-x-generic");
    EXPECT_EQ(tree.children[1].icon, "folder");
}

TEST_F(FileItemTests, SymbolicLinksAreLeavesSoLoopsAndDanglingLinksEnd) {
    folder("real/inside");
    std::filesystem::create_directory_symlink(root_.path(), at("real/up"));
    std::filesystem::create_directory_symlink(at("real"), at("toReal"));
    std::filesystem::create_symlink(at("gone"), at("dangling"));

    const FileItem tree(root_);
    ASSERT_EQ(names(tree.children), (std::vector<std::string>{"dangling", "real", "toReal"}));
    EXPECT_TRUE(tree.children[0].children.empty());
    EXPECT_TRUE(tree.children[2].children.empty());
    const FileItem& real = tree.children[1];
    ASSERT_EQ(names(real.children), (std::vector<std::string>{"inside", "up"}));
    EXPECT_TRUE(real.children[1].children.empty());
    EXPECT_EQ(tree.allChildren().size(), 5u);
}

TEST_F(FileItemTests, FoldersThatCannotBeListedHaveNoChildren) {
    file("plain");
    EXPECT_TRUE(FileItem(Url::fileURL(at("missing"), true)).children.empty());
    EXPECT_TRUE(FileItem(Url::fileURL(at("plain"), true)).children.empty());

    if (::geteuid() == 0) GTEST_SKIP() << "root reads folders whatever their mode";
    folder("locked");
    file("locked/secret");
    ASSERT_EQ(::chmod(at("locked").c_str(), 0), 0);
    const FileItem tree(root_);
    ASSERT_EQ(names(tree.children), (std::vector<std::string>{"locked", "plain"}));
    EXPECT_TRUE(tree.children[0].children.empty());
    ::chmod(at("locked").c_str(), 0700);
}

TEST_F(FileItemTests, AVeryDeepHierarchyIsBuiltInFull) {
    // As deep as paths allow here: every further level would be past PATH_MAX.
    constexpr int depth = 2000;
    std::string path = root_.path();
    for (int level = 0; level < depth; ++level) {
        path += "/d";
        ASSERT_EQ(::mkdir(path.c_str(), 0700), 0) << "level " << level;
    }

    const FileItem tree(root_);
    int levels = 0;
    for (const FileItem* node = &tree; !node->children.empty(); node = &node->children[0]) {
        ASSERT_EQ(node->children.size(), 1u);
        ++levels;
    }
    EXPECT_EQ(levels, depth);
    EXPECT_EQ(tree.allChildren().size(), static_cast<size_t>(depth));
}

TEST_F(FileItemTests, ACancelledOperationStopsTheBuildAtTheNextNode) {
    folder("a/b");
    Operation operation;
    operation.cancel();
    const FileItem cancelled(root_, &operation);
    EXPECT_EQ(cancelled.name, root_.lastPathComponent());
    EXPECT_TRUE(cancelled.children.empty());
    Operation running;
    EXPECT_EQ(FileItem(root_, &running).allChildren().size(), 2u);
}

// Cancelling at some moment during a build cuts the tree in the order nodes are reached: in
// depth-first order over the listing order, every folder up to some point has all its entries,
// every folder after it has none.
TEST_F(FileItemTests, CancellingFromAnotherThreadLeavesAPrefixOfTheTree) {
    for (int outer = 0; outer < 30; ++outer) {
        for (int inner = 0; inner < 5; ++inner) {
            const std::string path = "d" + std::to_string(outer) + "/e" + std::to_string(inner);
            folder(path);
            for (int leaf = 0; leaf < 8; ++leaf)
                file(path + "/f" + std::to_string(leaf));
        }
    }
    // Folders with entries, in the order a build reaches them, and how many entries each has.
    std::vector<std::pair<Url, size_t>> foldersInBuildOrder;
    const std::function<void(const Url&)> visit = [&](const Url& url) {
        const auto entries = FileManager::contentsOfDirectory(url, FileItem::enumerationOptions());
        if (!url.hasDirectoryPath() || !entries || entries->empty()) return;
        foldersInBuildOrder.emplace_back(url, entries->size());
        for (const Url& entry : *entries)
            visit(entry);
    };
    visit(root_);
    const auto started = std::chrono::steady_clock::now();
    (void)FileItem(root_);
    const auto fullTime = std::chrono::steady_clock::now() - started;

    for (const int eighths : {0, 1, 2, 4, 6, 12}) {
        Operation operation;
        std::optional<FileItem> cut;
        std::thread builder([&] { cut.emplace(root_, &operation); });
        std::this_thread::sleep_for(fullTime * eighths / 8);
        operation.cancel();
        builder.join();

        std::map<std::string, const FileItem*> nodes{{root_.path(), &*cut}};
        for (const FileItem* node : cut->allChildren())
            nodes[node->url.path()] = node;
        bool cutSeen = false;
        for (const auto& [url, entries] : foldersInBuildOrder) {
            const auto node = nodes.find(url.path());
            const size_t built = node == nodes.end() ? 0 : node->second->children.size();
            EXPECT_TRUE(built == 0 || built == entries) << url.path() << " half built";
            EXPECT_FALSE(built > 0 && cutSeen) << url.path() << " built after the cut";
            cutSeen = cutSeen || built == 0;
        }
    }
}

TEST(FileItemOptionsTests, HiddenEntriesAreSkippedUnlessThePreferenceShowsThem) {
    using enum DirectoryEnumerationOptions;
    EXPECT_EQ(internal::fileItemEnumerationOptions(true), skipsSubdirectoryDescendants);
    EXPECT_EQ(static_cast<uint32_t>(internal::fileItemEnumerationOptions(false)), 5u);
}

// Builds two trees with the preference changed in between; both must follow the first value.
bool hiddenEntriesFollowTheFirstReading(bool showsHidden) {
    UserDefaults::setStandard(UserDefaults::inMemory());
    const testing::TemporaryFolder scratch("quoddle-items");
    const std::string folder = scratch.path();
    std::ofstream(folder + "/.hidden") << "x";
    std::ofstream(folder + "/shown") << "x";
    Defaults::foldersShowsHidden.set(showsHidden);
    const FileItem first(Url::fileURL(folder, true));
    Defaults::foldersShowsHidden.set(!showsHidden);
    const FileItem second(Url::fileURL(folder, true));
    const auto expected = showsHidden ? std::vector<std::string>{".hidden", "shown"}
                                      : std::vector<std::string>{"shown"};
    return names(first.children) == expected && names(second.children) == expected;
}

// The preference is read once per process, so each value is tried in a fresh one.
TEST(FileItemOptionsTests, HiddenEntriesFollowThePreferenceAsItWasAtFirstUse) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const bool showsHidden : {false, true}) {
        EXPECT_EXIT(std::exit(hiddenEntriesFollowTheFirstReading(showsHidden) ? 0 : 1),
                    ::testing::ExitedWithCode(0), "")
            << "FoldersShowsHidden " << showsHidden;
    }
}

}  // namespace
}  // namespace quod
