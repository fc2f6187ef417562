#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "quoddle/strings/CaseMapping.h"
#include "quoddle/strings/StringTransform.h"

namespace quod {
namespace {

using Kind = StringTransform::Kind;

std::u16string transformed(Kind kind, std::u16string_view text) {
    return StringTransform::transformed(kind, text).value_or(u"<no result>");
}

TEST(StringTransform, KindsAreTheThirtyFourRawValuesInMenuOrder) {
    ASSERT_EQ(StringTransform::allCases.size(), 34u);
    for (int raw = 0; raw < 34; ++raw) {
        EXPECT_EQ(StringTransform::kind(raw), StringTransform::allCases[raw]);
        EXPECT_EQ(static_cast<int>(StringTransform::allCases[raw]), raw);
    }
    EXPECT_EQ(StringTransform::kind(34), std::nullopt);
    EXPECT_EQ(StringTransform::kind(-1), std::nullopt);
    EXPECT_EQ(StringTransform::kind(0), Kind::toLatin);
    EXPECT_EQ(StringTransform::kind(33), Kind::hiraganaToKatakana);
}

TEST(StringTransform, RunsEachTransliteratorInItsDirection) {
    const std::tuple<Kind, std::u16string_view, std::u16string_view> cases[] = {
        {Kind::toLatin, u"Привет", u"Privet"},
        {Kind::latinASCII, u"Ünïcödé ß æ “q”", u"Unicode ss ae \"q\""},
        {Kind::stripDiacritics, u"Énġlišh ≠ ñ", u"English ≠ n"},
        {Kind::stripCombiningMarks, u"Énġlišh ≠", u"English ="},
        {Kind::toXMLHex, u"x\né😀", u"x&#xA;&#xE9;&#x1F600;"},
        {Kind::fromXMLHex, u"&#x41;&#xE9;", u"Aé"},
        {Kind::toCHex, u"Aé", u"\\u0041\\u00E9"},
        {Kind::fromCHex, u"\\u0041\\U0001F600", u"A😀"},
        {Kind::toPerlHex, u"Aé", u"\\x{41}\\x{E9}"},
        {Kind::toPublishing, u"\"It's\" -- ...", u"“It’s” — …"},
        {Kind::fromPublishing, u"“It’s” — …", u"\"It's\" -- ..."},
        {Kind::toUnicodeName, u"é\t", u"\\N{LATIN SMALL LETTER E WITH ACUTE}\\N{<control-0009>}"},
        {Kind::fromUnicodeName, u"\\N{LATIN SMALL LETTER E WITH ACUTE}", u"é"},
        {Kind::fullwidthToHalfwidth, u"ＡＢＣ　ガ", u"ABC ｶﾞ"},
        {Kind::halfwidthToFullwidth, u"abc 1", u"ａｂｃ　１"},
        {Kind::latinToKatakana, u"katakana", u"カタカナ"},
        {Kind::katakanaToLatin, u"カタカナ", u"katakana"},
        {Kind::mandarinToLatin, u"中文", u"zhōng wén"},
        {Kind::hiraganaToKatakana, u"ひらがな", u"ヒラガナ"},
    };
    for (const auto& [kind, input, expected] : cases) {
        EXPECT_EQ(transformed(kind, input), expected) << static_cast<int>(kind);
    }
    // Every kind opens on this ICU, so every one gives a result.
    for (const Kind kind : StringTransform::allCases) {
        EXPECT_TRUE(StringTransform::transformed(kind, u"abc").has_value())
            << static_cast<int>(kind);
    }
}

// Every transform fed in pieces, cut anywhere (inside words, escapes, syllables, surrogate pairs),
// gives what it gives for the whole text.
TEST(StringTransform, InPiecesAsOnTheWholeText) {
    const std::u16string samples[] = {
        u"Stra\u00DFe na\u00EFve \u00C6sop caf\u00E9 \u201Cquoted\u201D \u2014 x\u0301\r\n"
        u"\u00E9\ncaf\u00E9\r\u201Cq\u201D",
        u"&#x3B1;&#x3b2; \\x{41}\\u0042 \\x43 \\N{LATIN SMALL LETTER A}&#x1F600;\n&#x3B1;\n\\x{42}",
        u"\u03B1\u03B2\u03B3\u03C3 \u039F\u03B4\u03C5\u03C3\u03C3\u03B5\u03CD\u03C2. "
        u"\u041C\u043E\u0441\u043A\u0432\u0430 \u05E9\u05DC\u05D5\u05DD "
        u"\u0645\u0631\u062D\u0628\u0627\n",
        u"\u3072\u3089\u304C\u306A \u30AB\u30BF\u30AB\u30CA \uFF21\uFF22 \uD55C\uAD6D\uC5B4 "
        u"\u0E20\u0E32\u0E29\u0E32\u0E44\u0E17\u0E22 \u4E2D\u6587 \U0001F600\n",
        u"shinbun kyouto nnn tsu Hangugeo annyeong sawasdee moskva shalom marhaban\n"
        u"n\nka\n\u4E2D\n\u6587\u4E2D\n\u03C3\n\u03C3 \u03C3"};
    std::mt19937 random(3);
    for (const Kind kind : StringTransform::allCases) {
        for (const std::u16string& sample : samples) {
            const auto whole = StringTransform::transformed(kind, sample);
            for (int round = 0; round < 6; ++round) {
                StringTransformStream stream(kind);
                ASSERT_EQ(stream.isAvailable(), whole.has_value());
                std::u16string out;
                for (std::size_t at = 0; at < sample.size();) {
                    const std::size_t length = 1 + random() % (round < 3 ? 3 : 17);
                    stream.transform(std::u16string_view(sample).substr(at, length), out);
                    at += length;
                }
                stream.finish(out);
                EXPECT_EQ(out, whole.value_or(sample))
                    << "kind " << static_cast<int>(kind) << " round " << round;
            }
        }
    }
}

TEST(StringTransformDeathTest, AReverseTransformWorksAsTheFirstOneOfAProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a fresh process, ICU untouched
    EXPECT_EXIT(std::exit(transformed(Kind::fromXMLHex, u"&#x41;") == u"A" ? 0 : 1),
                testing::ExitedWithCode(0), "");
}

TEST(CaseMapping, FollowsTheLocalesRules) {
    const icu::Locale english("en_US");
    EXPECT_EQ(localizedUppercase(u"straße ﬀ", english), u"STRASSE FF");
    EXPECT_EQ(localizedUppercase(u"iı", icu::Locale("tr_TR")), u"İI");
    EXPECT_EQ(localizedUppercase(u"ά", icu::Locale("el_GR")), u"Α");
    EXPECT_EQ(localizedLowercase(u"ÀB", english), u"àb");
    const std::pair<std::u16string_view, std::u16string_view> capitalised[] = {
        {u"hELLO wORLD", u"Hello World"},
        {u"don't stop / Nat’s test can’t run", u"Don't Stop / Nat’s Test Can’t Run"},
        {u"1st 78dollars 49ERS", u"1st 78dollars 49ers"},
        {u"a1b x_y hello-world", u"A1b X_y Hello-World"},
        {u"u.s.a. / 3.dollars / Th.he", u"U.S.A. / 3.Dollars / Th.He"},
        {u"ß ﬀ", u"Ss Ff"},
    };
    for (const auto& [input, expected] : capitalised) {
        EXPECT_EQ(localizedCapitalized(input, english), expected);
    }
    EXPECT_EQ(localizedCapitalized(u"ijssEl", icu::Locale("nl_NL")), u"IJssel");
}

}  // namespace
}  // namespace quod
