#include <gtest/gtest.h>

#include <vector>

#include "quoddle/strings/LineFunctions.h"
#include "quoddle/text/TextStorage.h"

namespace quod {
namespace {

std::vector<int64_t> lineStartsOf(const TextStorage& storage) {
    std::vector<int64_t> starts;
    for (int64_t line = 0; line < storage.lineCount(); ++line)
        starts.push_back(storage.startOfLine(line));
    return starts;
}

TEST(TextStorage, IndexesEveryTerminatorKindOnce) {
    const TextStorage storage(u"a\nb\r\nc\rd\u0085e\u2028f\u2029g\u000Bh\u000Ci\n");
    EXPECT_EQ(lineStartsOf(storage), (std::vector<int64_t>{0, 2, 5, 7, 9, 11, 13, 19}));
    EXPECT_EQ(storage.lineCount(), 8);
    EXPECT_EQ(storage.lineIndexOfPosition(3), 1);
    EXPECT_EQ(storage.lineIndexOfPosition(4), 1);  // the LF of the CR LF pair
    EXPECT_EQ(storage.lineIndexOfPosition(19), 7);
    EXPECT_EQ(storage.rangeOfLine(1), (Range{2, 3}));
    EXPECT_EQ(storage.rangeOfLine(7), (Range{19, 0}));
    EXPECT_EQ(TextStorage(u"").lineCount(), 1);
}

TEST(TextStorage, AnswersLineQuestionsAsTheScanningFunctions) {
    const std::u16string text = u"one\r\ntwo\n\nthree\rfour\u2028\r\n";
    const TextStorage storage(text);
    for (int64_t location = 0; location <= std::ssize(text); ++location) {
        for (int64_t length = 0; location + length <= std::ssize(text); ++length) {
            const Range range{location, length};
            ASSERT_EQ(storage.lineBoundsForRange(range), lineBounds(text, range)) << range;
            ASSERT_EQ(storage.paragraphBoundsForRange(range), paragraphBounds(text, range))
                << range;
        }
    }
    int64_t start = -1, end = -1, contentsEnd = -1;
    storage.getLineStart(&start, nullptr, &contentsEnd, {6, 0});
    EXPECT_EQ(start, 5);
    EXPECT_EQ(contentsEnd, 8);
    storage.getLineStart(nullptr, &end, nullptr, {6, 0});
    EXPECT_EQ(end, 9);
}

TEST(TextStorage, EditsThatJoinOrSplitCrLfPairsUpdateTheIndex) {
    TextStorage storage(u"a\rx\nb");
    EXPECT_EQ(storage.lineCount(), 3);
    storage.replaceCharactersInRange({2, 1}, u"");  // "a\r\nb": CR and LF become one terminator
    EXPECT_EQ(lineStartsOf(storage), (std::vector<int64_t>{0, 3}));
    storage.replaceCharactersInRange({2, 0}, u"y");  // split the pair again
    EXPECT_EQ(lineStartsOf(storage), (std::vector<int64_t>{0, 2, 4}));
    storage.replaceCharactersInRange({0, 5}, u"");
    EXPECT_EQ(lineStartsOf(storage), (std::vector<int64_t>{0}));
    storage.replaceCharactersInRange({0, 0}, u"\n\n");
    EXPECT_EQ(lineStartsOf(storage), (std::vector<int64_t>{0, 1, 2}));
}

TEST(TextStorage, TellsObserversWhereTheNewTextLies) {
    TextStorage storage(u"hello world");
    std::vector<std::pair<Range, int64_t>> edits;
    Connection connection = storage.didProcessEditing.connect([&](const TextStorageEdit& edit) {
        edits.emplace_back(edit.editedRange, edit.changeInLength);
    });
    storage.replaceCharactersInRange({6, 5}, u"there!");
    storage.replaceCharactersInRange({0, 6}, u"");
    EXPECT_EQ(storage.string(), u"there!");
    ASSERT_EQ(edits.size(), 2u);
    EXPECT_EQ(edits[0], (std::pair{Range{6, 6}, int64_t{1}}));
    EXPECT_EQ(edits[1], (std::pair{Range{0, 0}, int64_t{-6}}));
}

TEST(TextStorage, LoadsUtf8WithReplacementForBadBytes) {
    const TextStorage storage = TextStorage::fromUtf8("caf\xC3\xA9\r\n\xFFz\xF0\x9F\x98\x80");
    EXPECT_EQ(storage.string(), u"café\r\n\uFFFDz😀");
    EXPECT_EQ(storage.lineCount(), 2);
    EXPECT_EQ(storage.substringWithRange({6, 2}), u"\uFFFDz");
    EXPECT_EQ(storage.characterAtIndex(8), char16_t(0xD83D));  // halves of a pair are plain units
}

TEST(TextStorageDeathTest, RangesOutsideTheTextStop) {
    TextStorage storage(u"abc");
    EXPECT_DEATH((void)storage.characterAtIndex(3), "outside the text");
    EXPECT_DEATH((void)storage.substringWithRange({2, 2}), "outside the text");
    EXPECT_DEATH((void)storage.lineRangeForRange({4, 0}), "outside the text");
    EXPECT_DEATH(storage.replaceCharactersInRange({-1, 1}, u"x"), "outside the text");
    EXPECT_DEATH((void)storage.startOfLine(1), "outside the text");
}

}  // namespace
}  // namespace quod
