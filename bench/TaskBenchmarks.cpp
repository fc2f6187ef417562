// Running tools: the cost of one Task::run, spawn to reaped, for a tool that does nothing.
#include <benchmark/benchmark.h>

#include <string>

#include "quoddle/filesystem/Task.h"

namespace quod::bench {
namespace {

// One iteration: 1,000 runs of /bin/true in a row on one thread, with the newline written to its
// input (main true). Dominated by process creation and the tool's own start-up.
void BM_TaskRunTrueThousandTimes(benchmark::State& state) {
    for (auto _ : state) {
        for (int i = 0; i < 1000; ++i) {
            std::string text =
                Task::run(TaskArguments(std::vector<std::string>{}), "/bin/true", true);
            benchmark::DoNotOptimize(text);
        }
    }
}
BENCHMARK(BM_TaskRunTrueThousandTimes)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace quod::bench
