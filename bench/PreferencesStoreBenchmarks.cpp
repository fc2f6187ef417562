// The defaults store with 1,000 keys in a file: reading a key when the file has not changed (no
// parse, only a stat) and writing one (read-modify-write, flush and rename of the whole file).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "quoddle/preferences/UserDefaults.h"

namespace quod::bench {
namespace {

std::filesystem::path storeWithThousandKeys() {
    const auto file = std::filesystem::temp_directory_path() /
                      ("quoddle-bench-defaults-" + std::to_string(::getpid()) + ".plist");
    std::filesystem::remove(file);
    PlistDictionary domain;
    for (int key = 0; key < 1000; ++key)
        domain.emplace("Key" + std::to_string(key), int64_t{key});
    auto store = UserDefaults::persistent(file);
    for (const auto& [key, value] : domain)
        store->setObject(key, value);
    return file;
}

void BM_DefaultsReadUnchanged_1000Keys(benchmark::State& state) {
    const auto file = storeWithThousandKeys();
    auto store = UserDefaults::persistent(file);
    (void)store->integerForKey("Key1");  // the first read parses the file
    int64_t sum = 0;
    for (auto _ : state)
        sum += store->integerForKey("Key500");
    benchmark::DoNotOptimize(sum);
    std::filesystem::remove(file);
}
BENCHMARK(BM_DefaultsReadUnchanged_1000Keys)->Unit(benchmark::kMicrosecond);

void BM_DefaultsWrite_1000Keys(benchmark::State& state) {
    const auto file = storeWithThousandKeys();
    auto store = UserDefaults::persistent(file);
    int64_t value = 0;
    for (auto _ : state)
        store->setInteger("Key500", ++value);
    std::filesystem::remove(file);
}
BENCHMARK(BM_DefaultsWrite_1000Keys)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quod::bench
