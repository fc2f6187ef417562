#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

#include "quoddle/base/Utf.h"
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

// A text fed in pieces, cut anywhere (between a CR and its LF, into empty pieces), comes out as
// the whole text rewritten at once, in UTF-16 and in UTF-8.
TEST(LineEnding, ConvertingInPiecesAgreesWithTheWholeText) {
    const std::pair<std::function<LineEndingConverter()>,
                    std::function<u16string(const u16string&)>>
        rewrites[] = {{[] { return LineEndingConverter::converting(LineEnding::unix); },
                       [](auto& s) { return Text::convert(s, LineEnding::unix); }},
                      {[] { return LineEndingConverter::converting(LineEnding::windows); },
                       [](auto& s) { return Text::convert(s, LineEnding::windows); }},
                      {[] { return LineEndingConverter::converting(LineEnding::macOS9); },
                       [](auto& s) { return Text::convert(s, LineEnding::macOS9); }},
                      {LineEndingConverter::showingCharacters, Text::replaceLineEndingCharacters},
                      {LineEndingConverter::removing, Text::removeLineEndings}};
    const u16string alphabet[] = {u"a", u"\r", u"\n", u"\r\n", u"\u00E9", u"\u2028", u"\U0001F600"};
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        u16string text;
        for (auto pieces = random() % 30; pieces > 0; --pieces)
            text += alphabet[random() % std::size(alphabet)];
        const std::string utf8 = toUtf8(text);
        std::vector<std::size_t> cuts16{0, text.size()}, cuts8{0, utf8.size()};
        for (int k = 0; k < 4; ++k) {
            cuts16.push_back(random() % (text.size() + 1));
            cuts8.push_back(random() % (utf8.size() + 1));
        }
        std::sort(cuts16.begin(), cuts16.end());
        std::sort(cuts8.begin(), cuts8.end());
        for (const auto& [make, whole] : rewrites) {
            LineEndingConverter units = make();
            u16string out16;
            for (std::size_t k = 0; k + 1 < cuts16.size(); ++k)
                units.convert(
                    std::u16string_view(text).substr(cuts16[k], cuts16[k + 1] - cuts16[k]), out16);
            units.finish(out16);
            ASSERT_EQ(out16, whole(text)) << testing::PrintToString(text);

            LineEndingConverter bytes = make();
            std::string out8;
            for (std::size_t k = 0; k + 1 < cuts8.size(); ++k)
                bytes.convert(std::string_view(utf8).substr(cuts8[k], cuts8[k + 1] - cuts8[k]),
                              out8);
            bytes.finish(out8);
            ASSERT_EQ(out8, toUtf8(whole(text))) << testing::PrintToString(text);
        }
    }
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
