// The text storage against a plain std::u16string baseline, at 1, 10 and 100 MB documents.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "DocumentGenerator.h"
#include "quoddle/base/Utf.h"
#include "quoddle/strings/LineFunctions.h"
#include "quoddle/text/QuodTextView.h"

namespace quod::bench {
namespace {

void documentSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMicrosecond);
}

// One insert and one delete of a single character per iteration.
void BM_EditNearCursor_TextStorage(benchmark::State& state) {
    TextStorage storage(utf16Document(state.range(0) * megabyte));
    WanderingCursor cursor(storage.length());
    // The first edit opens the gap in the middle of the document; the measurement is of typing.
    storage.replaceCharactersInRange({storage.length() / 2, 0}, u"x");
    for (auto _ : state) {
        const int64_t at = cursor.next(storage.length());
        storage.replaceCharactersInRange({at, 0}, u"x");
        storage.replaceCharactersInRange({at - 1, 1}, u"");
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_EditNearCursor_TextStorage)->Apply(documentSizes);

void BM_EditNearCursor_ViewWithUndo(benchmark::State& state) {
    QuodTextView view(utf16Document(state.range(0) * megabyte));
    WanderingCursor cursor(view.length());
    view.replaceWithUndo(u"x", {view.length() / 2, 0}, false);
    for (auto _ : state) {
        const int64_t at = cursor.next(view.length());
        view.replaceWithUndo(u"x", {at, 0}, false);
        view.replaceWithUndo(u"", {at - 1, 1}, false);
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_EditNearCursor_ViewWithUndo)->Apply(documentSizes);

void BM_EditNearCursor_NaiveString(benchmark::State& state) {
    std::u16string text = utf16Document(state.range(0) * megabyte);
    WanderingCursor cursor(std::ssize(text));
    text.insert(text.size() / 2, 1, u'x');  // pays the one reallocation before measuring
    for (auto _ : state) {
        const int64_t at = cursor.next(std::ssize(text));
        text.insert(static_cast<std::size_t>(at), 1, u'x');
        text.erase(static_cast<std::size_t>(at - 1), 1);
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_EditNearCursor_NaiveString)->Apply(documentSizes);

// A one-character edit at a random place through the view, as a user jumping around would make
// it: each iteration inserts a character at one random place and deletes one at another.
void BM_EditAtRandomPositions_ViewWithUndo(benchmark::State& state) {
    QuodTextView view(TextStorage::fromUtf8(utf8Document(state.range(0) * megabyte)));
    std::mt19937_64 random(3);
    for (auto _ : state) {
        view.replaceWithUndo(u"x", {static_cast<int64_t>(random() % view.length()), 0}, false);
        view.replaceWithUndo(u"", {static_cast<int64_t>(random() % view.length()), 1}, false);
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_EditAtRandomPositions_ViewWithUndo)->Apply(documentSizes);

// One undo step of an edit made at a random place; the history is refilled, untimed, by a
// thousand such edits whenever it runs out.
void BM_UndoAtRandomPositions_View(benchmark::State& state) {
    QuodTextView view(TextStorage::fromUtf8(utf8Document(state.range(0) * megabyte)));
    std::mt19937_64 random(4);
    for (auto _ : state) {
        if (!view.undoManager().canUndo()) {
            state.PauseTiming();
            for (int k = 0; k < 1000; ++k) {
                const auto at = static_cast<int64_t>(random() % (view.length() - 8));
                view.replaceWithUndo(k % 2 == 0 ? u"xyz" : u"", {at, k % 2 == 0 ? 0 : 3}, false);
            }
            state.ResumeTiming();
        }
        view.undo();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_UndoAtRandomPositions_View)->Apply(documentSizes);

// Edits anywhere, straight on the storage.
void BM_EditAtRandomPositions_TextStorage(benchmark::State& state) {
    TextStorage storage(utf16Document(state.range(0) * megabyte));
    std::mt19937_64 random(3);
    storage.replaceCharactersInRange({0, 0}, u"x");  // grow the gap before measuring
    for (auto _ : state) {
        storage.replaceCharactersInRange({static_cast<int64_t>(random() % storage.length()), 0},
                                         u"x");
        storage.replaceCharactersInRange({static_cast<int64_t>(random() % storage.length()), 1},
                                         u"");
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_EditAtRandomPositions_TextStorage)->Apply(documentSizes);

void BM_EditAtRandomPositions_NaiveString(benchmark::State& state) {
    std::u16string text = utf16Document(state.range(0) * megabyte);
    std::mt19937_64 random(3);
    for (auto _ : state) {
        text.insert(random() % text.size(), 1, u'x');
        text.erase(random() % text.size(), 1);
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_EditAtRandomPositions_NaiveString)->Apply(documentSizes);

// `count` places below `limit`. The line questions are asked at 4,096 places, whose paths through
// the tree stay in the caches, and at a million, whose paths do not (a user jumping about a large
// document).
std::vector<int64_t> randomPositions(int64_t limit, std::size_t count = 4096) {
    std::mt19937_64 random(5);
    std::vector<int64_t> positions(count);
    for (int64_t& position : positions)
        position = static_cast<int64_t>(random() % limit);
    return positions;
}

// After one edit in the middle, as a document being typed in is.
TextStorage editedStorage(int64_t megabytes) {
    TextStorage storage(utf16Document(megabytes * megabyte));
    storage.replaceCharactersInRange({storage.length() / 2, 0}, u"\n");
    return storage;
}

void BM_LineRangeForRange_TextStorage(benchmark::State& state) {
    const TextStorage storage = editedStorage(state.range(0));
    const auto positions = randomPositions(storage.length());
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            storage.lineRangeForRange({positions[next++ % positions.size()], 0}));
    }
}
BENCHMARK(BM_LineRangeForRange_TextStorage)->Apply(documentSizes);

void BM_LineRangeForRange_NaiveString(benchmark::State& state) {
    const std::u16string& text = utf16Document(state.range(0) * megabyte);
    const auto positions = randomPositions(std::ssize(text));
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(lineRange(text, {positions[next++ % positions.size()], 0}));
    }
}
BENCHMARK(BM_LineRangeForRange_NaiveString)->Apply(documentSizes);

void BM_LineByNumber_TextStorage(benchmark::State& state) {
    const TextStorage storage = editedStorage(state.range(0));
    const auto lines = randomPositions(storage.lineCount());
    std::size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(storage.rangeOfLine(lines[next++ % lines.size()]));
}
BENCHMARK(BM_LineByNumber_TextStorage)->Apply(documentSizes);

template <std::size_t places>
void BM_StartOfLine_TextStorage(benchmark::State& state) {
    const TextStorage storage = editedStorage(state.range(0));
    const auto lines = randomPositions(storage.lineCount(), places);
    std::size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(storage.startOfLine(lines[next++ % lines.size()]));
}
BENCHMARK_TEMPLATE(BM_StartOfLine_TextStorage, 4096)->Apply(documentSizes);
BENCHMARK_TEMPLATE(BM_StartOfLine_TextStorage, 1 << 20)->Apply(documentSizes);

template <std::size_t places>
void BM_LineOfPosition_TextStorage(benchmark::State& state) {
    const TextStorage storage = editedStorage(state.range(0));
    const auto positions = randomPositions(storage.length(), places);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(storage.lineIndexOfPosition(positions[next++ % positions.size()]));
    }
}
BENCHMARK_TEMPLATE(BM_LineOfPosition_TextStorage, 4096)->Apply(documentSizes);
BENCHMARK_TEMPLATE(BM_LineOfPosition_TextStorage, 1 << 20)->Apply(documentSizes);

// Without an index, finding line k means walking k lines from the start.
void BM_LineByNumber_NaiveString(benchmark::State& state) {
    const std::u16string& text = utf16Document(state.range(0) * megabyte);
    const auto lines = randomPositions(std::ssize(text) / 60);
    std::size_t next = 0;
    for (auto _ : state) {
        int64_t position = 0;
        for (int64_t line = lines[next++ % lines.size()]; line > 0 && position < std::ssize(text);
             --line) {
            position = lineBounds(text, {position, 0}).end;
        }
        benchmark::DoNotOptimize(position);
    }
}
BENCHMARK(BM_LineByNumber_NaiveString)->Apply(documentSizes);

void BM_NumberOfLines_View(benchmark::State& state) {
    const QuodTextView view(utf16Document(state.range(0) * megabyte));
    for (auto _ : state)
        benchmark::DoNotOptimize(view.numberOfLines());
}
BENCHMARK(BM_NumberOfLines_View)->Apply(documentSizes);

std::string documentFile(int64_t megabytes) {
    const std::string path = "/tmp/quoddle-bench-" + std::to_string(megabytes) + "mb.txt";
    std::ofstream(path, std::ios::binary) << utf8Document(megabytes * megabyte);
    return path;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    std::string bytes(static_cast<std::size_t>(file.tellg()), '\0');
    file.seekg(0);
    file.read(bytes.data(), std::ssize(bytes));
    return bytes;
}

// Mapping the file, decoding it and indexing its lines, into memory handed back to the system
// first (as in a process that has just started); reports resident memory per file byte. Only the
// load is timed, not the release of the previous document.
void BM_LoadUtf8File_TextStorage(benchmark::State& state) {
    const std::string path = documentFile(state.range(0));
    const auto fileSize = static_cast<int64_t>(utf8Document(state.range(0) * megabyte).size());
    double memoryPerByte = 0;
    for (auto _ : state) {
        malloc_trim(0);
        const int64_t before = residentBytes();
        const auto start = std::chrono::steady_clock::now();
        std::optional<TextStorage> storage = TextStorage::fromUtf8File(path);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        malloc_trim(0);
        memoryPerByte =
            static_cast<double>(residentBytes() - before) / static_cast<double>(fileSize);
        benchmark::DoNotOptimize(storage->lineCount());
    }
    state.SetBytesProcessed(state.iterations() * fileSize);
    state.counters["residentPerFileByte"] = memoryPerByte;
    std::remove(path.c_str());
}
BENCHMARK(BM_LoadUtf8File_TextStorage)
    ->Apply(documentSizes)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void BM_LoadUtf8File_NaiveString(benchmark::State& state) {
    const std::string path = documentFile(state.range(0));
    int64_t fileSize = 0;
    for (auto _ : state) {
        const std::string bytes = readFile(path);
        fileSize = std::ssize(bytes);
        benchmark::DoNotOptimize(toUtf16(bytes));
    }
    state.SetBytesProcessed(state.iterations() * fileSize);
    std::remove(path.c_str());
}
BENCHMARK(BM_LoadUtf8File_NaiveString)->Apply(documentSizes)->Unit(benchmark::kMillisecond);

// The peak resident memory of this process since the call, in bytes (the kernel's high-water
// mark, reset by writing 5 to clear_refs).
void resetPeakResident() {
    std::ofstream("/proc/self/clear_refs") << "5";
}
int64_t peakResidentBytes() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmHWM:", 0) == 0) return std::stoll(line.substr(6)) * 1024;
    }
    return 0;
}

// Load a file, select all, replace by one word, undo, redo: the history holds the replaced text
// once. Memory figures are resident bytes over the file's bytes: the peak over the four steps,
// and what stays after each.
void BM_ReplaceAllThenUndo_View(benchmark::State& state) {
    const std::string path = documentFile(state.range(0));
    const auto fileBytes = static_cast<double>(utf8Document(state.range(0) * megabyte).size());
    double peak = 0, afterReplace = 0, afterUndo = 0, afterRedo = 0;
    for (auto _ : state) {
        malloc_trim(0);
        const int64_t before = residentBytes();
        resetPeakResident();
        QuodTextView view(*TextStorage::fromUtf8File(path));
        view.replaceWithUndo(u"word", {0, view.length()}, true);
        malloc_trim(0);
        afterReplace = static_cast<double>(residentBytes() - before) / fileBytes;
        view.undo();
        malloc_trim(0);
        afterUndo = static_cast<double>(residentBytes() - before) / fileBytes;
        view.redo();
        malloc_trim(0);
        afterRedo = static_cast<double>(residentBytes() - before) / fileBytes;
        peak = static_cast<double>(peakResidentBytes() - before) / fileBytes;
    }
    state.counters["peakPerFileByte"] = peak;
    state.counters["residentAfterReplace"] = afterReplace;
    state.counters["residentAfterUndo"] = afterUndo;
    state.counters["residentAfterRedo"] = afterRedo;
    std::remove(path.c_str());
}
BENCHMARK(BM_ReplaceAllThenUndo_View)
    ->Apply(documentSizes)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quod::bench
