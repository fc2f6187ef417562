#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <vector>

#include "quoddle/strings/LineEnding.h"

namespace quod {
namespace {

using std::u16string;
using Passes = std::vector<std::pair<std::u16string_view, std::u16string_view>>;

// The literal replace-all passes, left to right without overlap, that each rewrite stands for.
u16string applyPasses(u16string text, const Passes& passes) {
    for (const auto& [from, to] : passes) {
        for (auto at = text.find(from); at != u16string::npos;
             at = text.find(from, at + to.size())) {
            text.replace(at, from.size(), to);
        }
    }
    return text;
}

TEST(LineEnding, OnePassAgreesWithTheReplaceAllPasses) {
    const std::pair<std::function<u16string(const u16string&)>, Passes> rewrites[] = {
        {[](auto& s) { return Text::convert(s, LineEnding::unix); },
         {{u"\r\n", u"\n"}, {u"\r", u"\n"}}},
        {[](auto& s) { return Text::convert(s, LineEnding::windows); },
         {{u"\r\n", u"\n"}, {u"\r", u"\n"}, {u"\n", u"\r\n"}}},
        {[](auto& s) { return Text::convert(s, LineEnding::macOS9); },
         {{u"\r\n", u"\r"}, {u"\n", u"\r"}}},
        {Text::replaceLineEndingCharacters, {{u"\r", u"¶"}, {u"\n", u"¶"}}},
        {Text::removeLineEndings, {{u"\r\n", u""}, {u"\r", u""}, {u"\n", u""}}}};
    constexpr char16_t alphabet[] = {u'a', u'\r', u'\n', 0x2028, 0x0085};
    std::mt19937 random(20240517);
    for (int round = 0; round < 3000; ++round) {
        // Up to three blocks of the vector scan, so matches fall in every lane and in the tail.
        u16string text(random() % 25, u'a');
        for (char16_t& unit : text) {
            unit = alphabet[random() % std::size(alphabet)];
        }
        for (const auto& [rewrite, passes] : rewrites) {
            ASSERT_EQ(rewrite(text), applyPasses(text, passes)) << testing::PrintToString(text);
        }
        for (const LineEnding ending : allLineEndings) {
            const u16string converted = Text::convert(text, ending);
            ASSERT_EQ(Text::convert(converted, ending), converted) << "already converted";
        }
    }
}

TEST(LineEnding, RewritesMixedEndings) {
    const u16string mixed = u"a\r\nb\rc\nd";
    EXPECT_EQ(Text::convert(mixed, LineEnding::unix), u"a\nb\nc\nd");
    EXPECT_EQ(Text::convert(mixed, LineEnding::windows), u"a\r\nb\r\nc\r\nd");
    EXPECT_EQ(Text::convert(mixed, LineEnding::macOS9), u"a\rb\rc\rd");
    EXPECT_EQ(Text::convert(u"\n\r", LineEnding::windows), u"\r\n\r\n");
    EXPECT_EQ(Text::convert(u"\u2028\u2029\u0085", LineEnding::windows), u"\u2028\u2029\u0085");
    EXPECT_EQ(Text::replaceLineEndingCharacters(u"a\r\nb"), u"a¶¶b");
    EXPECT_EQ(Text::replaceLineEndingCharacters(u"a\nb"), u"a¶b");
    EXPECT_EQ(Text::removeLineEndings(u"one\r\ntwo\rthree\nfour\u2028"), u"onetwothreefour\u2028");
}

TEST(LineEnding, OnlyTheRawValuesOfEndingsAreEndings) {
    for (std::size_t raw = 0; raw < allLineEndings.size(); ++raw) {
        EXPECT_EQ(lineEndingFromRawValue(static_cast<int64_t>(raw)), allLineEndings[raw]);
    }
    for (const int64_t raw : {int64_t{3}, int64_t{-1}, INT64_MIN, int64_t{0x1'0000'0001}}) {
        EXPECT_EQ(lineEndingFromRawValue(raw), std::nullopt) << raw;
    }
}

}  // namespace
}  // namespace quod
