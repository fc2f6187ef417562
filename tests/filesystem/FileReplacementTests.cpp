#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "quoddle/filesystem/FileReplacement.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

class FileReplacementTests : public ::testing::Test {
  protected:
    std::string write(const std::string& name, std::string_view contents, mode_t mode) const {
        const std::string path = folder_.write(name, contents).string();
        ::chmod(path.c_str(), mode);
        return path;
    }
    [[nodiscard]] std::string path(const std::string& name) const {
        return folder_.path(name).string();
    }
    static std::string read(const std::string& path) {
        std::ostringstream contents;
        contents << std::ifstream(path).rdbuf();
        return contents.str();
    }
    static mode_t modeOf(const std::string& path) {
        struct stat status {};
        ::stat(path.c_str(), &status);
        return status.st_mode & 07777;
    }
    // Nothing but the named files: no temporary file left behind.
    [[nodiscard]] std::size_t entries() const { return folder_.entries().size(); }

    const testing::TemporaryFolder folder_{"quoddle-replace"};
};

TEST_F(FileReplacementTests, CommitReplacesTheContentsAndKeepsThePermissions) {
    const std::string path = write("doc.txt", "old", 0640);
    auto file = FileReplacement::replacing(path);
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->write(bytesOf("new ")));
    ASSERT_TRUE(file->write(bytesOf("contents")));
    EXPECT_EQ(read(path), "old");  // nothing shows before the commit
    ASSERT_TRUE(file->commit());
    EXPECT_EQ(read(path), "new contents");
    EXPECT_EQ(modeOf(path), 0640u);
    EXPECT_EQ(entries(), 1u);
    EXPECT_FALSE(file->commit());
    EXPECT_FALSE(file->write(bytesOf("late")));
}

TEST_F(FileReplacementTests, WithoutACommitTheFileStaysAsItWas) {
    const std::string path = write("doc.txt", "old", 0644);
    {
        auto file = FileReplacement::replacing(path);
        ASSERT_TRUE(file);
        ASSERT_TRUE(file->write(bytesOf("abandoned")));
        EXPECT_EQ(entries(), 2u);
    }
    EXPECT_EQ(read(path), "old");
    EXPECT_EQ(entries(), 1u);
}

TEST_F(FileReplacementTests, ALinkStaysALinkAndANewFileIsCreated) {
    const std::string target = write("target.txt", "old", 0600);
    const std::string link = path("link.txt");
    ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
    auto file = FileReplacement::replacing(link);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->target(), std::filesystem::canonical(target).string());
    ASSERT_TRUE(file->write(bytesOf("through the link")) && file->commit());
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(read(target), "through the link");

    const std::string fresh = path("fresh.txt");
    auto created = FileReplacement::replacing(fresh);
    ASSERT_TRUE(created);
    EXPECT_FALSE(std::filesystem::exists(fresh));
    ASSERT_TRUE(created->write(bytesOf("fresh")) && created->commit());
    EXPECT_EQ(read(fresh), "fresh");
    const mode_t mask = ::umask(0);
    ::umask(mask);
    EXPECT_EQ(modeOf(fresh), 0666u & ~mask);
}

TEST_F(FileReplacementTests, RefusesWhatCannotBeReplacedBeforeMakingAnything) {
    std::error_code error;
    const std::string readOnly = write("locked.txt", "locked", 0444);
    EXPECT_FALSE(FileReplacement::replacing(readOnly, &error));
    EXPECT_EQ(error, FileReplacementError::readOnly);
    EXPECT_EQ(error.message(), "the file is read-only");
    EXPECT_FALSE(FileReplacement::replacing(folder_.path().string(), &error));
    EXPECT_EQ(error, FileReplacementError::notRegularFile);
    EXPECT_FALSE(FileReplacement::replacing(path("missing/doc.txt"), &error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_EQ(entries(), 1u);
    EXPECT_EQ(read(readOnly), "locked");
}

}  // namespace
}  // namespace quod
