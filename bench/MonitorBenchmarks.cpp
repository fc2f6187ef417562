// Delivery latency of the folder monitors: from writing one new file to the delegate's call on
// the main thread. FileSystemMonitor holds each batch for its 1.0 s latency, so 1.0 to 1.3 s is
// expected; SingleFolderMonitor reports as soon as its queue and the main loop have run.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "quoddle/filesystem/FileManager.h"
#include "quoddle/filesystem/FileSystemMonitor.h"
#include "quoddle/filesystem/SingleFolderMonitor.h"
#include "quoddle/runtime/RunLoop.h"

namespace quod::bench {
namespace {

using namespace std::chrono_literals;

class Called : public MonitorDelegate {
  public:
    void monitorDidChange(const Url&) override { called = true; }
    bool called = false;
};

class ScratchFolder {
  public:
    ScratchFolder() {
        std::string pattern = FileManager::temporaryDirectory().path() + "/quoddle-bench-XXXXXX";
        path = ::mkdtemp(pattern.data());
    }
    ~ScratchFolder() { std::filesystem::remove_all(path); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    std::string path;
};

// One iteration: one new file, timed until its report. Each iteration waits for its report, so
// every write opens a fresh batch.
template <typename Monitor, typename... Options>
void measureLatency(benchmark::State& state, Options... options) {
    ScratchFolder folder;
    Monitor monitor(Url::fileURL(folder.path, true), options...);
    auto delegate = std::make_shared<Called>();
    monitor.setDelegate(delegate);
    int file = 0;
    for (auto _ : state) {
        delegate->called = false;
        const auto start = RunLoop::Clock::now();
        std::ofstream(folder.path + "/" + std::to_string(file++)) << "x";
        if (!RunLoop::main().runUntil([&] { return delegate->called; }, 10s)) {
            state.SkipWithError("no report within 10 s");
            break;
        }
        state.SetIterationTime(
            std::chrono::duration<double>(RunLoop::Clock::now() - start).count());
    }
}

// Argument: onlyFolders (0 or 1).
void BM_FileSystemMonitorDeliveryLatency(benchmark::State& state) {
    measureLatency<FileSystemMonitor>(state, state.range(0) != 0);
}
BENCHMARK(BM_FileSystemMonitorDeliveryLatency)
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

void BM_SingleFolderMonitorDeliveryLatency(benchmark::State& state) {
    measureLatency<SingleFolderMonitor>(state);
}
BENCHMARK(BM_SingleFolderMonitorDeliveryLatency)
    ->UseManualTime()
    ->Iterations(200)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quod::bench
