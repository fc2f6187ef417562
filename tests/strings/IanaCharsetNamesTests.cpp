#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

#include "quoddle/strings/IanaCharsetNames.h"

namespace quod {
namespace {

constexpr EncodingNumber unknown = Encodings::unknownCharsetName;

std::string withCase(std::string name, int (*change)(int)) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [change](char c) { return static_cast<char>(change(c)); });
    return name;
}

// Every spelling recorded from the platform: the platform's own names, and ICU's aliases that it
// resolves through its fallback, which only the rules (prefixes, ICU's loose form) can reproduce.
TEST(IanaCharsetNames, ReproducesEveryRecordedAnswerInAnyCase) {
    std::ifstream file(QUODDLE_STRINGS_TEST_DATA "/iana-names-recorded.tsv");
    ASSERT_TRUE(file) << "test data missing";
    std::string line;
    int rows = 0;
    while (std::getline(file, line)) {
        if (line.starts_with('#') || line.starts_with("iana_name")) continue;
        std::istringstream fields(line);
        std::string name, core, number;
        std::getline(fields, name, '\t');
        std::getline(fields, core, '\t');
        std::getline(fields, number, '\t');
        const EncodingNumber expected = std::stoull(number);
        EXPECT_EQ(encodingForIanaCharsetName(name), expected) << name;
        EXPECT_EQ(encodingForIanaCharsetName(withCase(name, ::toupper)), expected) << name;
        EXPECT_EQ(encodingForIanaCharsetName(withCase(name, ::tolower)), expected) << name;
        ++rows;
    }
    EXPECT_EQ(rows, 742);
}

TEST(IanaCharsetNames, SpellingDecidesAsOnThePlatform) {
    // Spellings that the recorded answers do not list: they reach the rules in other ways.
    const std::pair<std::string, EncodingNumber> cases[] = {
        // The same encoding under different spellings gives different numbers.
        {"ShiftJIS", Encodings::shiftJIS},
        {"Big-5", 0x8000'0423},
        {"UTF16LE", Encodings::unicode},
        {"utf8", Encodings::utf8},
        {"x-mac-roman", Encodings::macOSRoman},
        {" utf-8", Encodings::utf8},  // ICU's loose form drops the space
        // Prefix rules read numbers like strtol and ignore what follows.
        {"iso-8859-12", 0x8000'020C},  // a valid number without a display name
        {"cp28602", 0x8000'020C},
        {"iso-8859-1 standalone", Encodings::isoLatin1},
        {"windows-1252x", Encodings::windowsCP1252},
        {"iso-8859-17", unknown},
        {"iso-8859-0", unknown},
        {"macintosh-foo", Encodings::macOSRoman},
        {"x-mac-utf-8", Encodings::utf8},
        {"x-mac-macintosh", unknown},  // MacRoman's table entry reads as "not found"
        // "windows-<N>" never reaches ICU; "cp367" does.
        {"windows-57002", unknown},
        {"windows-367", unknown},
        // A name that begins with its converter's standard name is skipped by the platform.
        {"euc-jp-2007", unknown},
        {"EUC_JP_2007", Encodings::japaneseEUC},
        {"ms950-anything", 0x8000'0423},
        {"UTF32BE", unknown},
        {"HZ", unknown},
        {"x-mac-dingbat", unknown},
        {"bogus", unknown},
        {"", unknown},
        // The name travels as an ASCII C string of at most 99 bytes.
        {std::string("utf-8\0junk", 10), Encodings::utf8},
        {"utf-8\xC3\xA9", unknown},
        {"iso-8859-1" + std::string(89, 'x'), Encodings::isoLatin1},
        {"iso-8859-1" + std::string(90, 'x'), unknown},
    };
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(encodingForIanaCharsetName(name), expected) << name;
    }
}

}  // namespace
}  // namespace quod
