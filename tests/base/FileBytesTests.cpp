#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <thread>

#include "quoddle/base/FileBytes.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

std::string text(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

class FileBytesTests : public ::testing::Test {
  protected:
    std::string write(const std::string& name, std::string_view contents) const {
        return folder_.write(name, contents).string();
    }

    const testing::TemporaryFolder folder_{"quoddle-bytes"};
};

TEST_F(FileBytesTests, ReadsFilesWholeAndKeepsTheBytesAcrossMoves) {
    const std::string contents("a\0b\xFF\r\n", 6);
    auto file = FileBytes::read(write("data", contents));
    ASSERT_TRUE(file);
    EXPECT_EQ(text(file->bytes()), contents);

    FileBytes moved = std::move(*file);
    EXPECT_EQ(text(moved.bytes()), contents);
    auto other = FileBytes::read(write("other", "other"));
    ASSERT_TRUE(other);
    moved = std::move(*other);
    EXPECT_EQ(text(moved.bytes()), "other");

    auto empty = FileBytes::read(write("empty", ""));
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->bytes().empty());
}

// Pages of the process's memory that are in RAM, from the kernel's own count.
long residentPages() {
    long size = 0, resident = 0;
    FILE* statm = std::fopen("/proc/self/statm", "r");
    if (statm == nullptr) return -1;
    const int read = std::fscanf(statm, "%ld %ld", &size, &resident);
    std::fclose(statm);
    return read == 2 ? resident : -1;
}

TEST_F(FileBytesTests, AFileReadInWindowsLetsReadPagesGoAndBringsThemBack) {
    std::string contents(16 << 20, '\0');
    for (std::size_t i = 0; i < contents.size(); ++i)
        contents[i] = static_cast<char>('a' + i % 23);
    const std::string path = write("large", contents);
    auto file = FileBytes::readInWindows(path);
    ASSERT_TRUE(file);
    const auto bytes = file->bytes();
    ASSERT_EQ(bytes.size(), contents.size());
    const long before = residentPages();
    unsigned sum = 0;
    for (std::size_t i = 0; i < bytes.size(); i += 4096)
        sum += bytes[i];
    const long touched = residentPages();
    file->release(0, bytes.size());
    const long released = residentPages();
    const long pages = static_cast<long>(contents.size() / 4096);
    EXPECT_GT(touched - before, pages * 3 / 4);
    EXPECT_GT(touched - released, pages * 3 / 4);
    // Read again, the bytes are the file's, at every offset, a released window's edges included.
    EXPECT_EQ(text(bytes), contents);
    EXPECT_NE(sum, 0u);

    // Bytes that were read into memory rather than mapped stay, whatever is released.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    auto piped = FileBytes::readDescriptor(descriptor);
    ::close(descriptor);
    ASSERT_TRUE(piped);
    piped->release(0, piped->bytes().size());
    EXPECT_EQ(text(piped->bytes()), contents);
}

TEST_F(FileBytesTests, ReadsWhatAPipeDelivers) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    // More than one read's worth, so the loop has to go round.
    const std::string contents(200'000, 'p');
    std::thread writer([&] {
        std::size_t done = 0;
        while (done < contents.size()) {
            const ssize_t count = ::write(ends[1], contents.data() + done, contents.size() - done);
            if (count <= 0) break;
            done += static_cast<std::size_t>(count);
        }
        ::close(ends[1]);
    });
    auto bytes = FileBytes::readDescriptor(ends[0]);
    writer.join();
    ::close(ends[0]);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(text(bytes->bytes()), contents);
}

TEST_F(FileBytesTests, FailsQuietlyWithTheSystemsReason) {
    std::error_code error;
    EXPECT_FALSE(FileBytes::read(folder_.path("missing").string(), &error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_FALSE(FileBytes::read(folder_.path().string(), &error));
    EXPECT_EQ(error, std::errc::is_a_directory);
    EXPECT_FALSE(FileBytes::read(folder_.path("missing").string()));
}

}  // namespace
}  // namespace quod
