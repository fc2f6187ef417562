#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "quoddle/base/FileReplacement.h"
#include "tests/base/SystemCallFaults.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string read(const std::string& path) {
    std::ostringstream contents;
    contents << std::ifstream(path).rdbuf();
    return contents.str();
}

struct stat statusOf(const std::string& path) {
    struct stat status {};
    ::lstat(path.c_str(), &status);
    return status;
}

mode_t modeOf(const std::string& path) {
    return statusOf(path).st_mode & 07777;
}

bool replace(const std::string& path, std::string_view contents) {
    auto file = FileReplacement::replacing(path);
    return file && file->write(bytesOf(contents)) && file->commit();
}

// An access ACL as the kernel stores it: owner rw, user 4242 r, owning group r, mask r, others
// nothing.
std::string readOnlyForUser4242() {
    std::string acl;
    const auto put = [&acl](const auto& value) {
        acl.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    put(uint32_t{2});
    const struct {
        uint16_t tag, permissions;
        uint32_t id;
    } entries[] = {{0x01, 6, ~0u}, {0x02, 4, 4242}, {0x04, 4, ~0u}, {0x10, 4, ~0u}, {0x20, 0, ~0u}};
    for (const auto& entry : entries) {
        put(entry.tag);
        put(entry.permissions);
        put(entry.id);
    }
    return acl;
}

std::optional<std::string> attribute(const std::string& path, const char* name) {
    char value[256];
    const ssize_t size = ::getxattr(path.c_str(), name, value, sizeof value);
    if (size < 0) return std::nullopt;
    return std::string(value, static_cast<std::size_t>(size));
}

class FileReplacementTests : public ::testing::Test {
  protected:
    FileReplacementTests() { environment_.set("XDG_CACHE_HOME", cache_.path().string()); }

    std::string write(const std::string& name, std::string_view contents, mode_t mode) const {
        const std::string path = folder_.write(name, contents).string();
        ::chmod(path.c_str(), mode);
        return path;
    }
    [[nodiscard]] std::string path(const std::string& name) const {
        return folder_.path(name).string();
    }
    [[nodiscard]] std::vector<std::string> entries() const { return folder_.entries(); }
    // Files the writer keeps in the user's cache (backups of in-place writes).
    [[nodiscard]] std::size_t cachedFiles() const {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(cache_.path())) {
            count += entry.is_regular_file() ? 1 : 0;
        }
        return count;
    }

    const testing::TemporaryFolder folder_{"quoddle-replace"};
    const testing::TemporaryFolder cache_{"quoddle-replace-cache"};
    testing::ScopedEnvironment environment_;
};

TEST_F(FileReplacementTests, CommitReplacesTheContentsAndKeepsThePermissions) {
    const std::string path = write("doc.txt", "old", 0640);
    const ino_t before = statusOf(path).st_ino;
    auto file = FileReplacement::replacing(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->method(), FileReplacement::Method::rename);
    ASSERT_TRUE(file->write(bytesOf("new ")));
    ASSERT_TRUE(file->write(bytesOf("contents")));
    EXPECT_EQ(read(path), "old");                               // nothing shows before the commit
    EXPECT_EQ(entries(), std::vector<std::string>{"doc.txt"});  // not even a name
    ASSERT_TRUE(file->commit());
    EXPECT_EQ(read(path), "new contents");
    EXPECT_EQ(modeOf(path), 0640u);
    EXPECT_NE(statusOf(path).st_ino, before);
    EXPECT_EQ(entries(), std::vector<std::string>{"doc.txt"});
    EXPECT_FALSE(file->commit());
    EXPECT_FALSE(file->write(bytesOf("late")));
}

TEST_F(FileReplacementTests, WithoutACommitNothingRemains) {
    const std::string path = write("doc.txt", "old", 0644);
    for (const bool unnamed : {true, false}) {
        testing::SystemCallFaults faults;
        if (!unnamed) faults.withoutUnnamedFiles();
        {
            auto file = FileReplacement::replacing(path);
            ASSERT_TRUE(file);
            ASSERT_TRUE(file->write(bytesOf("abandoned")));
            EXPECT_EQ(entries().size(), unnamed ? 1u : 2u);
        }
        EXPECT_EQ(read(path), "old");
        EXPECT_EQ(entries(), std::vector<std::string>{"doc.txt"});
    }
}

TEST_F(FileReplacementTests, ANamedTemporaryFileIsPrivateFromItsFirstInstant) {
    const std::string path = write("doc.txt", "shared", 0644);
    testing::SystemCallFaults faults;
    faults.withoutUnnamedFiles();
    const mode_t mask = ::umask(0);  // the widest umask: only the writer's own mode counts
    auto file = FileReplacement::replacing(path);
    ::umask(mask);
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->write(bytesOf("secret until committed")));
    for (const std::string& name : entries()) {
        if (name == "doc.txt") continue;
        EXPECT_TRUE(name.starts_with(".doc.txt.qdl-") && name.ends_with(".tmp")) << name;
        EXPECT_EQ(modeOf(this->path(name)), 0600u) << name;
    }
    ASSERT_TRUE(file->commit());
    EXPECT_EQ(modeOf(path), 0644u);
    EXPECT_EQ(entries(), std::vector<std::string>{"doc.txt"});
}

TEST_F(FileReplacementTests, ALinkStaysALinkAndNewFilesGetTheirPermissions) {
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

    const std::string store = path("store.plist");
    auto privateFile =
        FileReplacement::replacing(store, FileReplacement::NewFilePermissions::ownerOnly);
    ASSERT_TRUE(privateFile && privateFile->commit());
    EXPECT_EQ(modeOf(store), 0600u);

    // A file put where a dangling link is would end the link.
    const std::string dangling = path("dangling.txt");
    ASSERT_EQ(::symlink(path("nowhere.txt").c_str(), dangling.c_str()), 0);
    std::error_code error;
    EXPECT_FALSE(FileReplacement::replacing(dangling, &error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_TRUE(std::filesystem::is_symlink(dangling));
}

TEST_F(FileReplacementTests, RefusesWhatCannotBeReplacedBeforeMakingAnything) {
    std::error_code error;
    const std::string readOnly = write("locked.txt", "locked", 0444);
    EXPECT_FALSE(FileReplacement::replacing(readOnly, &error));
    EXPECT_EQ(error, FileReplacementError::readOnly);
    EXPECT_EQ(error.message(), "the file is read-only");
    EXPECT_FALSE(FileReplacement::replacing(folder_.path().string(), &error));
    EXPECT_EQ(error, FileReplacementError::notRegularFile);
    const std::string fifo = path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_FALSE(FileReplacement::replacing(fifo, &error));
    EXPECT_EQ(error, FileReplacementError::notRegularFile);
    EXPECT_FALSE(FileReplacement::replacing("/dev/null", &error));
    EXPECT_EQ(error, FileReplacementError::notRegularFile);
    EXPECT_FALSE(FileReplacement::replacing(path("missing/doc.txt"), &error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_EQ(entries(), (std::vector<std::string>{"fifo", "locked.txt"}));
    EXPECT_EQ(read(readOnly), "locked");
}

TEST_F(FileReplacementTests, AttributesAndTheAccessListTravelWithTheContents) {
    const std::string path = write("doc.txt", "old", 0640);
    const std::string acl = readOnlyForUser4242();
    if (::setxattr(path.c_str(), "user.com.apple.TextEncoding", "utf-8;134217984", 15, 0) != 0 ||
        ::setxattr(path.c_str(), "system.posix_acl_access", acl.data(), acl.size(), 0) != 0) {
        GTEST_SKIP() << "no user attributes or ACLs here: " << std::strerror(errno);
    }
    ASSERT_TRUE(replace(path, "new"));
    EXPECT_EQ(read(path), "new");
    EXPECT_EQ(attribute(path, "user.com.apple.TextEncoding"), "utf-8;134217984");
    EXPECT_EQ(attribute(path, "system.posix_acl_access"), acl);
    EXPECT_EQ(modeOf(path), 0640u);  // the group bits are the ACL's mask

    // An attribute that cannot be copied fails the commit and keeps the file as it was.
    testing::SystemCallFaults faults;
    faults.failAt(testing::SystemCall::fsetxattr, 0, ENOSPC);
    std::error_code error;
    auto file = FileReplacement::replacing(path, &error);
    ASSERT_TRUE(file && file->write(bytesOf("newer")));
    EXPECT_FALSE(file->commit(&error));
    EXPECT_EQ(error, std::errc::no_space_on_device);
    EXPECT_EQ(read(path), "new");
}

TEST_F(FileReplacementTests, AFileWithSeveralLinksIsWrittenInPlace) {
    const std::string path = write("doc.txt", std::string(100000, 'o'), 0600);
    const std::string other = this->path("other-name.txt");
    ASSERT_EQ(::link(path.c_str(), other.c_str()), 0);
    const ino_t inode = statusOf(path).st_ino;
    auto file = FileReplacement::replacing(other);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->method(), FileReplacement::Method::inPlace);
    ASSERT_TRUE(file->write(bytesOf("short now")));
    EXPECT_EQ(read(path).size(), 100000u);  // the new contents wait in the cache
    ASSERT_TRUE(file->commit());
    EXPECT_EQ(read(path), "short now");
    EXPECT_EQ(read(other), "short now");
    EXPECT_EQ(statusOf(path).st_ino, inode);
    EXPECT_EQ(statusOf(path).st_nlink, 2u);
    EXPECT_EQ(entries(), (std::vector<std::string>{"doc.txt", "other-name.txt"}));
    EXPECT_EQ(cachedFiles(), 0u);
    EXPECT_EQ(modeOf(cache_.path("quoddle/interrupted-writes")), 0700u);
}

TEST_F(FileReplacementTests, OnlyStaleTemporaryFilesOfOurOwnAreSweptAway) {
    const std::string path = write("doc.txt", "old", 0644);
    // A writer that has died: its process id is reaped and free.
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    ::waitpid(child, nullptr, 0);
    const auto scratch = [&](pid_t pid, char digit) {
        return ".doc.txt.qdl-" + std::to_string(pid) + "-" + std::string(16, digit) + ".tmp";
    };
    const std::string dead = write(scratch(child, 'a'), "dead writer", 0600);
    const std::string live = write(scratch(1, 'b'), "live writer, just begun", 0600);
    const std::string old = write(scratch(1, 'c'), "live process, long gone writer", 0600);
    const timespec longAgo[2] = {{std::time(nullptr) - 120, 0}, {std::time(nullptr) - 120, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, old.c_str(), longAgo, 0), 0);
    const std::string locked = write(scratch(child, 'd'), "locked by its writer", 0600);
    const FileDescriptor holder(::open(locked.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(holder.get(), LOCK_EX), 0);
    const std::string foreign = write(scratch(child, 'e'), "another user's", 0600);
    ASSERT_EQ(::chown(foreign.c_str(), 4242, 4242), ::geteuid() == 0 ? 0 : -1);
    const std::string unlike = write(".doc.txt.tmp", "not ours", 0600);

    ASSERT_TRUE(replace(path, "new"));
    EXPECT_FALSE(std::filesystem::exists(dead));
    EXPECT_FALSE(std::filesystem::exists(old));
    EXPECT_TRUE(std::filesystem::exists(live));
    EXPECT_TRUE(std::filesystem::exists(locked));
    EXPECT_EQ(std::filesystem::exists(foreign), ::geteuid() == 0);
    EXPECT_TRUE(std::filesystem::exists(unlike));
}

TEST_F(FileReplacementTests, TheSignalCleanupRemovesTheTemporaryFileAndStillDies) {
    const std::string path = write("doc.txt", "old", 0600);
    const pid_t child = ::fork();
    if (child == 0) {
        testing::SystemCallFaults faults;
        faults.withoutUnnamedFiles();
        FileReplacement::installSignalCleanup();
        auto file = FileReplacement::replacing(path);
        if (!file || !file->write(bytesOf("interrupted")) || entries().size() != 2) ::_exit(1);
        ::raise(SIGTERM);
        ::_exit(2);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "exit status " << WEXITSTATUS(status);
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
    EXPECT_EQ(read(path), "old");
    EXPECT_EQ(entries(), std::vector<std::string>{"doc.txt"});
}

TEST_F(FileReplacementTests, TheSignalCleanupLeavesTheHostsHandlersAlone) {
    const pid_t child = ::fork();
    if (child == 0) {
        struct sigaction host {};
        host.sa_handler = [](int) {};
        sigemptyset(&host.sa_mask);
        ::sigaction(SIGHUP, &host, nullptr);
        ::signal(SIGINT, SIG_IGN);
        FileReplacement::installSignalCleanup();
        struct sigaction hup {};
        struct sigaction interrupt {};
        struct sigaction terminate {};
        ::sigaction(SIGHUP, nullptr, &hup);
        ::sigaction(SIGINT, nullptr, &interrupt);
        ::sigaction(SIGTERM, nullptr, &terminate);
        const bool kept = hup.sa_handler == host.sa_handler && interrupt.sa_handler == SIG_IGN &&
                          terminate.sa_handler != SIG_DFL;
        ::_exit(kept ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

// Replacing as another user (nobody), where a rename would change the file's owner or needs a
// folder that user cannot write: only root can set this up.
class FileReplacementAsAnotherUser : public FileReplacementTests {
  protected:
    static constexpr uid_t nobody = 65534;

    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "needs root to act as another user";
        ::chmod(folder_.path().c_str(), 0755);
        ::chmod(cache_.path().c_str(), 0777);
    }
    // Runs the replacement as nobody: 0 in place, 1 by rename, 2 refused, 3 failed.
    int replaceAsNobody(const std::string& path, std::string_view contents) {
        const pid_t child = ::fork();
        if (child == 0) {
            if (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0) {
                ::_exit(4);
            }
            auto file = FileReplacement::replacing(path);
            if (!file) ::_exit(2);
            const bool done = file->write(bytesOf(contents)) && file->commit();
            ::_exit(!done ? 3 : file->method() == FileReplacement::Method::inPlace ? 0 : 1);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

TEST_F(FileReplacementAsAnotherUser, KeepsOwnerAndGroupByWritingInPlace) {
    // Another user's file that nobody may write, in a folder nobody may write too.
    const std::string shared = write("shared.txt", "root's", 0666);
    ASSERT_EQ(::chmod(folder_.path().c_str(), 0777), 0);
    EXPECT_EQ(replaceAsNobody(shared, "written by nobody"), 0);
    EXPECT_EQ(read(shared), "written by nobody");
    EXPECT_EQ(statusOf(shared).st_uid, 0u);

    // nobody's own file in a folder nobody cannot write.
    ASSERT_EQ(::chmod(folder_.path().c_str(), 0755), 0);
    const std::string own = write("own.txt", "nobody's", 0600);
    ASSERT_EQ(::chown(own.c_str(), nobody, nobody), 0);
    EXPECT_EQ(replaceAsNobody(own, "still nobody's"), 0);
    EXPECT_EQ(read(own), "still nobody's");

    // nobody's file with a group nobody is not in: a renamed copy would hand it to nobody's group.
    ASSERT_EQ(::chmod(folder_.path().c_str(), 0777), 0);
    const std::string grouped = write("grouped.txt", "for group 4242", 0640);
    ASSERT_EQ(::chown(grouped.c_str(), nobody, 4242), 0);
    EXPECT_EQ(replaceAsNobody(grouped, "still for 4242"), 0);
    EXPECT_EQ(statusOf(grouped).st_gid, 4242u);
    EXPECT_EQ(modeOf(grouped), 0640u);

    // And the plain case still renames.
    const std::string plain = write("plain.txt", "nobody's", 0600);
    ASSERT_EQ(::chown(plain.c_str(), nobody, nobody), 0);
    EXPECT_EQ(replaceAsNobody(plain, "renamed"), 1);
    EXPECT_EQ(read(plain), "renamed");
    EXPECT_EQ(entries(),
              (std::vector<std::string>{"grouped.txt", "own.txt", "plain.txt", "shared.txt"}));
}

}  // namespace
}  // namespace quod
