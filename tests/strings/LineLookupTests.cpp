#include <gtest/gtest.h>

#include <cstdint>

#include "quoddle/strings/LineLookup.h"

namespace quod {
namespace {

TEST(LineLookup, LineNumbersAndLineRanges) {
    const std::tuple<std::u16string, int64_t, int64_t> numbers[] = {
        {u"", 0, 1},       {u"a\nb", 1, 1},
        {u"a\nb", 2, 2},   {u"a\nb", 3, 2},
        {u"a\n", 2, 2},  // behind a final terminator: the empty last line
        {u"a\r\nb", 2, 1}, {u"a\r\nb", 3, 2},
        {u"a\n\nb", 3, 3}, {u"a\u2028b\u0085c\u000Bd", 4, 3}};  // VT ends no line
    for (const auto& [text, location, expected] : numbers) {
        EXPECT_EQ(lineNumber(text, location), expected) << location;
    }
    const std::tuple<std::u16string, int64_t, Range> ranges[] = {
        {u"a\nb", 2, {2, 1}}, {u"a\nb", -4, {0, 2}}, {u"a\nb", 9, {2, 1}},
        {u"a\n", 5, {2, 0}},  {u"", 1, {0, 0}},      {u"a\r\nb\rc", 3, {5, 1}}};
    for (const auto& [text, line, expected] : ranges) {
        EXPECT_EQ(range(text, line), expected) << line;
    }
}

TEST(LineLookup, TheRangeOfALocationsLineHoldsIt) {
    for (const std::u16string text : {u"one\r\ntwo\n\nfour\u2029five\n", u"\rone\r\rtwo"}) {
        const auto length = static_cast<int64_t>(text.size());
        for (int64_t location = 0; location <= length; ++location) {
            const Range line = range(text, lineNumber(text, location));
            EXPECT_TRUE(line.contains(location) || (location == length && line.end() == length))
                << testing::PrintToString(text) << " at " << location << ": line " << line;
        }
    }
}

// A location before the text counts the lines its steps pass: the first, or none in an empty text.
TEST(LineLookup, ALocationBeforeTheTextIsOnTheFirstLine) {
    EXPECT_EQ(lineNumber(u"a\nb", -1), 1);
    EXPECT_EQ(lineNumber(u"\n\n", INT64_MIN), 1);
    EXPECT_EQ(lineNumber(u"", -3), 0);
}

}  // namespace
}  // namespace quod
