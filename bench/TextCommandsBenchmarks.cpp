// Selection statistics over 10 MB (with `wc -w -m` on the same bytes for orientation), transforms
// and case changes over 1 MB, and commenting 100,000 lines of a 10 MB and a 100 MB document.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <fstream>

#include "DocumentGenerator.h"
#include "quoddle/base/CurrentLocale.h"
#include "quoddle/strings/CaseMapping.h"
#include "quoddle/strings/StringTransform.h"
#include "quoddle/text/SelectionRewrites.h"
#include "quoddle/text/SelectionStatistics.h"

namespace quod::bench {
namespace {

double secondsOf(const std::string& command) {
    const auto start = std::chrono::steady_clock::now();
    if (std::system(command.c_str()) != 0) return 0;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void BM_SelectionCount_10MB(benchmark::State& state) {
    setCurrentLocale(icu::Locale("en_US"));
    const std::u16string& text = utf16Document(10 * megabyte);
    double ours = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(Text::selectionCount(text, {{0, std::ssize(text)}}));
        ours += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    const std::string path = "/tmp/quoddle-bench-words.txt";
    std::ofstream(path, std::ios::binary) << utf8Document(10 * megabyte);
    const double wc = secondsOf("LC_ALL=C.UTF-8 wc -w -m " + path + " > /dev/null");
    std::remove(path.c_str());
    state.counters["wcSeconds"] = wc;
    state.counters["ratioToWc"] = wc > 0 ? ours / static_cast<double>(state.iterations()) / wc : 0;
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
}
BENCHMARK(BM_SelectionCount_10MB)->Unit(benchmark::kMillisecond);

void BM_TransformToLatin_1MB(benchmark::State& state) {
    const std::u16string& text = utf16Document(1 * megabyte);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            StringTransform::transformed(StringTransform::Kind::toLatin, text));
    }
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
}
BENCHMARK(BM_TransformToLatin_1MB)->Unit(benchmark::kMillisecond);

void BM_Uppercase_1MB(benchmark::State& state) {
    const std::u16string& text = utf16Document(1 * megabyte);
    const icu::Locale locale("en_US");
    for (auto _ : state)
        benchmark::DoNotOptimize(localizedUppercase(text, locale));
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
}
BENCHMARK(BM_Uppercase_1MB)->Unit(benchmark::kMillisecond);

// 100,000 lines from the middle, the gap already there: the cost should follow the lines.
void BM_CommentOrUncomment_100kLines(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        QuodTextView view(utf16Document(state.range(0) * megabyte));
        const int64_t start = view.textStorage().startOfLine(view.textStorage().lineCount() / 2);
        view.textStorage().replaceCharactersInRange({start, 0}, u"x");
        view.textStorage().replaceCharactersInRange({start, 1}, u"");
        view.selectLines(100'000, start);
        state.ResumeTiming();
        Text::commentOrUncomment(view, u"//");
    }
    state.SetItemsProcessed(state.iterations() * 100'000);
}
BENCHMARK(BM_CommentOrUncomment_100kLines)
    ->Arg(10)
    ->Arg(100)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quod::bench
