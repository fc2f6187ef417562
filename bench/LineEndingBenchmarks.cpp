// Line-ending conversion throughput over whole documents of 1, 10 and 100 MB.
#include <benchmark/benchmark.h>

#include "DocumentGenerator.h"
#include "quoddle/strings/LineEnding.h"

namespace quod::bench {
namespace {

// Bytes processed counts the document's UTF-16 units as bytes, so "MB/s" reads as document
// megabytes (the sizes are named by their UTF-8 size, which is close to their unit count).
void BM_ConvertToWindows(benchmark::State& state) {
    const std::u16string& text = utf16Document(state.range(0) * megabyte);
    for (auto _ : state)
        benchmark::DoNotOptimize(Text::convert(text, LineEnding::windows));
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
}
BENCHMARK(BM_ConvertToWindows)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

void BM_RemoveLineEndings(benchmark::State& state) {
    const std::u16string& text = utf16Document(state.range(0) * megabyte);
    for (auto _ : state)
        benchmark::DoNotOptimize(Text::removeLineEndings(text));
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
}
BENCHMARK(BM_RemoveLineEndings)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quod::bench
