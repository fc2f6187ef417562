// A scratch folder for one test: made fresh and empty on construction, removed with everything
// in it on destruction.
//
// The folder is created with mkdtemp under $TMPDIR when that names an existing folder, else
// under /tmp; its name starts with the given prefix so that a leftover says which test made it.
// On request it goes to /dev/shm instead, when that is a writable folder: tests that make tens
// of thousands of files run much faster on tmpfs. A folder that cannot be made throws, so a
// test never writes into a relative path by accident.
//
// Removal ignores errors (a destructor must not throw). A test that takes permissions away from
// a folder inside must give them back first, or what is below stays behind.
//
// Header-only and free of Quoddle's libraries, so that every test program can use it; tests
// that need a Url build it from path().
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace quod::testing {

class TemporaryFolder {
  public:
    enum class Storage { temporaryDirectory, memoryWhenWritable };

    explicit TemporaryFolder(std::string_view prefix = "quoddle-test",
                             Storage storage = Storage::temporaryDirectory) {
        std::string pattern = (base(storage) / prefix).string() + "-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr)
            throw std::system_error(errno, std::generic_category(), "mkdtemp " + pattern);
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::filesystem::path path(const std::filesystem::path& relative) const {
        return path_ / relative;
    }

    // Writes `contents` as the whole file, making the folders on the way, and answers the
    // file's path. Throws when the file cannot be written, so a test does not go on without it.
    std::filesystem::path write(const std::filesystem::path& relative,
                                std::string_view contents) const {
        const std::filesystem::path file = path_ / relative;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream stream(file, std::ios::binary);
        stream.write(contents.data(), static_cast<std::streamsize>(contents.size()));
        if (!stream) throw std::runtime_error("cannot write " + file.string());
        return file;
    }

    // The names of the entries directly inside, sorted.
    [[nodiscard]] std::vector<std::string> entries() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

  private:
    static std::filesystem::path base(Storage storage) {
        std::error_code error;
        if (storage == Storage::memoryWhenWritable &&
            std::filesystem::is_directory("/dev/shm", error) && ::access("/dev/shm", W_OK) == 0)
            return "/dev/shm";
        if (const char* variable = std::getenv("TMPDIR");
            variable && *variable == '/' && std::filesystem::is_directory(variable, error))
            return variable;
        return "/tmp";
    }

    std::filesystem::path path_;
};

}  // namespace quod::testing
