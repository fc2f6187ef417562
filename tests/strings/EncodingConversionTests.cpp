#include <gtest/gtest.h>

#include <string>

#include "quoddle/strings/EncodingConversion.h"
#include "quoddle/strings/StringEncoding.h"

namespace quod {
namespace {

Data bytes(std::string_view text) {
    return Data(text.begin(), text.end());
}

TEST(EncodingConversion, RoundTripsTextTheEncodingCanHold) {
    const std::pair<EncodingNumber, std::u16string_view> cases[] = {
        {Encodings::utf8, u"gr\u00FC\u00DF \U0001F600"},
        {Encodings::utf16, u"gr\u00FC\u00DF \U0001F600"},
        {Encodings::utf16BigEndian, u"gr\u00FC\u00DF \U0001F600"},
        {Encodings::utf16LittleEndian, u"gr\u00FC\u00DF \U0001F600"},
        {Encodings::utf32, u"gr\u00FC\u00DF \U0001F600"},
        {Encodings::utf32BigEndian, u"gr\u00FC\u00DF \U0001F600"},
        {Encodings::utf32LittleEndian, u"gr\u00FC\u00DF \U0001F600"},
        {0x8400'0100, u"gr\u00FC\u00DF \U0001F600"},  // UTF-7
        {Encodings::isoLatin1, u"Gr\u00FC\u00DFe"},
        {Encodings::windowsCP1252, u"\u20ACuro \u201Cquoted\u201D"},
        {Encodings::windowsCP1251, u"\u041F\u0440\u0438\u0432\u0435\u0442"},
        {Encodings::macOSRoman, u"caf\u00E9 \u0192"},
        {Encodings::shiftJIS, u"\u65E5\u672C\u8A9E"},
        {Encodings::japaneseEUC, u"\u65E5\u672C\u8A9E"},
        {Encodings::iso2022JP, u"abc \u65E5\u672C\u8A9E def"},
        {0x8000'0632, u"\u4E2D\u6587"},  // GB 18030
        {Encodings::ascii, u"plain"},
    };
    for (const auto& [encoding, text] : cases) {
        const std::optional<Data> encoded = encodeText(text, encoding);
        ASSERT_TRUE(encoded.has_value()) << encoding;
        EXPECT_EQ(decodeText(*encoded, encoding), std::u16string(text)) << encoding;
    }
}

TEST(EncodingConversion, WritesAndReadsByteOrderMarks) {
    // The byte-order-neutral forms write a mark and this machine's (little-endian) order.
    EXPECT_EQ(encodeText(u"a", Encodings::utf16), (Data{0xFF, 0xFE, 'a', 0}));
    EXPECT_EQ(encodeText(u"a", Encodings::utf32), (Data{0xFF, 0xFE, 0, 0, 'a', 0, 0, 0}));
    EXPECT_EQ(encodeText(u"a", Encodings::utf16BigEndian), (Data{0, 'a'}));
    EXPECT_EQ(encodeText(u"\u00E9", Encodings::isoLatin1), (Data{0xE9}));
    const std::tuple<std::string_view, EncodingNumber, std::u16string_view> decodings[] = {
        {"\xEF\xBB\xBF"
         "a",
         Encodings::utf8, u"a"},
        {"\xEF\xBB\xBF\xEF\xBB\xBF"
         "a",
         Encodings::utf8, u"\uFEFFa"},  // only one mark is dropped
        {std::string_view("\xFF\xFE"
                          "a\0",
                          4),
         Encodings::utf16LittleEndian, u"a"},
        {std::string_view("\xFE\xFF\0a", 4), Encodings::utf16BigEndian, u"a"},
        {std::string_view("\xFF\xFE"
                          "a\0",
                          4),
         Encodings::utf16, u"a"},
        {std::string_view("\xFE\xFF\0a", 4), Encodings::utf16, u"a"},
        {std::string_view("\0a", 2), Encodings::utf16, u"a"},  // no mark: big-endian
        {std::string_view("\xFF\xFE\0\0"
                          "a\0\0\0",
                          8),
         Encodings::utf32LittleEndian, u"a"},
    };
    for (const auto& [input, encoding, expected] : decodings) {
        EXPECT_EQ(decodeText(bytes(input), encoding), std::u16string(expected))
            << testing::PrintToString(input);
    }
}

TEST(EncodingConversion, RefusesWhatDoesNotConvert) {
    const std::pair<std::string_view, EncodingNumber> badBytes[] = {
        {"caf\xE9", Encodings::utf8},
        {"\x80", Encodings::ascii},
        {"\x82", Encodings::shiftJIS},         // a lead byte without its trail byte
        {"\x1B$B\x30", Encodings::iso2022JP},  // half a two-byte character
        {std::string_view("a\0b", 3), Encodings::utf16LittleEndian},  // an odd byte left over
        {"abc", Encodings::none},
        {"abc", Encodings::nextstep},
        {"abc", Encodings::unknownCharsetName},
    };
    for (const auto& [input, encoding] : badBytes) {
        EXPECT_EQ(decodeText(bytes(input), encoding), std::nullopt)
            << encoding << " " << testing::PrintToString(input);
    }
    const std::pair<std::u16string_view, EncodingNumber> badText[] = {
        {u"\u20AC", Encodings::isoLatin1},  {u"\u65E5", Encodings::ascii},
        {u"a\xD800z", Encodings::utf8},     {u"a\xDC00", Encodings::utf16},
        {u"abc", Encodings::nonLossyASCII},
    };
    for (const auto& [text, encoding] : badText) {
        EXPECT_EQ(encodeText(text, encoding), std::nullopt) << encoding;
    }
}

// Every menu entry that claims a converter round-trips plain text, so a wrong converter name in
// the table shows up here; the two the platform converts by itself have none.
TEST(EncodingConversion, ConvertsAllOfTheMenuButNextStepAndNonLossyAscii) {
    for (const StringEncoding& entry : Misc::allStringEncodings()) {
        const auto encoding = static_cast<EncodingNumber>(entry.tag);
        if (encoding == Encodings::nextstep || encoding == Encodings::nonLossyASCII) {
            EXPECT_FALSE(isConvertible(encoding)) << entry.name;
            continue;
        }
        ASSERT_TRUE(isConvertible(encoding)) << entry.name;
        const std::u16string text = u"Hello, World 0123456789";
        const std::optional<Data> encoded = encodeText(text, encoding);
        ASSERT_TRUE(encoded.has_value()) << entry.name;
        EXPECT_EQ(decodeText(*encoded, encoding), text) << entry.name;
    }
}

}  // namespace
}  // namespace quod
