// Loading and storing the user's command list through `Defaults::commands`, at 1,000 commands:
// the record conversion alone, through an in-memory store, and through a store file (where a store
// rewrites the file and a load after it checks the file and converts the list).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "quoddle/preferences/Defaults.h"
#include "quoddle/preferences/UserDefaults.h"

namespace quod::bench {
namespace {

constexpr int commandCount = 1000;

std::vector<Command> makeCommands(int count) {
    std::vector<Command> commands;
    commands.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        commands.emplace_back("Command " + std::to_string(i),
                              "grep -rn 'pattern " + std::to_string(i) + "' . | sort | uniq -c",
                              i % 2 == 0, i % 3 == 0, false);
    }
    return commands;
}

// A store file in a fresh temporary folder, removed afterwards.
class TemporaryStore {
  public:
    TemporaryStore()
        : folder_(std::filesystem::temp_directory_path() /
                  ("quoddle-bench-" + std::to_string(::getpid()))) {
        std::filesystem::create_directories(folder_);
        UserDefaults::setStandard(UserDefaults::persistent(folder_ / "bench.plist"));
    }
    ~TemporaryStore() {
        UserDefaults::setStandard(UserDefaults::inMemory());
        std::filesystem::remove_all(folder_);
    }

  private:
    std::filesystem::path folder_;
};

void BM_CommandsConvert(benchmark::State& state) {
    const auto commands = makeCommands(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        std::vector<PlistDictionary> stored = Command::array(commands);
        PlistArray array(std::make_move_iterator(stored.begin()),
                         std::make_move_iterator(stored.end()));
        benchmark::DoNotOptimize(Command::commands(array));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CommandsConvert)->Arg(commandCount)->Unit(benchmark::kMicrosecond);

void BM_CommandsStoreInMemory(benchmark::State& state) {
    UserDefaults::setStandard(UserDefaults::inMemory());
    const auto commands = makeCommands(static_cast<int>(state.range(0)));
    for (auto _ : state)
        Defaults::commands.set(commands);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CommandsStoreInMemory)->Arg(commandCount)->Unit(benchmark::kMicrosecond);

void BM_CommandsLoadInMemory(benchmark::State& state) {
    UserDefaults::setStandard(UserDefaults::inMemory());
    Defaults::commands.set(makeCommands(static_cast<int>(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(Defaults::commands.get());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CommandsLoadInMemory)->Arg(commandCount)->Unit(benchmark::kMicrosecond);

// Alternates between two lists that differ in one flag, so every store really rewrites the file
// (a store that changes nothing leaves the file alone).
void BM_CommandsStoreToFile(benchmark::State& state) {
    const TemporaryStore store;
    auto first = makeCommands(static_cast<int>(state.range(0)));
    auto second = first;
    second.back().setSuppressResult(!second.back().suppressResult());
    bool flip = false;
    for (auto _ : state) {
        Defaults::commands.set(flip ? first : second);
        flip = !flip;
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CommandsStoreToFile)->Arg(commandCount)->Unit(benchmark::kMillisecond);

// The file does not change between loads: each load checks it and converts the cached list.
void BM_CommandsLoadFromFile(benchmark::State& state) {
    const TemporaryStore store;
    Defaults::commands.set(makeCommands(static_cast<int>(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(Defaults::commands.get());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CommandsLoadFromFile)->Arg(commandCount)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quod::bench
