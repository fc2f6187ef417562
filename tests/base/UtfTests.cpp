#include <gtest/gtest.h>

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

}  // namespace
}  // namespace quod
