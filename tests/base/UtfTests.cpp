#include <gtest/gtest.h>

#include <random>

#include "quoddle/base/Utf.h"

namespace quod {
namespace {

TEST(Utf, RoundTripsEveryEncodedLength) {
    // One-, two-, three- and four-byte sequences, in runs long enough for the ASCII fast path.
    const std::string utf8 = "plain ascii text! caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 end";
    const std::u16string utf16 = u"plain ascii text! café € 😀 end";
    EXPECT_EQ(toUtf16(utf8), utf16);
    EXPECT_EQ(toUtf8(utf16), utf8);
    EXPECT_EQ(toUtf16IfValid(utf8), utf16);
    EXPECT_EQ(toUtf16(""), u"");
}

TEST(Utf, IllFormedSequencesBecomeOneReplacementEach) {
    struct Case {
        std::string bytes;
        std::u16string expected;
    };
    const Case cases[] = {
        {"a\x80z", u"a\uFFFDz"},                  // stray continuation byte
        {"a\xC3", u"a\uFFFD"},                    // truncated at the end
        {"\xE2\x82z", u"\uFFFDz"},                // truncated three-byte sequence: one replacement
        {"\xC0\xAF", u"\uFFFD\uFFFD"},            // overlong lead is never valid
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},  // encoded surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // above U+10FFFF
        {"\xF0\x9F\x98", u"\uFFFD"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(toUtf16(c.bytes), c.expected) << c.bytes;
        EXPECT_EQ(toUtf16IfValid(c.bytes), std::nullopt) << c.bytes;
    }
}

TEST(Utf, UnpairedSurrogatesEncodeAsReplacement) {
    EXPECT_EQ(toUtf8(std::u16string{u'a', char16_t(0xD800), u'b'}),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(toUtf8(std::u16string{char16_t(0xDC00)}), "\xEF\xBF\xBD");
    EXPECT_EQ(toUtf8(std::u16string{char16_t(0xD83D)}), "\xEF\xBF\xBD");
}

// Encoding agrees with decoding back, run by run, for texts that put every kind of unit at every
// place of the four-unit ASCII blocks: ASCII, two- and three-byte characters, pairs, and lone
// halves (which come back as U+FFFD).
TEST(Utf, EncodesEveryKindOfUnitAtEveryPlaceOfABlock) {
    const std::u16string pieces[] = {u"a",      u"\u00E9", u"\u20AC", u"\U0001F600", u"\n",
                                     u"\u007F", u"\u0080", u"\u07FF", u"\u0800",     u"\uFFFF"};
    std::mt19937 random(9);
    for (int round = 0; round < 3000; ++round) {
        std::u16string text;
        std::u16string expected;
        for (auto count = random() % 14; count > 0; --count) {
            if (random() % 9 == 0) {
                const char16_t half = random() % 2 == 0 ? char16_t(0xD83D) : char16_t(0xDE00);
                // A lone half, unless it happens to pair with its neighbour.
                text += half;
                expected += half;
                continue;
            }
            const std::u16string& piece = pieces[random() % std::size(pieces)];
            text += piece;
            expected += piece;
        }
        const std::string encoded = toUtf8(text);
        // Whatever paired stays; whatever did not is U+FFFD, as decoding the bytes shows.
        std::u16string paired;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            const char16_t unit = expected[i];
            if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < expected.size() &&
                expected[i + 1] >= 0xDC00 && expected[i + 1] <= 0xDFFF) {
                paired += unit;
                paired += expected[++i];
            } else if (unit >= 0xD800 && unit <= 0xDFFF) {
                paired += u'\uFFFD';
            } else {
                paired += unit;
            }
        }
        ASSERT_EQ(toUtf16IfValid(encoded), paired) << testing::PrintToString(text);
    }
}

}  // namespace
}  // namespace quod
