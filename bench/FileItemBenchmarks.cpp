// Building a FileItem tree over a generated folder hierarchy, warm cache: one directory read per
// folder plus a localized sort of each listing. Trees of 10,000, 100,000 and 300,000 files (100,
// 1,000 and 3,000 folders of 100 empty files "file 1.txt" ... "file 100.txt", so the sort has
// numbers to compare) are made once per run in the temporary folder and removed at exit.
//
// With QUODDLE_FILE_TREE=<folder> one more benchmark builds the tree of that folder, so
// bench/compare-file-tree.sh can time `find` over the very same tree.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "quoddle/filesystem/FileItem.h"
#include "quoddle/preferences/UserDefaults.h"

namespace quod::bench {
namespace {

constexpr int64_t filesPerFolder = 100;

class GeneratedTrees {
  public:
    ~GeneratedTrees() {
        for (const auto& [files, folder] : trees_)
            std::filesystem::remove_all(folder);
    }

    const std::string& withFiles(int64_t files) {
        auto& folder = trees_[files];
        if (!folder.empty()) return folder;
        folder =
            (std::filesystem::temp_directory_path() /
             ("quoddle-bench-tree-" + std::to_string(::getpid()) + "-" + std::to_string(files)))
                .string();
        for (int64_t index = 0; index < files / filesPerFolder; ++index) {
            const std::string subfolder = folder + "/folder " + std::to_string(index + 1);
            std::filesystem::create_directories(subfolder);
            for (int64_t file = 1; file <= filesPerFolder; ++file)
                std::ofstream(subfolder + "/file " + std::to_string(file) + ".txt");
        }
        return folder;
    }

  private:
    std::map<int64_t, std::string> trees_;
};

GeneratedTrees& trees() {
    static GeneratedTrees generated;
    return generated;
}

void buildTrees(benchmark::State& state, const std::string& folder) {
    // The hidden-files preference is read on the first build: keep it off the user's own file.
    UserDefaults::setStandard(UserDefaults::inMemory());
    const Url root = Url::fileURL(folder, true);
    const size_t nodes = FileItem(root).allChildren().size();  // warms the cache
    for (auto _ : state) {
        const FileItem tree(root);
        benchmark::DoNotOptimize(tree.children.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(nodes));
    state.counters["nodes"] = static_cast<double>(nodes);
}

void BM_FileItemBuild(benchmark::State& state) {
    buildTrees(state, trees().withFiles(state.range(0)));
}
BENCHMARK(BM_FileItemBuild)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Arg(300'000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

const bool givenTreeRegistered = [] {
    const char* folder = std::getenv("QUODDLE_FILE_TREE");
    if (folder == nullptr || *folder == '\0') return false;
    benchmark::RegisterBenchmark(
        "BM_FileItemBuildGivenTree",
        [folder = std::string(folder)](benchmark::State& state) { buildTrees(state, folder); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    return true;
}();

}  // namespace
}  // namespace quod::bench
