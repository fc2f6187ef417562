#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/Data.h"
#include "quoddle/strings/EncodingConversion.h"
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

// `text` (UTF-8 source) in `encoding`, through the framework's own converters.
Data encoded(std::string_view text, EncodingNumber encoding) {
    const auto bytes = encodeText(toUtf16(text), encoding);
    EXPECT_TRUE(bytes.has_value()) << text;
    return bytes.value_or(Data{});
}

constexpr EncodingNumber isoLatin2 = Encodings::isoLatin2;
constexpr EncodingNumber isoLatin4 = 0x8000'0204;
constexpr EncodingNumber isoGreek = 0x8000'0207;

// The traps that a wrong encoding's reading falls into: each text here used to be answered in an
// encoding that turns it into mojibake, or not at all.
TEST(DetectEncoding, TellsLegacyEncodingsApartWhereTheirReadingsLookAlike) {
    struct Legacy {
        std::string_view what;
        std::string_view text;
        EncodingNumber encoding;
        EncodingNumber expected;
    };
    const Legacy cases[] = {
        // windows-1251 reads "è" as the Russian word "и": a lone Cyrillic letter among Latin words.
        {"one accented word in Italian",
         "Il file non esiste oppure non si dispone dei permessi necessari: la cartella è vuota e "
         "il percorso indicato non corrisponde ad alcun elemento presente nel sistema.",
         Encodings::isoLatin1, Encodings::windowsCP1252},
        // IBM 866 reads "ø" as a degree sign in the middle of a word.
        {"Norwegian", "offentlig nøkkel %s er %lu dag nyere enn signaturen\n", Encodings::isoLatin1,
         Encodings::windowsCP1252},
        // GB 18030 reads "\xA9k" as one Chinese character.
        {"Croatian place names",
         "Sveti Petar i Mikelon\nSalzburg\nSardinija\nŠkotska\nŠkotske "
         "granice\nSelnica ob Dravi\n",
         isoLatin2, isoLatin2},
        // windows-1250 reads ť as a closing guillemet that nothing opens.
        {"Slovak in ISO Latin 2",
         "Nemožno otvoriť bázový súbor\nNemožno otvoriť objektový súbor\nNemožno otvoriť "
         "dočasný súbor\n",
         isoLatin2, isoLatin2},
        // ISO 8859-7 reads Ά as an apostrophe that opens a word.
        {"Greek capital with an accent",
         "Άκυρο πρότυπο «%s», δεν πρέπει να περιέχει «%s»\nΆδεια χρήσης για το πρόγραμμα\n",
         Encodings::windowsCP1253, Encodings::windowsCP1253},
        // ISO Latin 2 reads the Lithuanian endings -ų and -ė as Czech ů and ě.
        {"Lithuanian in ISO Latin 4",
         "Vakarų Sulavesis\nPietų Sulavesis\nPietryčių Sulavesis\nŠiaurės Sulavesis\nSurto "
         "savivaldybė\nSan Visentės sala\nRytų Nusa Tengaros provincija\nVakarų Kapas\n",
         isoLatin4, isoLatin4},
        // Separators (here those of message contexts) are not binary data, and words borrowed
        // from several languages still read as Western.
        {"English with separators and borrowed words",
         "menu\x04The café in Zürich\nmenu\x04sold a naïve jalapeño\nbutton\x04résumé for "
         "Müller\nbutton\x04who lives in São Paulo\ntitle\x04and writes about it\ntitle\x04every "
         "single day\nlabel\x04in a notebook\n",
         Encodings::windowsCP1252, Encodings::windowsCP1252},
    };
    for (const auto& [what, text, encoding, expected] : cases) {
        EXPECT_EQ(Text::detectEncoding(encoded(text, encoding)), expected) << what;
    }
    EXPECT_NE(Text::detectEncoding(encoded("Ά", isoGreek)), Encodings::windowsCP1253)
        << "one letter is too little to answer anything confidently";
}

// Long text is scored in part, and the part must neither change how plausible the text looks nor
// hide the one letter that tells two encodings apart.
TEST(DetectEncoding, JudgesLongTextLikeShortText) {
    std::string russian;
    while (russian.size() < 200'000)
        russian += "Это тестовый текст на русском языке, и он довольно длинный.\n";
    EXPECT_EQ(Text::detectEncoding(encoded(russian, Encodings::windowsCP1251)),
              Encodings::windowsCP1251);
    // Only "Ά" reads differently in ISO 8859-7 and windows-1253 (which has "¶" there), and it
    // comes after thousands of letters.
    std::string greek;
    while (greek.size() < 40'000)
        greek += "Η διεργασία τερματίστηκε με επιτυχία και το αρχείο αποθηκεύτηκε.\n";
    greek += "Άδεια χρήσης\n";
    EXPECT_EQ(Text::detectEncoding(encoded(greek, isoGreek)), isoGreek);
}

TEST(DetectEncoding, FindsUnmarkedUtf16InEveryScript) {
    // Japanese and Chinese without ASCII have NULs only in their line ends, if at all; Korean has
    // syllables whose low byte is NUL, so NULs fall on both sides of its units.
    const std::string_view texts[] = {
        "バッファページよりも大きな値をインデックスすることはできません。\nバージョンおよびプラット"
        "フォーム間の互換性がありません。",
        "无法打开文件，请检查路径是否正确并确认您有足够的权限。该操作需要管理员身份。",
        "이 태그가 정렬 모드에 영향을 미칠지에 대한 여부\n이 태그가 배경색에 영향을 미칠지 여부\n"
        "이 태그가 셀 배경색 영향을 미칠지 여부\n대상 파일이 없습니다\n",
    };
    for (const std::string_view text : texts) {
        for (const EncodingNumber order :
             {Encodings::utf16LittleEndian, Encodings::utf16BigEndian}) {
            EXPECT_EQ(Text::detectEncoding(encoded(text, order)), order) << text;
        }
    }
    // Lithuanian letters are U+01xx, so its UTF-16 is all bytes below 0x80 (well-formed UTF-8
    // with NULs), and a bell in a message is not binary data.
    const std::string_view lithuanian =
        "Nepavyko įrašyti failo \a\nNeįmanoma atidaryti kelio: ų, ė, ž ir š\n";
    for (const EncodingNumber order : {Encodings::utf16LittleEndian, Encodings::utf16BigEndian}) {
        EXPECT_EQ(Text::detectEncoding(encoded(lithuanian, order)), order);
    }
    // Byte pairs of a legacy text are not UTF-16, though they decode as such.
    EXPECT_EQ(
        Text::detectEncoding(encoded("Grüße aus München, schöne Straße!", Encodings::isoLatin1)),
        Encodings::windowsCP1252);
}

TEST(DetectEncoding, AnswersNothingForBinaryData) {
    std::mt19937 random(22);
    std::uniform_int_distribution<int> byte(1, 255);  // no NULs, so not UTF-16 by them either
    Data noise(4096);
    for (auto& value : noise)
        value = static_cast<std::uint8_t>(byte(random));
    EXPECT_EQ(Text::detectEncoding(noise), Encodings::none);
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
