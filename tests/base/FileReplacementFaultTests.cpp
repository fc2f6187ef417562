// Every system call the file writer makes is made to fail in turn, and the writer is killed
// before each of them in turn: the file must always read as before or as after, never torn,
// nobody else may read a temporary copy, and what a failure or a death leaves behind must go
// with the next replacement.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "quoddle/base/FileReplacement.h"
#include "tests/base/SystemCallFaults.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

using testing::SystemCall;
using testing::SystemCallFaults;

// How the replacement is made: renaming an unnamed file, renaming a named one (a file system
// without O_TMPFILE), or in place (the target has a second link).
enum class Way { unnamed, named, inPlace };

std::string wayName(const ::testing::TestParamInfo<Way>& info) {
    switch (info.param) {
        case Way::unnamed:
            return "RenamingAnUnnamedFile";
        case Way::named:
            return "RenamingANamedFile";
        case Way::inPlace:
            return "WritingInPlace";
    }
    return "";
}

std::string read(const std::string& path) {
    std::ostringstream contents;
    contents << std::ifstream(path).rdbuf();
    return contents.str();
}

class FileReplacementFaults : public ::testing::TestWithParam<Way> {
  protected:
    FileReplacementFaults() : target_(folder_.path("doc.txt").string()) {
        environment_.set("XDG_CACHE_HOME", cache_.path().string());
        std::string line = "an old line of the document\n";
        for (int copy = 0; copy < 8000; ++copy)
            old_ += line;
        line = "the new contents, longer than the old\n";
        while (new_.size() < 2'500'000)
            new_ += line;
        resetTarget();
        ::setxattr(target_.c_str(), "user.com.apple.TextEncoding", "utf-8", 5, 0);
        if (GetParam() == Way::inPlace) {
            ::link(target_.c_str(), folder_.path("second-link.txt").c_str());
        }
        if (GetParam() == Way::named) faults_.withoutUnnamedFiles();
    }

    // The old contents, written into the same file so that its links stay.
    void resetTarget() {
        std::ofstream(target_, std::ios::binary | std::ios::trunc) << old_;
        ::chmod(target_.c_str(), 0600);
    }
    [[nodiscard]] std::vector<std::string> targets() const {
        if (GetParam() == Way::inPlace) return {"doc.txt", "second-link.txt"};
        return {"doc.txt"};
    }

    // The whole replacement as a caller makes it, in five writes.
    bool attempt(std::error_code* error) const {
        auto file = FileReplacement::replacing(target_, error);
        if (!file) return false;
        const std::size_t piece = new_.size() / 5 + 1;
        for (std::size_t start = 0; start < new_.size(); start += piece) {
            const std::string_view chunk = std::string_view(new_).substr(start, piece);
            if (!file->write({reinterpret_cast<const std::uint8_t*>(chunk.data()), chunk.size()},
                             error)) {
                return false;
            }
        }
        return file->commit(error);
    }

    // Anything beside the target, or in the cache, must be a scratch file nobody else can read.
    void expectOnlyPrivateScratchFiles(const std::string& when) const {
        const auto check = [&](const std::filesystem::path& folder) {
            for (const auto& entry : std::filesystem::directory_iterator(folder)) {
                const std::string name = entry.path().filename().string();
                if (folder == folder_.path() && std::ranges::count(targets(), name) > 0) continue;
                if (entry.is_directory()) continue;
                struct stat status {};
                ::lstat(entry.path().c_str(), &status);
                EXPECT_TRUE(name.find(".qdl-") != std::string::npos && name.ends_with(".tmp"))
                    << when << ": " << name;
                EXPECT_EQ(status.st_mode & 077, 0u) << when << ": " << name;
            }
        };
        check(folder_.path());
        if (std::filesystem::exists(cache_.path("quoddle/interrupted-writes"))) {
            check(cache_.path("quoddle/interrupted-writes"));
        }
    }
    // After the next replacement begins, nothing but the targets is left anywhere.
    void expectNothingLeftOnceReplacedAgain(const std::string& when) const {
        { [[maybe_unused]] const auto next = FileReplacement::replacing(target_); }
        EXPECT_EQ(folder_.entries(), targets()) << when;
        std::size_t cached = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(cache_.path())) {
            cached += entry.is_regular_file() ? 1 : 0;
        }
        EXPECT_EQ(cached, 0u) << when;
    }

    const testing::TemporaryFolder folder_{"quoddle-faults"};
    const testing::TemporaryFolder cache_{"quoddle-faults-cache"};
    testing::ScopedEnvironment environment_;
    const std::string target_;
    std::string old_;
    std::string new_;
    SystemCallFaults faults_;
};

TEST_P(FileReplacementFaults, EveryFailingCallLeavesTheOldFileOrTheNewAndNothingBehind) {
    const std::vector<std::pair<SystemCall, int>> failures = {
        {SystemCall::open, EMFILE},   {SystemCall::read, EIO},         {SystemCall::write, ENOSPC},
        {SystemCall::write, EIO},     {SystemCall::pwrite, ENOSPC},    {SystemCall::pwrite, EIO},
        {SystemCall::ftruncate, EIO}, {SystemCall::fsync, EIO},        {SystemCall::fchmod, EPERM},
        {SystemCall::fchown, EPERM},  {SystemCall::fsetxattr, ENOSPC}, {SystemCall::linkat, ENOSPC},
        {SystemCall::rename, EXDEV},  {SystemCall::rename, EACCES},    {SystemCall::unlink, EIO},
        {SystemCall::close, EIO},
    };
    std::vector<SystemCall> hit;
    for (const auto& [call, error] : failures) {
        for (int position = 0;; ++position) {
            const std::string when = std::string(testing::systemCallNames[static_cast<int>(call)]) +
                                     " #" + std::to_string(position) + " failing with " +
                                     std::strerror(error);
            resetTarget();
            faults_.failAt(call, position, error);
            std::error_code reason;
            const bool replaced = attempt(&reason);
            const bool triggered = faults_.triggered();
            faults_.reset();
            if (!triggered) break;
            hit.push_back(call);
            const std::string now = read(target_);
            if (replaced) {
                EXPECT_EQ(now, new_) << when;
            } else {
                // Only flushing the folder comes after the rename; the new file may then be there.
                const bool afterRename = call == SystemCall::open || call == SystemCall::fsync ||
                                         call == SystemCall::close;
                EXPECT_TRUE(now == old_ || (afterRename && now == new_)) << when;
                EXPECT_EQ(reason.value(), error) << when << ": " << reason.message();
            }
            expectOnlyPrivateScratchFiles(when);
            expectNothingLeftOnceReplacedAgain(when);
        }
    }
    // The calls each way is made of were all reached.
    std::vector<SystemCall> expected = {SystemCall::write, SystemCall::fsync, SystemCall::close};
    if (GetParam() == Way::inPlace) {
        expected.insert(expected.end(), {SystemCall::read, SystemCall::pwrite,
                                         SystemCall::ftruncate, SystemCall::unlink});
    } else {
        expected.insert(expected.end(), {SystemCall::fchmod, SystemCall::rename});
    }
    if (GetParam() == Way::unnamed) expected.push_back(SystemCall::linkat);
    for (const SystemCall call : expected) {
        EXPECT_NE(std::ranges::count(hit, call), 0)
            << testing::systemCallNames[static_cast<int>(call)] << " never failed";
    }
}

TEST_P(FileReplacementFaults, DeathBeforeAnyCallLeavesTheOldFileOrTheNewAndNothingForLong) {
    int step = 0;
    for (;; ++step) {
        const std::string when = "death before call #" + std::to_string(step);
        resetTarget();
        const int exit = faults_.runInChildDyingAt(step, [this] { return attempt(nullptr); });
        if (exit != SystemCallFaults::diedExitCode) {
            EXPECT_EQ(exit, 0) << "the replacement that was not interrupted failed";
            EXPECT_EQ(read(target_), new_);
            break;
        }
        expectOnlyPrivateScratchFiles(when);
        // A rename is all or nothing at once; an in-place write is whole again once the next
        // replacement has restored its backup.
        if (GetParam() != Way::inPlace) {
            const std::string now = read(target_);
            EXPECT_TRUE(now == old_ || now == new_) << when;
        }
        expectNothingLeftOnceReplacedAgain(when);
        const std::string now = read(target_);
        EXPECT_TRUE(now == old_ || now == new_) << when;
    }
    EXPECT_GT(step, 10);
}

INSTANTIATE_TEST_SUITE_P(EachWay, FileReplacementFaults,
                         ::testing::Values(Way::unnamed, Way::named, Way::inPlace), wayName);

}  // namespace
}  // namespace quod
