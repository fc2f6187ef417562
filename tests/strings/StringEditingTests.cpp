#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include "quoddle/strings/CharacterSets.h"
#include "quoddle/strings/StringEditing.h"

namespace quod {
namespace {

using std::u16string;
using std::u16string_view;

std::string show(u16string_view text) {
    return testing::PrintToString(u16string(text));
}

TEST(CharacterSets, MatchThePlatformSets) {
    // Whitespace is exactly Zs, TAB and U+200B, over every code point.
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        const bool expected =
            u_charType(static_cast<UChar32>(c)) == U_SPACE_SEPARATOR || c == 0x0009 || c == 0x200B;
        ASSERT_EQ(isWhitespace(c), expected) << std::hex << static_cast<uint32_t>(c);
    }
    for (const char32_t c : std::u32string_view(U"\n\u000B\u000C\r\u0085\u2028\u2029")) {
        EXPECT_TRUE(isNewline(c) && isWhitespaceOrNewline(c)) << static_cast<uint32_t>(c);
    }
    EXPECT_FALSE(isNewline(U'\t') || isNewline(0x0084) || isNewline(0x2027));
}

TEST(StringEditing, ChopRemovesWholeCharactersOnly) {
    const std::tuple<u16string, u16string_view, StringEdge, u16string_view> cases[] = {
        {u"abcab", u"ab", StringEdge::end, u"abc"},
        {u"abcab", u"ab", StringEdge::start, u"cab"},
        {u"abcab", u"ab", StringEdge::both, u"c"},
        {u"abab", u"ab", StringEdge::both, u""},
        {u"ab", u"ab", StringEdge::both, u""},
        {u"a", u"abc", StringEdge::both, u"a"},
        {u"😀x😀", u"😀", StringEdge::both, u"x"},
        // Only part of the first or last character: no chop.
        {u"e\u0301x", u"e", StringEdge::start, u"e\u0301x"},
        {u"xa\u0301", u"\u0301", StringEdge::end, u"xa\u0301"},
        {u"🇫🇷🇩🇪", u"🇷🇩🇪", StringEdge::end, u"🇫🇷🇩🇪"}};
    for (const auto& [text, string, edge, expected] : cases) {
        u16string s = text;
        chop(s, string, edge);
        EXPECT_EQ(s, expected) << show(text) << " chop " << show(string);
    }
}

TEST(StringEditing, InsertAndQuote) {
    u16string s = u"x";
    insert(s, u"ab", StringEdge::both);
    insert(s, u"c", StringEdge::start);
    EXPECT_EQ(s, u"cabxab");

    const std::pair<u16string_view, u16string_view> quotes[] = {{u"my file", u"\"my file\""},
                                                                {u"my file\"", u"\"my file\""},
                                                                {u"\"my file", u"\"my file\""},
                                                                {u"my\u00A0file", u"my\u00A0file"}};
    for (const auto& [text, expected] : quotes) {
        EXPECT_EQ(quote(text), expected) << show(text);
    }
}

TEST(StringEditing, TrimStripsTheChosenEdges) {
    const std::tuple<u16string_view, bool, StringEdge, u16string_view> cases[] = {
        {u" \t a b \u3000", false, StringEdge::both, u"a b"},
        {u" \t a b \u3000", false, StringEdge::start, u"a b \u3000"},
        {u" \t a b \u3000", false, StringEdge::end, u" \t a b"},
        {u"\n a \r\n", false, StringEdge::both, u"\n a \r\n"},
        {u"\n a \r\n", true, StringEdge::both, u"a"},
        {u" 😀 ", false, StringEdge::both, u"😀"},
        {u" \u2028 ", true, StringEdge::end, u""}};
    for (const auto& [text, alsoNewline, edge, expected] : cases) {
        EXPECT_EQ(trim(text, alsoNewline, edge), expected) << show(text);
    }
}

TEST(StringEditing, FirstUppercasedFollowsTheLocale) {
    const std::tuple<u16string_view, const char*, u16string_view> cases[] = {
        {u"hELLO", "en_US", u"Hello"},
        {u"", "en_US", u""},
        {u"ßx", "en_US", u"SSx"},
        {u"e\u0301LAN", "en_US", u"E\u0301lan"},  // the whole first character
        {u"iX", "tr_TR", u"İx"},
        {u"iI", "tr_TR", u"İı"},
        {u"iI", "en_US", u"Ii"}};
    for (const auto& [text, locale, expected] : cases) {
        EXPECT_EQ(firstUppercased(text, icu::Locale(locale)), expected) << show(text) << locale;
    }
}

TEST(StringEditing, ContainsIgnoringCaseByFullFolding) {
    const std::tuple<u16string_view, u16string_view, bool> cases[] = {
        {u"Hello World", u"WORLD", true},
        {u"Straße", u"STRASSE", true},
        {u"STRASSE", u"straße", true},
        {u"ΣΑΣ", u"σας", true},
        {u"Hello", u"help", false},
        {u"abc", u"", false},
        {u"", u"a", false}};
    for (const auto& [text, other, expected] : cases) {
        EXPECT_EQ(containsCaseInsensitive(text, other), expected) << show(text) << show(other);
    }
}

}  // namespace
}  // namespace quod
