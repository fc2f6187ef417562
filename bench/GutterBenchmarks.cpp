// The line-number gutter on documents of 1, 10 and 100 MB (about 17 000, 170 000 and 1.7 million
// lines of some 60 units):
//   - index upkeep after a one-character edit (a letter, or a line break) near a wandering cursor,
//     timed inside the text storage's edit notification so that only the gutter's work counts:
//     manual time per edit, the per-edit median as `median_ns`, and the full rebuild of the same
//     document, measured in the same run, as `rebuild_us`;
//   - the same upkeep for edits at random positions, where the index's pending shift travels;
//   - the full rebuild on its own;
//   - the drawing plan of one screen of 60 lines at the start, middle and end of the document.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <random>
#include <vector>

#include "DocumentGenerator.h"
#include "quoddle/gutter/LineNumberView.h"
#include "quoddle/gutter/PlainScrollView.h"
#include "quoddle/gutter/RecordingSurface.h"
#include "quoddle/runtime/RunLoop.h"

namespace quod::bench {
namespace {

using Clock = std::chrono::steady_clock;
constexpr double lineHeight = 14;
constexpr int64_t screenLines = 60;

// A gutter beside `view`, observing it (past the 0.3-second start) with its index built.
struct Gutter {
    explicit Gutter(const std::shared_ptr<QuodTextView>& view)
        : scrollView(std::make_shared<PlainScrollView>(
              view, MonospacedTextLayout::Metrics{.lineHeight = lineHeight},
              Size{800, screenLines * lineHeight})) {
        gutter.setBounds({{0, 0}, {60, screenLines * lineHeight}});
        gutter.setUpWithTextStorage(std::shared_ptr<TextStorage>(view, &view->textStorage()),
                                    scrollView, {});
        RunLoop::main().runUntil([this] { return !gutter.lineLocationArray().empty(); },
                                 std::chrono::seconds(60));
    }

    std::shared_ptr<PlainScrollView> scrollView;
    LineNumberView gutter;
};

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + std::ssize(values) / 2, values.end());
    return values[values.size() / 2];
}

double fullRebuildMicroseconds(const TextStorage& storage) {
    std::vector<double> times;
    for (int run = 0; run < 3; ++run) {
        const auto started = Clock::now();
        LineLocationArray fresh;
        benchmark::DoNotOptimize(fresh.rebuild(storage));
        times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - started).count());
    }
    return median(times);
}

enum Placement { nearCursor, anywhere };

// Arguments: megabytes, 0 for a letter or 1 for a line break. Each iteration is one edit,
// inserting and deleting in turn so that the document stays the same.
template <Placement placement>
void upkeep(benchmark::State& state) {
    auto view = std::make_shared<QuodTextView>(utf16Document(state.range(0) * megabyte));
    TextStorage& storage = view->textStorage();
    const std::u16string inserted = state.range(1) == 0 ? u"x" : u"\n";

    // Slots run in connection order: one before the gutter's and one after it.
    Clock::time_point started;
    std::vector<double> nanoseconds;
    const Connection before =
        storage.didProcessEditing.connect([&](const TextStorageEdit&) { started = Clock::now(); });
    Gutter gutter(view);
    const Connection after = storage.didProcessEditing.connect([&](const TextStorageEdit&) {
        nanoseconds.push_back(
            std::chrono::duration<double, std::nano>(Clock::now() - started).count());
    });

    WanderingCursor cursor(storage.length());
    std::mt19937_64 random(7);
    storage.replaceCharactersInRange({storage.length() / 2, 0}, u"x");  // opens the gap there
    nanoseconds.clear();
    bool insert = true;
    int64_t at = 0;
    for (auto _ : state) {
        if (insert) {
            at = placement == nearCursor
                     ? cursor.next(storage.length())
                     : static_cast<int64_t>(random() % static_cast<uint64_t>(storage.length()));
            storage.replaceCharactersInRange({at, 0}, inserted);
        } else {
            storage.replaceCharactersInRange({at, 1}, u"");
        }
        insert = !insert;
        state.SetIterationTime(nanoseconds.back() * 1e-9);
    }
    state.counters["median_ns"] = median(nanoseconds);
    state.counters["rebuild_us"] = fullRebuildMicroseconds(storage);
    state.counters["lines"] = static_cast<double>(storage.lineCount());
}

void editArguments(benchmark::internal::Benchmark* benchmark) {
    for (const int64_t megabytes : {1, 10, 100}) {
        benchmark->Args({megabytes, 0})->Args({megabytes, 1});
    }
    benchmark->ArgNames({"MB", "lineBreak"})->UseManualTime()->Unit(benchmark::kNanosecond);
}

void BM_GutterUpkeep_EditNearCursor(benchmark::State& state) {
    upkeep<nearCursor>(state);
}
BENCHMARK(BM_GutterUpkeep_EditNearCursor)->Apply(editArguments);

void BM_GutterUpkeep_EditAnywhere(benchmark::State& state) {
    upkeep<anywhere>(state);
}
// Manual time counts only the gutter, while every iteration also moves the storage's gap across
// the document: a fixed count keeps the run short.
BENCHMARK(BM_GutterUpkeep_EditAnywhere)->Apply(editArguments)->Iterations(2000);

void BM_GutterFullRebuild(benchmark::State& state) {
    const TextStorage storage(utf16Document(state.range(0) * megabyte));
    for (auto _ : state) {
        LineLocationArray fresh;
        benchmark::DoNotOptimize(fresh.rebuild(storage));
    }
    state.counters["lines"] = static_cast<double>(storage.lineCount());
}
BENCHMARK(BM_GutterFullRebuild)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

// Arguments: megabytes, and where the screen is: 0 start, 1 middle, 2 end.
void BM_GutterDrawingPlan(benchmark::State& state) {
    auto view = std::make_shared<QuodTextView>(utf16Document(state.range(0) * megabyte));
    Gutter gutter(view);
    const int64_t lines = view->textStorage().lineCount();
    const int64_t top = std::clamp<int64_t>(lines * state.range(1) / 2, 0, lines - screenLines);
    gutter.scrollView->scrollTo({0, static_cast<double>(top) * lineHeight});
    RecordingSurface surface;
    for (auto _ : state)
        gutter.gutter.updateLayer(surface);
    state.counters["numbers"] = static_cast<double>(surface.texts().size());
}
BENCHMARK(BM_GutterDrawingPlan)
    ->ArgsProduct({{1, 10, 100}, {0, 1, 2}})
    ->ArgNames({"MB", "place"})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quod::bench
