#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "quoddle/base/Utf.h"
#include "quoddle/text/DecodedText.h"

namespace quod {
namespace {

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

struct Written {
    bool encodable = false;
    std::string bytes;
    int pieces = 0;
};

Written written(const TextStorage& text, EncodingNumber encoding,
                std::span<const std::uint8_t> mark = {}) {
    Written result;
    result.encodable =
        writeDocument(text, encoding, mark, [&result](std::span<const std::uint8_t> bytes) {
            result.bytes.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
            ++result.pieces;
        });
    return result;
}

// Decodes and writes back, expecting the same bytes.
void expectRoundTrip(std::string_view bytes, EncodingNumber expectedEncoding) {
    const auto decoded = decodeDocument(bytesOf(bytes));
    ASSERT_TRUE(decoded) << bytes;
    EXPECT_EQ(decoded->encoding, expectedEncoding) << bytes;
    EXPECT_EQ(written(decoded->storage, decoded->encoding, decoded->byteOrderMark).bytes, bytes);
}

TEST(DecodedText, DeclaredEncodingWinsWhenTheBytesFitIt) {
    // Declarations are only read from UTF-8 bytes, so a declared encoding can only differ from
    // what the bytes suggest for ASCII-only text, or fail to fit them.
    const std::string html = "<meta charset=\"iso-8859-1\"><p>cafe</p>\r\n";
    const auto decoded = decodeDocument(bytesOf(html));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->encoding, Encodings::isoLatin1);
    EXPECT_EQ(decoded->storage.string(), u"<meta charset=\"iso-8859-1\"><p>cafe</p>\r\n");
    expectRoundTrip(html, Encodings::isoLatin1);

    // Declared ASCII, but the bytes are UTF-8 beyond it: what the bytes suggest decides.
    const std::string mislabelled =
        "<?xml version=\"1.0\" encoding=\"us-ascii\"?><t>Gr\xC3\xBC\xC3\x9F"
        "e</t>\r\n";
    const auto fallback = decodeDocument(bytesOf(mislabelled));
    ASSERT_TRUE(fallback);
    EXPECT_EQ(fallback->encoding, Encodings::utf8);
    EXPECT_NE(fallback->storage.string().find(u"Grüße"), std::u16string::npos);
    expectRoundTrip(mislabelled, Encodings::utf8);

    // Nothing declared and not UTF-8: the detector's answer.
    const std::string latin1 =
        "Gr\xFC\xDF"
        "e aus K\xF6ln, sch\xF6ne Stra\xDF"
        "e, \xE0 bient\xF4t, ch\xE8re amie.\r\n";
    const auto detected = decodeDocument(bytesOf(latin1));
    ASSERT_TRUE(detected);
    EXPECT_NE(detected->encoding, Encodings::utf8);
    expectRoundTrip(latin1, detected->encoding);
}

TEST(DecodedText, APreferredEncodingDecidesWhenTheBytesFitIt) {
    // UTF-8 bytes read as Latin-1 when the user asks for Latin-1: every byte is a character there.
    const std::string utf8 =
        "Gr\xC3\xBC\xC3\x9F"
        "e\n";
    const auto latin1 = decodeDocument(bytesOf(utf8), Encodings::isoLatin1);
    ASSERT_TRUE(latin1);
    EXPECT_EQ(latin1->encoding, Encodings::isoLatin1);
    EXPECT_EQ(latin1->storage.string(), u"Gr\u00C3\u00BC\u00C3\u009Fe\n");

    // Latin-1 bytes are no UTF-8: the preference gives way to detection instead of failing.
    const std::string notUtf8 =
        "Stra\xDF"
        "e in K\xF6ln, sch\xF6ne Gr\xFC\xDF"
        "e\n";
    const auto fallback = decodeDocument(bytesOf(notUtf8), Encodings::utf8);
    ASSERT_TRUE(fallback);
    EXPECT_NE(fallback->encoding, Encodings::utf8);

    // No preference is the plain decision.
    EXPECT_EQ(decodeDocument(bytesOf(utf8), Encodings::none)->encoding, Encodings::utf8);
}

TEST(DecodedText, ByteOrderMarksAreKeptOutOfTheTextAndWrittenBack) {
    const std::string utf8 = "\xEF\xBB\xBFna\xC3\xAFve\r\n";
    const auto decoded = decodeDocument(bytesOf(utf8));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->storage.string(), u"naïve\r\n");
    EXPECT_EQ(decoded->byteOrderMark, (Data{0xEF, 0xBB, 0xBF}));
    expectRoundTrip(utf8, Encodings::utf8);
    expectRoundTrip(std::string("\xFF\xFEh\0i\0\r\0\n\0", 10), Encodings::utf16LittleEndian);
}

TEST(DecodedText, ANamedEncodingIsTheOnlyOneTried) {
    // Well-formed UTF-8 that a user says is Latin-1 reads as Latin-1, not as what it declares.
    const std::string declared = "<meta charset=utf-8> caf\xC3\xA9";
    const auto latin1 = decodeDocumentAs(bytesOf(declared), Encodings::isoLatin1);
    ASSERT_TRUE(latin1);
    EXPECT_EQ(latin1->encoding, Encodings::isoLatin1);
    EXPECT_EQ(latin1->storage.string(), u"<meta charset=utf-8> caf\u00C3\u00A9");
    // Bytes that do not decode in it give nothing rather than another encoding's reading.
    EXPECT_FALSE(decodeDocumentAs(bytesOf("caf\xE9"), Encodings::utf8));
    EXPECT_FALSE(decodeDocumentAs(bytesOf("text"), Encodings::none));
    const auto marked =
        decodeDocumentAs(bytesOf(std::string("\xFF\xFEh\0i\0", 6)), Encodings::utf16LittleEndian);
    ASSERT_TRUE(marked);
    EXPECT_EQ(marked->storage.string(), u"hi");
    EXPECT_EQ(marked->byteOrderMark, (Data{0xFF, 0xFE}));
    const auto empty = decodeDocumentAs({}, Encodings::windowsCP1252);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->encoding, Encodings::windowsCP1252);
}

TEST(DecodedText, BytesNoEncodingDecodesWholeGiveNoText) {
    EXPECT_FALSE(
        decodeDocument(bytesOf("\xEF\xBB\xBF"
                               "ab\xFF\xFE")));
    const auto empty = decodeDocument({});
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->encoding, Encodings::utf8);
    EXPECT_EQ(empty->storage.length(), 0);
}

TEST(DecodedText, WritingRefusesCharactersTheEncodingLacksBeforeAnyByte) {
    const Written greek = written(TextStorage(u"café Ω"), Encodings::isoLatin1);
    EXPECT_FALSE(greek.encodable);
    EXPECT_EQ(greek.pieces, 0);
    const Written latin = written(TextStorage(u"café"), Encodings::isoLatin1);
    EXPECT_TRUE(latin.encodable);
    EXPECT_EQ(latin.bytes, "caf\xE9");
}

TEST(DecodedText, LargeUtf8TextGoesOutInPiecesWithoutSplittingAPair) {
    // A surrogate pair straddles the first slice boundary (1 << 20 units).
    std::u16string text(1 << 20, u'x');
    text.replace((1 << 20) - 1, 1, u"😀");
    text += u"tail";
    const Written result = written(TextStorage(text), Encodings::utf8);
    EXPECT_TRUE(result.encodable);
    EXPECT_GT(result.pieces, 2);
    EXPECT_EQ(result.bytes, toUtf8(text));
}

// Whenever a scan of the bytes settles on UTF-8, decodeDocument reads them as UTF-8 with the same
// mark; and plain UTF-8 is always settled.
TEST(DecodedText, AScanSettlesUtf8AsDecodingTheWholeWould) {
    const std::string_view fragments[] = {"some text ",
                                          "charset=utf-8\"",
                                          "charset=iso-8859-1 ",
                                          "charset=x-none>",
                                          "<?xml encoding=\"UTF-8\"?>",
                                          "<?xml encoding='utf-16'?>",
                                          "\xC3\xA9",
                                          "\xFF",
                                          "\xE2\x82",
                                          std::string_view("\0", 1),
                                          "\x1B$B",
                                          "\n"};
    const std::string_view marks[] = {"", "", "\xEF\xBB\xBF", "\xFF\xFE"};
    std::mt19937 random(5);
    int settled = 0;
    for (int round = 0; round < 5000; ++round) {
        std::string text(marks[random() % std::size(marks)]);
        for (auto count = random() % 8; count > 0; --count)
            text += fragments[random() % std::size(fragments)];
        Text::EncodingScan scan;
        const std::size_t cut = random() % (text.size() + 1);
        scan.append(bytesOf(text).first(cut));
        scan.append(bytesOf(text).subspan(cut));
        const auto whole = decodeDocument(bytesOf(text));
        SCOPED_TRACE(testing::PrintToString(text));
        if (const auto chosen = settledUtf8Encoding(scan)) {
            ++settled;
            ASSERT_TRUE(whole);
            EXPECT_EQ(whole->encoding, Encodings::utf8);
            EXPECT_EQ(whole->byteOrderMark, chosen->byteOrderMark);
        } else if (whole && whole->encoding == Encodings::utf8 &&
                   text.find_first_of(std::string_view("\0\x1B", 2)) == std::string::npos &&
                   text.find("iso-8859-1") == std::string::npos &&
                   text.find("utf-16") == std::string::npos) {
            ADD_FAILURE() << "plain UTF-8 was left to the whole bytes";
        }
    }
    EXPECT_GT(settled, 1000);
}

}  // namespace
}  // namespace quod
