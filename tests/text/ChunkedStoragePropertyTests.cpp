// The text storage under random edits with chunks of a few units, so that every border case of its
// tree (a CR LF pair or a surrogate pair meeting at a chunk border, chunks emptied, deletions over
// many chunks, inserts of many chunks, the tree growing and shrinking) comes up over and over. A
// plain u16string and the scanning line functions are the model.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/LineFunctions.h"
#include "quoddle/text/QuodTextView.h"
#include "quoddle/text/TextStorage.h"

namespace quod {
namespace {

// Units that pair up or end lines, so that random text is full of both.
const char16_t unitsToDrawFrom[] = {u'a',      u'\r', u'\n', 0xD83D,    0xDE00, u'\u2028',
                                    u'\u2029', 0x85,  u'é',  u'\u0416', u' '};

rc::Gen<std::u16string> randomText(int maximumLength) {
    return rc::gen::map(rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 11)),
                        [maximumLength](const std::vector<int>& picks) {
                            std::u16string text;
                            for (int pick : picks) {
                                if (std::ssize(text) == maximumLength) break;
                                text += unitsToDrawFrom[pick];
                            }
                            return text;
                        });
}

rc::Gen<TextStorage::ChunkSizes> tinyChunkSizes() {
    return rc::gen::element(TextStorage::ChunkSizes{2, 1, 4}, TextStorage::ChunkSizes{4, 2, 8},
                            TextStorage::ChunkSizes{6, 3, 12});
}

// Every answer of the storage against the model, at every position and line; the line and
// paragraph bounds (which the model finds by scanning) only where asked.
void checkAgainstModel(const TextStorage& storage, const std::u16string& model,
                       bool withBounds = true) {
    const auto length = std::ssize(model);
    RC_ASSERT(storage.length() == length);
    RC_ASSERT(storage.string() == model);
    std::vector<int64_t> starts{0};
    for (int64_t i = 0; i < length; ++i) {
        const char16_t unit = model[static_cast<std::size_t>(i)];
        const bool pairedCr = unit == u'\r' && i + 1 < length && model[i + 1] == u'\n';
        if (isLineTerminator(unit) && !pairedCr) starts.push_back(i + 1);
    }
    RC_ASSERT(storage.lineCount() == std::ssize(starts));
    for (int64_t line = 0; line < std::ssize(starts); ++line)
        RC_ASSERT(storage.startOfLine(line) == starts[static_cast<std::size_t>(line)]);
    int64_t line = 0;
    for (int64_t position = 0; position <= length; ++position) {
        while (line + 1 < std::ssize(starts) &&
               starts[static_cast<std::size_t>(line) + 1] <= position)
            ++line;
        RC_ASSERT(storage.lineIndexOfPosition(position) == line);
        if (position < length) RC_ASSERT(storage.characterAtIndex(position) == model[position]);
        if (!withBounds) continue;
        RC_ASSERT(storage.lineBoundsForRange({position, 0}) == lineBounds(model, {position, 0}));
        RC_ASSERT(storage.paragraphBoundsForRange({position, 0}) ==
                  paragraphBounds(model, {position, 0}));
    }
}

RC_GTEST_PROP(ChunkedStorage, EditsAndLineQuestionsMatchAPlainString, ()) {
    const auto sizes = *tinyChunkSizes();
    std::u16string model = *randomText(60);
    TextStorage storage(model, sizes);
    checkAgainstModel(storage, model);
    const int edits = *rc::gen::inRange(1, 40);
    for (int k = 0; k < edits; ++k) {
        const auto length = std::ssize(model);
        const int64_t location = *rc::gen::inRange<int64_t>(0, length + 1);
        // Mostly short removals (typing), sometimes long ones across many chunks.
        const int64_t longest = *rc::gen::element<int64_t>(3, 3, 3, length);
        const int64_t count =
            *rc::gen::inRange<int64_t>(0, std::min(longest, length - location) + 1);
        const Range range{location, count};
        if (*rc::gen::inRange(0, 5) == 0 && length > 0) {
            // Text taken from the storage itself, as undo puts large stretches back.
            const int64_t from = *rc::gen::inRange<int64_t>(0, length);
            const int64_t taken = *rc::gen::inRange<int64_t>(0, length - from + 1);
            const TextStorage copy = storage.storageWithRange({from, taken});
            RC_ASSERT(copy.string() == model.substr(from, taken));
            const std::u16string inserted = model.substr(from, taken);
            storage.replaceCharactersInRange(range, copy);
            model.replace(location, count, inserted);
        } else {
            const std::u16string inserted = *randomText(*rc::gen::element(2, 2, 2, 40));
            storage.replaceCharactersInRange(range, inserted);
            model.replace(location, count, inserted);
        }
        checkAgainstModel(storage, model);
    }
}

// Chunks of a few hundred units that end many lines each, so that their lists of line ends outgrow
// the room inside the chunk and shrink back into it as lines are typed and removed.
RC_GTEST_PROP(ChunkedStorage, ChunksEndingManyLinesKeepTheirEnds, ()) {
    const TextStorage::ChunkSizes sizes{160, 80, 320};
    const auto lineDense = [](int length) {
        return rc::gen::map(rc::gen::container<std::vector<int>>(static_cast<std::size_t>(length),
                                                                 rc::gen::inRange(0, 4)),
                            [](const std::vector<int>& picks) {
                                std::u16string text;
                                for (int pick : picks)
                                    text += pick == 0 ? u'a' : pick == 1 ? u'\r' : u'\n';
                                return text;
                            });
    };
    std::u16string model = *lineDense(*rc::gen::inRange(0, 1200));
    TextStorage storage(model, sizes);
    checkAgainstModel(storage, model, false);
    for (int k = *rc::gen::inRange(1, 30); k > 0; --k) {
        const auto length = std::ssize(model);
        const int64_t location = *rc::gen::inRange<int64_t>(0, length + 1);
        const int64_t count =
            *rc::gen::inRange<int64_t>(0, std::min<int64_t>(60, length - location) + 1);
        const std::u16string inserted = *lineDense(*rc::gen::inRange(0, 80));
        storage.replaceCharactersInRange({location, count}, inserted);
        model.replace(static_cast<std::size_t>(location), static_cast<std::size_t>(count),
                      inserted);
        checkAgainstModel(storage, model, false);
    }
}

RC_GTEST_PROP(ChunkedStorage, PiecesCoverTheRangeWithoutSplittingPairsInside, ()) {
    const auto sizes = *tinyChunkSizes();
    const std::u16string text = *randomText(80);
    const TextStorage storage(text, sizes);
    const auto length = std::ssize(text);
    const int64_t location = *rc::gen::inRange<int64_t>(0, length + 1);
    const int64_t count = *rc::gen::inRange<int64_t>(0, length - location + 1);
    std::u16string joined;
    storage.forEachPiece({location, count}, [&](std::u16string_view piece) {
        RC_ASSERT(!piece.empty());
        const auto end = location + std::ssize(joined) + std::ssize(piece);
        if (end < location + count) {
            const char16_t last = piece.back();
            const char16_t next = text[static_cast<std::size_t>(end)];
            RC_ASSERT(!(last == u'\r' && next == u'\n'));
            RC_ASSERT(!((last & 0xFC00) == 0xD800 && (next & 0xFC00) == 0xDC00));
        }
        joined += piece;
    });
    RC_ASSERT(joined == text.substr(location, count));
}

// Whole documents decoded in one pass must give what decoding them whole gives, wherever the
// chunk borders fall among multi-byte sequences, ill-formed bytes and CR LF pairs. U+010A and
// U+010D have the low bytes of LF and CR, which must not end lines.
RC_GTEST_PROP(ChunkedStorage, LoadingUtf8DecodesAsAWhole, ()) {
    static const std::string pieces[] = {"a",
                                         "\r\n",
                                         "\r",
                                         "\n",
                                         "\xC3\xA9",
                                         "\xE2\x80\xA8",
                                         "\xF0\x9F\x98\x80",
                                         "\xC2\x85",
                                         "\xC4\x8A",
                                         "\xC4\x8D",
                                         "\xC5\x85",
                                         "\xFF",
                                         "\x80",
                                         "\xE2\x80",
                                         "\xF0\x9F"};
    // Mostly ASCII with a few other characters (the usual file), or anything, bad bytes included.
    const bool wellFormedAndMostlyAscii = *rc::gen::arbitrary<bool>();
    const auto pick = wellFormedAndMostlyAscii ? rc::gen::weightedElement<int>({{40, 0},
                                                                                {4, 1},
                                                                                {2, 2},
                                                                                {4, 3},
                                                                                {1, 4},
                                                                                {1, 5},
                                                                                {1, 6},
                                                                                {1, 7},
                                                                                {1, 8},
                                                                                {1, 9},
                                                                                {1, 10}})
                                               : rc::gen::inRange(0, 15);
    const auto picks = *rc::gen::container<std::vector<int>>(pick);
    const int repeat = *rc::gen::inRange(1, 400);
    std::string bytes;
    for (int r = 0; r < repeat; ++r) {
        for (int p : picks)
            bytes += pieces[p];
    }
    const TextStorage storage = TextStorage::fromUtf8(bytes);
    checkAgainstModel(storage, toUtf16(bytes), false);
}

TEST(ChunkedStorage, UndoOfALargeReplacementRestoresTheDocument) {
    std::u16string document;
    for (int line = 0; line < 20000; ++line)
        document += (line % 7 == 0 ? u"caf\u00E9 \u2014 line\r\n" : u"plain line of text\n");
    QuodTextView view(TextStorage::fromUtf8(toUtf8(document)));
    view.replaceWithUndo(u"word", {0, view.length()}, false);
    EXPECT_EQ(view.string(), u"word");
    view.undo();
    EXPECT_EQ(view.string(), document);
    EXPECT_EQ(view.textStorage().lineCount(), 20001);
    view.redo();
    EXPECT_EQ(view.string(), u"word");
    view.undo();
    const auto lastLine = std::u16string_view(document).substr(0, document.size() - 1).rfind(u'\n');
    EXPECT_EQ(view.textStorage().startOfLine(19999), static_cast<int64_t>(lastLine) + 1);
}

}  // namespace
}  // namespace quod
