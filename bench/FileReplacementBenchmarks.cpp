// Saving a file through FileReplacement, at 4 KiB, 1 MiB and 64 MiB: by rename (an ordinary
// file), in place (a file with a second hard link: backup, overwrite, flush), and the bare
// minimum a safe save needs (write a temporary file, fsync, rename: no sweep, no attributes, no
// folder flush) as the baseline. And the cost of the sweep for stale temporary files in folders
// of 100, 10,000 and 100,000 entries, saving 4 KiB.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "quoddle/base/FileReplacement.h"

namespace quod::bench {
namespace {

namespace fs = std::filesystem;

// A scratch folder under the temporary folder (a disk, not tmpfs, on most machines).
class BenchFolder {
  public:
    BenchFolder()
        : path_(fs::temp_directory_path() / ("quoddle-bench-save-" + std::to_string(::getpid()))) {
        fs::remove_all(path_);
        fs::create_directories(path_);
    }
    ~BenchFolder() { fs::remove_all(path_); }
    [[nodiscard]] const fs::path& path() const { return path_; }

  private:
    fs::path path_;
};

std::string contents(int64_t size) {
    return std::string(static_cast<std::size_t>(size), 'x');
}

std::span<const std::uint8_t> bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

void save(const std::string& path, const std::string& bytes, benchmark::State& state) {
    auto file = FileReplacement::replacing(path);
    if (!file || !file->write(bytesOf(bytes)) || !file->commit()) state.SkipWithError("save");
}

void BM_SaveByRename(benchmark::State& state) {
    const BenchFolder folder;
    const std::string path = (folder.path() / "doc.txt").string();
    const std::string bytes = contents(state.range(0));
    std::ofstream(path) << bytes;
    for (auto _ : state)
        save(path, bytes, state);
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SaveByRename)
    ->Arg(4 << 10)
    ->Arg(1 << 20)
    ->Arg(64 << 20)
    ->Unit(benchmark::kMillisecond);

void BM_SaveInPlace(benchmark::State& state) {
    const BenchFolder folder;
    const std::string path = (folder.path() / "doc.txt").string();
    const std::string bytes = contents(state.range(0));
    std::ofstream(path) << bytes;
    fs::create_hard_link(path, folder.path() / "second-link.txt");
    for (auto _ : state)
        save(path, bytes, state);
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SaveInPlace)->Arg(4 << 10)->Arg(1 << 20)->Arg(64 << 20)->Unit(benchmark::kMillisecond);

void BM_SaveBareMinimum(benchmark::State& state) {
    const BenchFolder folder;
    const std::string path = (folder.path() / "doc.txt").string();
    const std::string temporary = path + ".tmp";
    const std::string bytes = contents(state.range(0));
    for (auto _ : state) {
        const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        const bool saved =
            ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
            ::fsync(file) == 0 && ::close(file) == 0 &&
            ::rename(temporary.c_str(), path.c_str()) == 0;
        if (!saved) state.SkipWithError("save");
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SaveBareMinimum)
    ->Arg(4 << 10)
    ->Arg(1 << 20)
    ->Arg(64 << 20)
    ->Unit(benchmark::kMillisecond);

void BM_SaveInCrowdedFolder(benchmark::State& state) {
    const BenchFolder folder;
    for (int64_t entry = 0; entry < state.range(0); ++entry) {
        std::ofstream(folder.path() / ("neighbour-" + std::to_string(entry)));
    }
    const std::string path = (folder.path() / "doc.txt").string();
    const std::string bytes = contents(4 << 10);
    for (auto _ : state)
        save(path, bytes, state);
}
BENCHMARK(BM_SaveInCrowdedFolder)->Arg(100)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quod::bench
