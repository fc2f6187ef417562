// The gutter's incremental line index against the full rebuild, after thousands of random edits
// that insert and delete every kind of line terminator, CR LF pairs split and joined included.
// The rebuild is itself checked against a plain scan of a copy of the text.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "GutterTestSupport.h"
#include "quoddle/strings/LineFunctions.h"

namespace quod::testing {

// Terminators of all six kinds, lone halves of a pair, and ordinary text.
const std::u16string pieces[] = {u"\n",     u"\r", u"\r\n", u"\u0085", u"\u2028",
                                 u"\u2029", u"a",  u"bc",   u"\u00e9", u"\U0001F600"};

struct Edit {
    uint32_t location;  // per mille of the current text's length
    uint32_t length;
    std::vector<int> pieceIndexes;
};

}  // namespace quod::testing

namespace rc {
template <>
struct Arbitrary<quod::testing::Edit> {
    static Gen<quod::testing::Edit> arbitrary() {
        using quod::testing::Edit;
        return gen::build<Edit>(
            // Full range from the first case on, so that edits land anywhere in the text.
            gen::set(&Edit::location, gen::resize(100, gen::inRange<uint32_t>(0, 1001))),
            gen::set(&Edit::length, gen::inRange<uint32_t>(0, 5)),
            // A few pieces at a time keep the texts short, where every edit is near an edge;
            // letters as often as terminators, so that lines have contents to type into.
            gen::set(&Edit::pieceIndexes,
                     gen::resize(4, gen::container<std::vector<int>>(
                                        gen::weightedElement<int>({{2, 0},
                                                                   {2, 1},
                                                                   {2, 2},
                                                                   {1, 3},
                                                                   {1, 4},
                                                                   {1, 5},
                                                                   {6, 6},
                                                                   {3, 7},
                                                                   {1, 8},
                                                                   {1, 9}})))));
    }
};
}  // namespace rc

namespace quod::testing {
namespace {

// Line starts by looking at every unit: a start follows each terminator, except between the CR
// and LF of a pair; an empty last line is the marker.
std::vector<int64_t> scannedLocations(const std::u16string& text) {
    const auto n = std::ssize(text);
    std::vector<int64_t> locations;
    if (n > 0) locations.push_back(0);
    for (int64_t i = 0; i + 1 < n; ++i) {
        const char16_t unit = text[static_cast<std::size_t>(i)];
        if (!isLineTerminator(unit)) continue;
        if (unit == u'\r' && text[static_cast<std::size_t>(i + 1)] == u'\n') continue;
        locations.push_back(i + 1);
    }
    if (n == 0 || isLineTerminator(text.back()))
        locations.push_back(LineLocationArray::emptyLastLine);
    return locations;
}

class IncrementalIndex : public GutterTest {
  protected:
    void start(std::u16string_view text) {
        model_ = text;
        setUpGutter(text);
        waitForObservation();
        expected_ = scannedLocations(model_);
    }

    // Applies one edit to the text and to the model; answers what disagrees, empty when nothing.
    std::string edit(Range range, const std::u16string& text) {
        gutter.setNeedsDisplay(false);
        textView->textStorage().replaceCharactersInRange(range, text);
        model_.replace(static_cast<std::size_t>(range.location),
                       static_cast<std::size_t>(range.length), text);
        const std::vector<int64_t> rebuilt = LineLocationArray::locationsByRebuilding(*storage());
        if (rebuilt != scannedLocations(model_)) return "the rebuild differs from the scan";
        if (gutter.lineLocationArray().toVector() != rebuilt) return "the index differs";
        // A redraw exactly when an entry changed.
        if (gutter.needsDisplay() != (rebuilt != expected_)) return "wrong redraw request";
        expected_ = rebuilt;
        return {};
    }

    // `location` wrapped into the text, `length` cut to its end.
    Range scaled(int64_t location, int64_t length) const {
        const auto size = std::ssize(model_);
        const int64_t start = location % (size + 1);
        return {start, std::min(length, size - start)};
    }

    std::u16string model_;
    std::vector<int64_t> expected_;
};

TEST_F(IncrementalIndex, MatchesTheRebuildAfterRandomEdits) {
    start(u"");
    const bool passed = rc::check([&] {
        // Longer runs than the default sizes give, from the first case on.
        const auto edits = *rc::gen::resize(300, rc::gen::arbitrary<std::vector<Edit>>());
        // Each case starts from the previous case's text, emptied by one edit.
        RC_ASSERT(edit({0, std::ssize(model_)}, u"").empty());
        for (const Edit& step : edits) {
            std::u16string text;
            for (const int index : step.pieceIndexes)
                text += pieces[static_cast<std::size_t>(index)];
            const int64_t location = std::ssize(model_) * step.location / 1000;
            const std::string failure = edit(scaled(location, step.length), text);
            RC_LOG() << failure;
            RC_ASSERT(failure.empty());
        }
    });
    EXPECT_TRUE(passed);
}

// A longer run on a text of a few thousand units. Edits mostly stay near the previous one, as
// typing does, and sometimes jump, so the pending shift of the later starts travels both ways.
TEST_F(IncrementalIndex, MatchesTheRebuildOverALongSeededRun) {
    std::mt19937 random(20240611);
    std::u16string initial;
    for (int i = 0; i < 600; ++i)
        initial += pieces[random() % std::size(pieces)];
    start(initial);
    int64_t cursor = std::ssize(model_) / 2;
    for (int step = 0; step < 2000; ++step) {
        cursor = random() % 8 == 0 ? static_cast<int64_t>(random())
                                   : cursor + static_cast<int64_t>(random() % 81) - 40;
        cursor = std::clamp<int64_t>(cursor, 0, std::ssize(model_));
        std::u16string text;
        for (uint32_t count = random() % 4; count > 0; --count)
            text += pieces[random() % std::size(pieces)];
        const std::string failure = edit(scaled(cursor, random() % 5), text);
        ASSERT_TRUE(failure.empty()) << failure << " at step " << step;
    }
}

}  // namespace
}  // namespace quod::testing
