// Line operations: sort and unique from 10^4 to 10^6 lines (with GNU sort -f and uniq on the same
// lines for orientation), sort and unique of the whole generated document at 1, 10 and 100 MB
// (the keys, the sort, the rebuilt text and its undo record together), per-line operations over
// 100,000 lines of a 10 MB and a 100 MB document, and line moves in a 100 MB document.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <string>

#include "DocumentGenerator.h"
#include "quoddle/base/Utf.h"
#include "quoddle/text/LineOperations.h"

namespace quod::bench {
namespace {

// Lines of about 20 units: two or three words, some capitalised, some with numbers, with repeats,
// so that both the collation and the duplicate removal have work to do.
const std::u16string& sortableLines(int64_t count) {
    static std::map<int64_t, std::u16string> cache;
    auto [entry, inserted] = cache.try_emplace(count);
    if (!inserted) return entry->second;
    std::mt19937 random(9);
    std::string text;
    for (int64_t line = 0; line < count; ++line) {
        const int words = 2 + static_cast<int>(random() % 2);
        for (int word = 0; word < words; ++word) {
            if (word > 0) text += ' ';
            const int letters = 3 + static_cast<int>(random() % 5);
            for (int i = 0; i < letters; ++i) {
                const char letter = static_cast<char>('a' + random() % 6);
                text +=
                    (i == 0 && random() % 3 == 0) ? static_cast<char>(letter - 'a' + 'A') : letter;
            }
            if (random() % 4 == 0) text += std::to_string(random() % 200);
        }
        text += '\n';
    }
    entry->second = toUtf16(text);
    return entry->second;
}

double secondsOf(const std::string& command) {
    const auto start = std::chrono::steady_clock::now();
    if (std::system(command.c_str()) != 0) return 0;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Runs `operation` on a fresh view of `count` sortable lines each iteration; reports the GNU tool's
// time on the same lines as `gnuSeconds` and our time over theirs as `ratioToGnu`.
template <typename Operation>
void runOnLines(benchmark::State& state, Operation operation, const std::string& gnuCommand) {
    const std::u16string& lines = sortableLines(state.range(0));
    double total = 0;
    for (auto _ : state) {
        state.PauseTiming();
        QuodTextView view(lines);
        state.ResumeTiming();
        const auto start = std::chrono::steady_clock::now();
        operation(view);
        total += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        benchmark::DoNotOptimize(view.length());
    }
    const std::string path = "/tmp/quoddle-bench-lines.txt";
    std::ofstream(path, std::ios::binary) << toUtf8(lines);
    const double gnu = secondsOf(gnuCommand + " " + path + " > /dev/null");
    std::remove(path.c_str());
    state.counters["gnuSeconds"] = gnu;
    state.counters["ratioToGnu"] =
        gnu > 0 ? total / static_cast<double>(state.iterations()) / gnu : 0;
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void lineCounts(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
}

void BM_Sort(benchmark::State& state) {
    runOnLines(
        state, [](QuodTextView& view) { Text::sort(view, false); }, "sort -f");
}
BENCHMARK(BM_Sort)->Apply(lineCounts)->Iterations(3);

void BM_Unique(benchmark::State& state) {
    runOnLines(
        state, [](QuodTextView& view) { Text::unique(view); }, "uniq");
}
BENCHMARK(BM_Unique)->Apply(lineCounts)->Iterations(3);

// Sort or unique of a whole generated document of `state.range(0)` MB, as an editor's select-all
// and sort would do it; making the view is not timed.
template <typename Operation>
void runOnDocument(benchmark::State& state, Operation operation) {
    const std::u16string& text = utf16Document(state.range(0) * megabyte);
    for (auto _ : state) {
        state.PauseTiming();
        QuodTextView view(text);
        state.ResumeTiming();
        operation(view);
        benchmark::DoNotOptimize(view.length());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * megabyte);
}

void documentMegabytes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1)->Arg(10)->Arg(100)->Iterations(3)->Unit(benchmark::kMillisecond);
}

void BM_SortDocument(benchmark::State& state) {
    runOnDocument(state, [](QuodTextView& view) { Text::sort(view, false); });
}
BENCHMARK(BM_SortDocument)->Apply(documentMegabytes);

void BM_UniqueDocument(benchmark::State& state) {
    runOnDocument(state, [](QuodTextView& view) { Text::unique(view); });
}
BENCHMARK(BM_UniqueDocument)->Apply(documentMegabytes);

// The generated document with every line indented by two spaces and a trailing space, so that
// shifting left and trimming have something to remove on every line.
const std::u16string& paddedDocument(int64_t megabytes) {
    static std::map<int64_t, std::u16string> cache;
    auto [entry, inserted] = cache.try_emplace(megabytes);
    if (!inserted) return entry->second;
    const std::u16string& source = utf16Document(megabytes * megabyte);
    std::u16string& padded = entry->second;
    padded.reserve(source.size() + source.size() / 15);
    padded += u"  ";
    for (std::size_t i = 0; i < source.size(); ++i) {
        const char16_t unit = source[i];
        const bool endsLine = unit == u'\n' || unit == 0x2028 ||
                              (unit == u'\r' && (i + 1 == source.size() || source[i + 1] != u'\n'));
        if (unit == u'\r' || endsLine) {
            if (unit == u'\r' || !(i > 0 && source[i - 1] == u'\r')) padded += u' ';
        }
        padded += unit;
        if (endsLine) padded += u"  ";
    }
    return padded;
}

// 100,000 lines from the middle of the document, with the gap already moved there, so what is
// measured is the work on the selected lines.
template <typename Operation>
void runOnSelectedLines(benchmark::State& state, Operation operation) {
    for (auto _ : state) {
        state.PauseTiming();
        QuodTextView view(paddedDocument(state.range(0)));
        const int64_t firstLine = view.textStorage().lineCount() / 2;
        const int64_t start = view.textStorage().startOfLine(firstLine);
        // Opening the gap here (and growing it once) is a one-off cost of the first edit.
        view.textStorage().replaceCharactersInRange({start, 0}, u"x");
        view.textStorage().replaceCharactersInRange({start, 1}, u"");
        view.selectLines(100'000, start);
        state.ResumeTiming();
        operation(view);
    }
    state.SetItemsProcessed(state.iterations() * 100'000);
}

void documentSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(10)->Arg(100)->Iterations(3)->Unit(benchmark::kMillisecond);
}

void BM_ShiftRight_100kLines(benchmark::State& state) {
    runOnSelectedLines(state, [](QuodTextView& view) { Text::shiftRight(view, u"\t"); });
}
BENCHMARK(BM_ShiftRight_100kLines)->Apply(documentSizes);

void BM_ShiftLeft_100kLines(benchmark::State& state) {
    runOnSelectedLines(state, [](QuodTextView& view) { Text::shiftLeft(view, true); });
}
BENCHMARK(BM_ShiftLeft_100kLines)->Apply(documentSizes);

void BM_RemoveNeedlessWhitespace_100kLines(benchmark::State& state) {
    runOnSelectedLines(state, [](QuodTextView& view) { Text::removeNeedlessWhitespace(view); });
}
BENCHMARK(BM_RemoveNeedlessWhitespace_100kLines)->Apply(documentSizes);

// One move down and one move up of a line in the middle of a 100 MB document per iteration.
void BM_MoveDownThenUp_100MB(benchmark::State& state) {
    QuodTextView view(utf16Document(100 * megabyte));
    const int64_t middle = view.textStorage().startOfLine(view.textStorage().lineCount() / 2);
    view.setSelectedRange({middle, 3});
    Text::moveDown(view);  // brings the gap here
    for (auto _ : state) {
        Text::moveDown(view);
        Text::moveUp(view);
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_MoveDownThenUp_100MB)->Unit(benchmark::kMicrosecond);

void BM_DuplicateLine_100MB(benchmark::State& state) {
    QuodTextView view(utf16Document(100 * megabyte));
    const int64_t middle = view.textStorage().startOfLine(view.textStorage().lineCount() / 2);
    view.setSelectedRange({middle, 0});
    Text::duplicateLine(view);
    for (auto _ : state) {
        view.setSelectedRange({middle, 0});
        Text::duplicateLine(view);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DuplicateLine_100MB)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quod::bench
