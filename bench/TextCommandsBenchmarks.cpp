// Selection statistics over 1, 10 and 100 MB (whole, in pieces, decoded from UTF-8 windows, and
// through ICU alone), each against `wc -m -w` on the same bytes; transforms and case changes over
// 1 MB, and commenting 100,000 lines of a 10 MB and a 100 MB document.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>

#include "DocumentGenerator.h"
#include "quoddle/base/CurrentLocale.h"
#include "quoddle/base/Utf.h"
#include "quoddle/strings/CaseMapping.h"
#include "quoddle/strings/StringTransform.h"
#include "quoddle/text/SelectionRewrites.h"
#include "quoddle/text/SelectionStatistics.h"
#include "quoddle/text/internal/SegmentCounting.h"

namespace quod::bench {
namespace {

// Best of three runs of a shell command, in seconds; 0 when it fails.
double secondsOf(const std::string& command) {
    double best = 0;
    for (int run = 0; run < 3; ++run) {
        const auto start = std::chrono::steady_clock::now();
        if (std::system(command.c_str()) != 0) return 0;
        const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        best = run == 0 ? seconds : std::min(best, seconds);
    }
    return best;
}

// `wc -m -w` on the same document as a UTF-8 file, measured once per size.
double wcSeconds(int64_t megabytes) {
    static std::map<int64_t, double> measured;
    auto [entry, inserted] = measured.try_emplace(megabytes);
    if (inserted) {
        const std::string path = "/tmp/quoddle-bench-words.txt";
        std::ofstream(path, std::ios::binary) << utf8Document(megabytes * megabyte);
        entry->second = secondsOf("LC_ALL=C.UTF-8 wc -m -w " + path + " > /dev/null");
        std::remove(path.c_str());
    }
    return entry->second;
}

// Reports units per second and the time of one iteration against `wc -m -w`'s.
void reportAgainstWc(benchmark::State& state, int64_t units, double seconds) {
    const double perIteration = seconds / static_cast<double>(state.iterations());
    const double wc = wcSeconds(state.range(0));
    state.counters["wcSeconds"] = wc;
    state.counters["ratioToWc"] = wc > 0 ? perIteration / wc : 0;
    state.SetItemsProcessed(state.iterations() * units);
}

template <typename Count>
void timeCounting(benchmark::State& state, Count&& count) {
    setCurrentLocale(icu::Locale("en_US"));
    const std::u16string& text = utf16Document(state.range(0) * megabyte);
    double seconds = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(count(text));
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    reportAgainstWc(state, std::ssize(text), seconds);
}

// The whole document as one selection; items/s are UTF-16 units per second.
void BM_SelectionCount(benchmark::State& state) {
    timeCounting(state, [](const std::u16string& text) {
        return Text::selectionCount(text, {{0, std::ssize(text)}});
    });
}
BENCHMARK(BM_SelectionCount)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

// The same through ICU's break iterators alone, as selectionCount counted before the scan.
void BM_SelectionCount_IcuOnly(benchmark::State& state) {
    timeCounting(state, [](const std::u16string& text) {
        Text::internal::SegmentCounter counter(currentLocale(),
                                               Text::internal::SegmentCounter::Path::icuOnly);
        counter.add(text, true);
        return counter.count();
    });
}
BENCHMARK(BM_SelectionCount_IcuOnly)
    ->Arg(1)
    ->Arg(10)
    ->Arg(100)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

// The incremental counter fed 2 Mi-unit pieces (a 4 MB window of UTF-16).
void BM_SelectionCounter_Pieces(benchmark::State& state) {
    timeCounting(state, [](const std::u16string& text) {
        Text::SelectionCounter counter;
        const std::u16string_view view = text;
        for (std::size_t at = 0; at < view.size(); at += 2 << 20)
            counter.add(view.substr(at, 2 << 20));
        return counter.count();
    });
}
BENCHMARK(BM_SelectionCounter_Pieces)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

// What `quod count` will do: decode the UTF-8 file's bytes 4 MB at a time and count each window.
void BM_DecodeAndCount_4MBWindows(benchmark::State& state) {
    setCurrentLocale(icu::Locale("en_US"));
    const std::string& bytes = utf8Document(state.range(0) * megabyte);
    constexpr std::size_t window = 4 << 20;
    std::u16string units(window, u'\0');
    double seconds = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        Text::SelectionCounter counter;
        for (std::size_t at = 0; at < bytes.size();) {
            std::size_t end = std::min(bytes.size(), at + window);
            // Whole sequences only: back up over continuation bytes.
            while (end < bytes.size() && (static_cast<unsigned char>(bytes[end]) & 0xC0) == 0x80)
                --end;
            const auto decoded =
                internal::decodeUtf8(std::string_view(bytes).substr(at, end - at), units.data());
            counter.add(std::u16string_view(units).substr(0, decoded.unitsWritten));
            at = end;
        }
        benchmark::DoNotOptimize(counter.count());
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    reportAgainstWc(state, std::ssize(utf16Document(state.range(0) * megabyte)), seconds);
}
BENCHMARK(BM_DecodeAndCount_4MBWindows)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

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
