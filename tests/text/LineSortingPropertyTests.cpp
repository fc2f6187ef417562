// Sort and unique against the plain way of doing them: copy the selected lines out as strings,
// order them with localizedStandardCompare and std::stable_sort, or keep the first line of each
// group with equal NFC forms, and put them back joined by LF. Random lines mix ASCII with digit
// runs, case, composed and decomposed accents, punctuation, other scripts and every line
// terminator; storages with tiny chunks make lines cross piece borders, and a large text takes
// the two-thread path. Unique over UTF-8 pieces is held to unique on the view.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/base/Utf.h"
#include "quoddle/strings/LineFunctions.h"
#include "quoddle/strings/LocalizedCompare.h"
#include "quoddle/strings/Normalization.h"
#include "quoddle/text/LineOperations.h"
#include "quoddle/text/UniqueLinesStream.h"

namespace quod {
namespace {

// Pieces of lines: they meet in every combination, so digit runs grow, accents land on any
// letter and case differs at any position.
const std::u16string linePieces[] = {
    u"a",      u"A",      u"b",  u"B",       u"e",      u"E",      u"z",      u"0",
    u"1",      u"01",     u"9",  u"10",      u" ",      u"-",      u".",      u"_",
    u"\t",     u"\u00E9", u"É",  u"e\u0301", u"\u00DF", u"ss",     u"\u0301", u"\u00A0",
    u"\u03B1", u"Ж",      u"日", u"한",      u"😀",      u"\u0663", u"\uFF11", u"\u0001"};
const std::u16string terminators[] = {u"\n", u"\r\n", u"\r", u"\u2028", u"\u0085"};

std::u16string randomText(std::mt19937& random, int lines, int longestLine) {
    std::u16string text;
    for (int line = 0; line < lines; ++line) {
        if (line > 0 && random() % 5 == 0) {  // a repeat of an earlier line, as real files have
            const std::size_t back = text.rfind(u'\n', text.size() - 2);
            std::u16string repeat = text.substr(back == std::u16string::npos ? 0 : back + 1);
            // Now and then spelled with the accents decomposed: the same line to unique.
            if (random() % 2 == 0) {
                for (std::size_t at = repeat.find(u'\u00E9'); at != std::u16string::npos;
                     at = repeat.find(u'\u00E9', at))
                    repeat.replace(at, 1, u"e\u0301");
            }
            text += repeat;
            continue;
        }
        const int length = static_cast<int>(random() % static_cast<unsigned>(longestLine + 1));
        for (int i = 0; i < length; ++i)
            text += linePieces[random() % std::size(linePieces)];
        // Mostly LF, so that repeats above are whole lines, and the others now and then.
        text += random() % 4 == 0 ? terminators[random() % std::size(terminators)] : u"\n";
    }
    if (!text.empty() && random() % 2 == 0)
        text.pop_back();  // no final terminator (or half a CR LF)
    return text;
}

// The lines the operations act on, and where their result goes, as the header describes them.
struct Selected {
    std::vector<std::u16string> lines;
    Range target;
};

Selected selectedLines(const QuodTextView& view) {
    const std::u16string text = view.string();
    const Range raw = view.selectedRange();
    Range source{0, view.length()};
    if (raw.length > 0) {
        const int64_t start = lineRange(text, raw).location;
        const int64_t end = lineRange(text, {raw.end(), 0}).end();
        source = {start, end - start};
    }
    const auto views = enumerateLines(std::u16string_view(text).substr(
        static_cast<std::size_t>(source.location), static_cast<std::size_t>(source.length)));
    return {{views.begin(), views.end()}, raw.length > 0 ? raw : source};
}

std::u16string withLines(const QuodTextView& view, Range target,
                         const std::vector<std::u16string>& lines) {
    std::u16string joined;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i > 0) joined += u'\n';
        joined += lines[i];
    }
    std::u16string text = view.string();
    text.replace(static_cast<std::size_t>(target.location), static_cast<std::size_t>(target.length),
                 joined);
    return text;
}

std::u16string referenceSort(const QuodTextView& view, bool reverse) {
    Selected selected = selectedLines(view);
    std::stable_sort(selected.lines.begin(), selected.lines.end(),
                     [reverse](const std::u16string& a, const std::u16string& b) {
                         const auto order = localizedStandardCompare(a, b);
                         return reverse ? order > 0 : order < 0;
                     });
    return withLines(view, selected.target, selected.lines);
}

std::u16string referenceUnique(const QuodTextView& view) {
    const Selected selected = selectedLines(view);
    std::set<std::u16string> seen;
    std::vector<std::u16string> kept;
    for (const auto& line : selected.lines) {
        if (seen.insert(canonicalComposition(line)).second) kept.push_back(line);
    }
    return withLines(view, selected.target, kept);
}

// Runs the three operations on fresh views of `text` (cut into chunks of `sizes`) with the same
// selection and answers what went wrong: a result unlike the reference's, or an undo that does not
// restore the text and selection. Empty when all is well.
std::string mismatchWithReference(const std::u16string& text, Range selection,
                                  TextStorage::ChunkSizes sizes) {
    std::string mismatches;
    const auto check = [&](const char* name, auto operation, auto reference) {
        QuodTextView view(TextStorage(text, sizes));
        view.setSelectedRange(selection);
        const std::u16string expected = reference(view);
        operation(view);
        if (view.string() != expected) mismatches += std::string(name) + " differs; ";
        view.undo();
        if (view.string() != text || view.selectedRange() != selection) {
            mismatches += std::string(name) + " undoes wrongly; ";
        }
    };
    check(
        "sort", [](QuodTextView& v) { Text::sort(v, false); },
        [](const QuodTextView& v) { return referenceSort(v, false); });
    check(
        "reverse sort", [](QuodTextView& v) { Text::sort(v, true); },
        [](const QuodTextView& v) { return referenceSort(v, true); });
    check(
        "unique", [](QuodTextView& v) { Text::unique(v); },
        [](const QuodTextView& v) { return referenceUnique(v); });
    return mismatches;
}

Range randomSelection(std::mt19937& random, int64_t length) {
    if (random() % 3 == 0) return {0, 0};  // the whole text
    const int64_t location = static_cast<int64_t>(random() % static_cast<uint64_t>(length + 1));
    const int64_t selected =
        static_cast<int64_t>(random() % static_cast<uint64_t>(length - location + 1));
    return {location, selected};
}

RC_GTEST_PROP(LineSorting, SortAndUniqueMatchTheReferenceAcrossChunkBorders, ()) {
    setCurrentLocale(icu::Locale("en_US"));
    std::mt19937 random(*rc::gen::arbitrary<uint32_t>());
    const std::u16string text = randomText(random, *rc::gen::inRange(0, 40), 8);
    // Chunks of a dozen units put most lines across a piece border; the default keeps them whole.
    const bool tiny = *rc::gen::arbitrary<bool>();
    const TextStorage::ChunkSizes sizes =
        tiny ? TextStorage::ChunkSizes{6, 2, 12} : TextStorage::ChunkSizes{};
    RC_ASSERT(mismatchWithReference(text, randomSelection(random, std::ssize(text)), sizes) == "");
}

TEST(LineSorting, LargeTextsTakingBothThreadsMatchTheReference) {
    setCurrentLocale(icu::Locale("en_US"));
    for (const uint32_t seed : {1u, 2u}) {
        std::mt19937 random(seed);
        const std::u16string text = randomText(random, 12'000, 14);
        ASSERT_GT(text.size(), 100'000u);  // beyond the size that is split between two threads
        const auto length = std::ssize(text);
        for (const Range selection : {Range{0, 0}, Range{length / 5, length / 2}}) {
            EXPECT_EQ(mismatchWithReference(text, selection, TextStorage::ChunkSizes{}), "")
                << "seed " << seed << " selection " << selection.location;
        }
    }
}

// Ties between equal keys are not transitive here: "é1" < "\x01é01" (shorter digit run) <
// "é１" (no ASCII digits: by units) < "é1" (by units). Whatever order the lines come in, the
// result is the one a stable sort with the comparison gives.
TEST(LineSorting, IntransitiveTiesComeOutAsTheStableSortPutsThem) {
    setCurrentLocale(icu::Locale("en_US"));
    std::vector<std::u16string> lines{u"\u00E91", u"\u0001e\u030101", u"e\u0301\uFF11", u"b"};
    std::sort(lines.begin(), lines.end());
    do {
        std::u16string text;
        for (const auto& line : lines)
            text += line + u"\n";
        EXPECT_EQ(mismatchWithReference(text, {0, 0}, TextStorage::ChunkSizes{}), "");
    } while (std::next_permutation(lines.begin(), lines.end()));
}

TEST(LineSorting, ReplacingTheWholeTextKeepsUndoAndRedoExact) {
    setCurrentLocale(icu::Locale("en_US"));
    std::mt19937 random(3);
    const std::u16string text = randomText(random, 3'000, 20);
    QuodTextView view(text);
    Text::sort(view, false);
    const std::u16string sorted = view.string();
    EXPECT_EQ(sorted, referenceSort(QuodTextView(text), false));
    view.undo();
    EXPECT_EQ(view.string(), text);
    view.redo();
    EXPECT_EQ(view.string(), sorted);
    Text::unique(view);
    view.undo();
    view.undo();
    EXPECT_EQ(view.string(), text);
}

// Over UTF-8 bytes, unique (fed pieces cut after random line feeds) and sort give what they give
// on a view that selects every line but the last terminator, byte for byte.
RC_GTEST_PROP(LineSorting, UniqueAndSortOverUtf8MatchTheView, ()) {
    setCurrentLocale(icu::Locale("en_US"));
    std::mt19937 random(*rc::gen::arbitrary<uint32_t>());
    const std::u16string text = randomText(random, *rc::gen::inRange(0, 60), 8);
    std::size_t contentsEnd = text.size();
    if (text.ends_with(u"\r\n")) {
        contentsEnd -= 2;
    } else if (!text.empty() && isLineTerminator(text.back())) {
        contentsEnd -= 1;
    }
    const auto onView = [&](const std::function<void(QuodTextView&)>& operation) {
        QuodTextView view(text);
        if (contentsEnd > 0) {
            view.setSelectedRange({0, static_cast<int64_t>(contentsEnd)});
            operation(view);
        }
        return toUtf8(view.string());
    };
    const std::string bytes = toUtf8(text);

    std::string unique;
    UniqueLinesStream stream;
    for (std::size_t start = 0; start < bytes.size();) {
        std::size_t end = bytes.find('\n', start + random() % 40);
        end = end == std::string::npos ? bytes.size() : end + 1;
        stream.append(std::string_view(bytes).substr(start, end - start), unique);
        start = end;
    }
    stream.finish(unique);
    RC_ASSERT(unique == onView([](QuodTextView& view) { Text::unique(view); }));

    for (const bool reverse : {false, true}) {
        std::string sorted;
        Text::sortUtf8Lines(bytes, reverse, [&sorted](std::string_view piece) { sorted += piece; });
        RC_ASSERT(sorted == onView([reverse](QuodTextView& view) { Text::sort(view, reverse); }));
    }
}

// A text large enough that its keys are made on two threads sorts as the view does.
TEST(LineSorting, LargeUtf8TextsSortAsTheViewDoes) {
    setCurrentLocale(icu::Locale("en_US"));
    std::mt19937 random(5);
    const std::u16string text = randomText(random, 12'000, 14) + u"\r\n";
    QuodTextView view(text);
    view.setSelectedRange({0, std::ssize(text) - 2});
    Text::sort(view, false);
    std::string sorted;
    Text::sortUtf8Lines(toUtf8(text), false,
                        [&sorted](std::string_view piece) { sorted += piece; });
    EXPECT_EQ(sorted, toUtf8(view.string()));
}

}  // namespace
}  // namespace quod
