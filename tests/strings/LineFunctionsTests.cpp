#include <gtest/gtest.h>

#include "quoddle/strings/LineFunctions.h"

namespace quod {
namespace {

TEST(LineFunctions, FindTheLineOfARangeAsThePlatformDoes) {
    struct Case {
        std::u16string text;
        Range range;
        LineBounds expected;
    };
    const Case cases[] = {
        {u"ab\ncd", {1, 0}, {0, 3, 2}},
        {u"ab\ncd", {3, 0}, {3, 5, 5}},
        {u"ab\ncd", {5, 0}, {3, 5, 5}},
        {u"ab\n", {3, 0}, {3, 3, 3}},  // after a final terminator: the empty last line
        {u"", {0, 0}, {0, 0, 0}},
        {u"a\r\nb", {1, 0}, {0, 3, 1}},   // CR LF is one terminator
        {u"a\r\nb", {2, 0}, {0, 3, 1}},   // between CR and LF: still the first line
        {u"a\r\nb", {0, 2}, {0, 3, 1}},   // a range ending on the CR takes the whole pair
        {u"a\n\rb", {2, 0}, {2, 3, 2}},   // LF CR is two terminators
        {u"a\nb\nc", {2, 2}, {2, 4, 3}},  // ends just behind a terminator: no next line
        {u"a\nb\nc", {2, 3}, {2, 5, 5}},
        {u"a\u0085b\u2028c\u2029d", {2, 0}, {2, 4, 3}},
        {u"a\u000Bb\u000Cc\nd", {0, 0}, {0, 6, 5}},  // VT and FF end nothing
    };
    for (const Case& c : cases) {
        EXPECT_EQ(lineBounds(c.text, c.range), c.expected)
            << "range " << c.range << " in text of length " << c.text.size();
    }
}

TEST(LineFunctions, ParagraphsEndOnlyAtParagraphTerminators) {
    const std::u16string text = u"a\u0085b\u2028c\u2029d\r\ne";
    EXPECT_EQ(paragraphBounds(text, {2, 0}), (LineBounds{0, 6, 5}));
    EXPECT_EQ(paragraphBounds(text, {6, 0}), (LineBounds{6, 9, 7}));
    EXPECT_EQ(paragraphBounds(text, {9, 0}), (LineBounds{9, 10, 10}));
}

TEST(LineFunctionsDeathTest, RangesOutsideTheTextStop) {
    EXPECT_DEATH((void)lineBounds(u"ab", {3, 0}), "outside the text");
    EXPECT_DEATH((void)lineBounds(u"ab", {1, 2}), "outside the text");
}

}  // namespace
}  // namespace quod
