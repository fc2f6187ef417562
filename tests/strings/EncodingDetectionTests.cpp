#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "quoddle/strings/Data.h"
#include "quoddle/strings/EncodingDetection.h"

namespace quod {
namespace {

constexpr EncodingNumber unknown = Encodings::unknownCharsetName;

Data bytes(std::string_view text) {
    return Data(text.begin(), text.end());
}

struct Case {
    std::string_view what;
    std::string text;
    EncodingNumber expected;
};

TEST(GuessEncoding, ReadsTheFirstCharsetDeclaration) {
    const Case cases[] = {
        {"HTML 4 meta", R"(<meta content="text/html; charset=iso-8859-1">)", Encodings::isoLatin1},
        {"up to >", "<meta charset=iso-8859-1>", Encodings::isoLatin1},
        {"double quotes", R"(<meta charset="utf-8">)", Encodings::utf8},
        {"single quotes", "<meta charset='utf-8'>", Encodings::none},
        {"single quotes stop the encoding= search",
         R"(<meta charset='utf-8'><?xml version="1.0" encoding="UTF-16"?>)", Encodings::none},
        {"ends the text", "<html><meta charset=utf-8", Encodings::none},
        {"empty", "<html><meta charset=>", Encodings::none},
        {"empty in quotes", R"(<meta charset="">)", Encodings::none},
        {"ends at a slash", "<meta charset=utf-8/>", Encodings::utf8},
        {"ends at a space", "<meta charset=utf-8 >", Encodings::utf8},
        {"a tab is part of the name", "<meta charset=utf-8\tx>", unknown},
        {"letter case", "<META CHARSET=ISO-8859-1>", Encodings::isoLatin1},
        {"long s folds to s", "<meta char\u017Fet=utf-8>", Encodings::utf8},
        {"the first one counts", "charset=x charset=utf-8>", unknown},
        {"charset= wins over an earlier encoding=",
         R"(<?xml version="1.0" encoding="UTF-16"?><meta charset="iso-8859-2">)",
         Encodings::isoLatin2},
        {"unknown names are passed on", "<meta charset=klingon>", unknown},
        {"a name that is not ASCII", "<meta charset=\u00E9t\u00E9>", unknown},
        {"NUL bytes are text", std::string("<meta charset=utf-8>\0\0", 22), Encodings::utf8},
    };
    for (const auto& [what, text, expected] : cases) {
        EXPECT_EQ(Text::guessEncoding(bytes(text)), expected) << what;
    }
}

TEST(GuessEncoding, ReadsAnXmlDeclarationUpToItsEnd) {
    const Case cases[] = {
        {"double quotes", R"(<?xml version="1.0" encoding="UTF-16"?>)", Encodings::unicode},
        {"apostrophes", "<?xml version='1.0' encoding='ISO-8859-2'?>", Encodings::isoLatin2},
        {"a standalone attribute stays in the name",
         R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)", unknown},
        {"which ISO names survive",
         R"(<?xml version="1.0" encoding="ISO-8859-1" standalone="no"?>)", Encodings::isoLatin1},
        {"the character after = is skipped unseen", "<?xml encoding=UTF-8?>", unknown},
        {"nothing after =", R"(<?xml version="1.0" encoding=)", Encodings::none},
        {"no ?>", R"(<?xml version="1.0" encoding="UTF-8">)", Encodings::none},
        {"nothing before ?>", R"(<?xml version="1.0" encoding="?>)", Encodings::none},
        {"only a quote before ?>", R"(<?xml version="1.0" encoding=""?>)", unknown},
        {"half a surrogate pair starts the name", "<?xml version=1 encoding=\U0001F600?>", unknown},
    };
    for (const auto& [what, text, expected] : cases) {
        EXPECT_EQ(Text::guessEncoding(bytes(text)), expected) << what;
    }
}

TEST(GuessEncoding, AnswersZeroForShortOrInvalidTextAndForMarksAlone) {
    const Case cases[] = {
        {"9 units", "charset=a", Encodings::none},
        {"10 units", "charset=a>", unknown},
        {"declared, then a stray byte", "<meta charset=utf-8>\xFF", Encodings::none},
        {"a sequence cut off at the end", "<meta charset=utf-8>\xC3", Encodings::none},
        {"an encoded surrogate", "<meta charset=utf-8>\xED\xA0\x80", Encodings::none},
        {"an overlong slash", "<meta charset=utf-8>\xC0\xAF", Encodings::none},
        {"UTF-8 mark and plain text", "\xEF\xBB\xBFplain text without declarations",
         Encodings::none},
        {"UTF-8 mark and a declaration", "\xEF\xBB\xBF<meta charset=\"utf-8\">", Encodings::utf8},
        {"UTF-16 mark", std::string("\xFF\xFEp\0l\0a\0i\0n\0 \0t\0e\0x\0t\0", 22), Encodings::none},
    };
    for (const auto& [what, text, expected] : cases) {
        EXPECT_EQ(Text::guessEncoding(bytes(text)), expected) << what;
    }
}

TEST(DetectEncoding, ReadsMarksThenUtf8ThenStatistics) {
    const std::string german =
        "Gr\xFC\xDF"
        "e aus M\xFCnchen, sch\xF6ne Stra\xDF"
        "e.\n";
    // "Привет, как дела? Это тестовый текст на русском языке." in windows-1251
    const std::string russian =
        "\xCF\xF0\xE8\xE2\xE5\xF2, \xEA\xE0\xEA \xE4\xE5\xEB\xE0? \xDD\xF2\xEE "
        "\xF2\xE5\xF1\xF2\xEE\xE2\xFB\xE9 \xF2\xE5\xEA\xF1\xF2 \xED\xE0 \xF0\xF3\xF1\xF1\xEA\xEE"
        "\xEC \xFF\xE7\xFB\xEA\xE5.";
    // "これは日本語のテキストです。" in Shift_JIS
    const std::string japanese =
        "\x82\xB1\x82\xEA\x82\xCD\x93\xFA\x96\x7B\x8C\xEA\x82\xCC\x83\x65\x83\x4C\x83\x58\x83\x67"
        "\x82\xC5\x82\xB7\x81\x42";
    std::string english;
    while (english.size() < 100'000)
        english += "The quick brown fox jumps over the lazy dog. ";
    const Case cases[] = {
        {"nothing", "", Encodings::none},
        {"UTF-8 mark", "\xEF\xBB\xBFz", Encodings::utf8},
        {"UTF-32 little-endian mark", std::string("\xFF\xFE\0\0z\0\0\0", 8),
         Encodings::utf32LittleEndian},
        {"UTF-32 big-endian mark", std::string("\0\0\xFE\xFF\0\0\0z", 8),
         Encodings::utf32BigEndian},
        {"UTF-16 little-endian mark", std::string("\xFF\xFEz\0", 4), Encodings::utf16LittleEndian},
        {"UTF-16 big-endian mark", std::string("\xFE\xFF\0z", 4), Encodings::utf16BigEndian},
        {"ASCII", "plain text", Encodings::utf8},
        {"UTF-8", "gr\u00FC\u00DF dich", Encodings::utf8},
        {"UTF-16 without a mark",
         std::string("H\0e\0l\0l\0o\0 \0w\0o\0r\0l\0d\0,\0 \0t\0h\0i\0s\0 \0i\0s\0 \0t\0e\0x\0t\0",
                     50),
         Encodings::utf16LittleEndian},
        // ISO Latin 1 decodes it the same way, so the superset is the answer.
        {"Latin-1", german, Encodings::windowsCP1252},
        {"windows-1251", russian, Encodings::windowsCP1251},
        {"Shift_JIS", japanese, Encodings::shiftJIS},
        {"ISO-2022-JP escapes are 7-bit but not UTF-8", "\x1B$B$3$l$O$\"$F$9$H$G$9\x1B(B",
         Encodings::iso2022JP},
        {"UTF-16 Cyrillic without a mark",
         std::string(
             "\x1F\x04\x40\x04\x38\x04\x32\x04\x35\x04\x42\x04 \0\x3C\x04\x38\x04\x40\x04\n\0", 22),
         Encodings::utf16LittleEndian},
        {"binary with NULs on both sides", std::string("\x01\0\0\x02\xFF\0\0\x85\x10\0\0\x03", 12),
         Encodings::none},
        // A sample from the start of the file would see English only.
        {"Cyrillic after 100 KB of English", english + russian, Encodings::windowsCP1251},
        {"one stray byte", "\xFF", Encodings::none},
    };
    for (const auto& [what, text, expected] : cases) {
        EXPECT_EQ(Text::detectEncoding(bytes(text)), expected) << what;
    }
}

// Bytes fed in pieces, cut anywhere (inside a keyword, a declared value, a UTF-8 sequence, a mark),
// get the answers the functions give for all of them; and the pieces settle them whenever no more
// than a first look is needed.
TEST(EncodingScan, AnswersAsTheWholeBytesWould) {
    const std::string_view fragments[] = {"text ",
                                          "charset=",
                                          "CHARSET=",
                                          "chars",
                                          "et=",
                                          "char\xC5\xBF"
                                          "et=",
                                          "encoding=",
                                          "<?xml version=\"1.0\" encoding=\"",
                                          "?>",
                                          "\"",
                                          "'",
                                          " ",
                                          "/",
                                          ">",
                                          "utf-8",
                                          "iso-8859-1",
                                          "windows-1252",
                                          "x-nonsense",
                                          "UTF-16",
                                          "\xC3\xA9",
                                          "\xE2\x82\xAC",
                                          "\xF0\x9F\x98\x80",
                                          "\xC3",
                                          "\xFF",
                                          std::string_view("\0", 1),
                                          "\x1B$B",
                                          "\n"};
    const std::string_view marks[] = {"",         "",         "\xEF\xBB\xBF",
                                      "\xFF\xFE", "\xFE\xFF", "\xFF\xFE\0\0"};
    std::mt19937 random(11);
    int settledDetections = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text(marks[random() % std::size(marks)]);
        for (auto count = random() % 12; count > 0; --count)
            text += fragments[random() % std::size(fragments)];
        std::vector<std::size_t> cuts{0, text.size()};
        for (auto count = random() % 5; count > 0; --count)
            cuts.push_back(random() % (text.size() + 1));
        std::sort(cuts.begin(), cuts.end());
        Text::EncodingScan scan;
        for (std::size_t k = 0; k + 1 < cuts.size(); ++k) {
            scan.append(std::span(reinterpret_cast<const std::uint8_t*>(text.data()) + cuts[k],
                                  cuts[k + 1] - cuts[k]));
        }
        const Data all = bytes(text);
        SCOPED_TRACE(testing::PrintToString(text));
        ASSERT_EQ(scan.size(), text.size());
        // Declared values here are short, so the guess is always settled.
        ASSERT_EQ(scan.guessedEncoding(), Text::guessEncoding(all));
        const bool plainUtf8 = scan.isWellFormedUtf8() && text.find('\0') == std::string::npos &&
                               text.find('\x1B') == std::string::npos;
        if (const auto detected = scan.detectedEncoding()) {
            ASSERT_EQ(*detected, Text::detectEncoding(all));
            ++settledDetections;
        } else {
            ASSERT_FALSE(plainUtf8) << "plain UTF-8 is settled by a first look";
        }
    }
    EXPECT_GT(settledDetections, 5000);
}

TEST(EncodingScan, LeavesALongDeclaredValueToTheWholeBytes) {
    const std::string text = "<meta charset=" + std::string(5000, 'x') + ">";
    Text::EncodingScan scan;
    scan.append(bytes(text));
    EXPECT_EQ(scan.guessedEncoding(), std::nullopt);
    EXPECT_EQ(scan.detectedEncoding(), Encodings::utf8);
}

}  // namespace
}  // namespace quod
