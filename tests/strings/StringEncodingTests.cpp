#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>
#include <vector>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/LocalizedCompare.h"
#include "quoddle/strings/StringEncoding.h"

namespace quod {
namespace {

std::ptrdiff_t positionOf(const std::vector<StringEncoding>& list, std::string_view name) {
    const auto found = std::find_if(list.begin(), list.end(), [name](const StringEncoding& entry) {
        return entry.name == name;
    });
    return found == list.end() ? -1 : found - list.begin();
}

TEST(AllStringEncodings, ListsTheAvailableEncodingsInFileBrowserOrder) {
    const std::vector<StringEncoding>& list = Misc::allStringEncodings();
    ASSERT_EQ(list.size(), 70u);
    std::set<int64_t> tags;
    for (std::size_t i = 0; i < list.size(); ++i) {
        EXPECT_FALSE(list[i].name.empty());
        EXPECT_TRUE(tags.insert(list[i].tag).second) << "repeated " << list[i].tag;
        if (i > 0) {
            EXPECT_TRUE(localizedStandardCompare(toUtf16(list[i - 1].name), toUtf16(list[i].name)) <
                        0)
                << list[i - 1].name << " / " << list[i].name;
        }
    }
    // Embedded numbers sort by value, where plain text order would put UTF-16 first.
    const std::ptrdiff_t utf7 = positionOf(list, "Unicode (UTF-7)");
    const std::ptrdiff_t utf8 = positionOf(list, "Unicode (UTF-8)");
    const std::ptrdiff_t utf16 = positionOf(list, "Unicode (UTF-16)");
    const std::ptrdiff_t utf32 = positionOf(list, "Unicode (UTF-32)");
    EXPECT_TRUE(utf7 >= 0 && utf7 < utf8 && utf8 < utf16 && utf16 < utf32);
    // Tags are the platform's numbers, as stored in preferences.
    const StringEncoding samples[] = {
        {"Western (ISO Latin 1)", 5},           {"Western (Mac OS Roman)", 30},
        {"Unicode (UTF-16BE)", 0x9000'0100},    {"Japanese (Windows, DOS)", 8},
        {"Cyrillic (ISO 8859-5)", 0x8000'0205}, {"Western (EBCDIC Latin 1)", 0x8000'0C02},
    };
    for (const StringEncoding& sample : samples) {
        EXPECT_NE(std::find(list.begin(), list.end(), sample), list.end()) << sample.name;
    }
    // Named, but not offered by the platform.
    EXPECT_EQ(positionOf(list, "Japanese (Shift JIS)"), -1);
}

TEST(AllStringEncodings, IsBuiltOnceWhenThreadsAskAtTheSameTime) {
    std::vector<const std::vector<StringEncoding>*> seen(8);
    std::vector<std::thread> threads;
    for (auto& slot : seen) {
        threads.emplace_back([&slot] { slot = &Misc::allStringEncodings(); });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(std::all_of(seen.begin(), seen.end(),
                            [&](const auto* list) { return list == seen.front(); }));
}

TEST(LocalizedEncodingName, NamesEveryNamedEncodingAndNothingElse) {
    const std::pair<EncodingNumber, std::string_view> cases[] = {
        {Encodings::isoLatin1, "Western (ISO Latin 1)"},
        {Encodings::unicode, "Unicode (UTF-16)"},
        {0x8000'0A01, "Japanese (Shift JIS)"},
        {Encodings::nonLossyASCII, "Non-lossy ASCII"},
        {Encodings::none, ""},
        {0x8000'020C, ""},  // a real number the platform leaves unnamed
        {Encodings::unknownCharsetName, ""},
    };
    for (const auto& [encoding, expected] : cases) {
        EXPECT_EQ(localizedEncodingName(encoding), expected) << encoding;
    }
}

}  // namespace
}  // namespace quod
