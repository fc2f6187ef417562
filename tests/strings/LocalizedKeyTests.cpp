// Collation keys against localizedStandardCompare: on random strings, keys that differ order their
// strings as the comparison does, and equal keys leave the order to localizedStandardTieBreak.
// The strings mix pure Latin-1 text (keyed without normalising) with combining marks and other
// scripts (keyed with it), so both collators are checked against the one comparison uses.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "quoddle/strings/LocalizedCompare.h"

namespace quod {
namespace {

std::vector<uint8_t> keyOf(std::u16string_view text, const icu::Locale& locale) {
    std::vector<uint8_t> key(4);
    const std::size_t needed = localizedStandardKey(text, key.data(), key.size(), locale);
    if (needed > key.size()) {
        key.resize(needed);
        EXPECT_EQ(localizedStandardKey(text, key.data(), key.size(), locale), needed);
    }
    key.resize(needed);
    return key;
}

std::weak_ordering byKeys(std::u16string_view a, std::u16string_view b, const icu::Locale& locale) {
    const auto keyA = keyOf(a, locale);
    const auto keyB = keyOf(b, locale);
    const int bytes = std::memcmp(keyA.data(), keyB.data(), std::min(keyA.size(), keyB.size()));
    if (bytes != 0) return bytes < 0 ? std::weak_ordering::less : std::weak_ordering::greater;
    if (keyA.size() != keyB.size()) return keyA.size() <=> keyB.size();
    return localizedStandardTieBreak(a, b);
}

std::u16string randomString(std::mt19937& random, bool latin1Only) {
    static const std::u16string latin1[] = {u"a",      u"A",      u"o",      u"O",      u"1",
                                            u"0",      u"42",     u" ",      u"-",      u"\u00E9",
                                            u"\u00C9", u"\u00DF", u"\u00E6", u"\u00A0", u"\u00AD",
                                            u"\t",     u"\u0001", u"\u00BD"};
    static const std::u16string others[] = {u"e\u0301", u"\u0301",     u"\u0323", u"\u0302",
                                            u"\u0327",  u"\u031B",     u"\u0308", u"\u0344",
                                            u"\u0663",  u"\uFF11",     u"\u03B1", u"\u0416",
                                            u"\u65E5",  u"\U0001F600", u"\u212B", u"\u00C5"};
    std::u16string text;
    const int length = static_cast<int>(random() % 7);
    for (int i = 0; i < length; ++i) {
        if (latin1Only || random() % 3 != 0) {
            text += latin1[random() % std::size(latin1)];
        } else {
            text += others[random() % std::size(others)];
        }
    }
    return text;
}

// The same text spelled another way: canonically equivalent, but with marks in another order and
// letters decomposed, which only a normalising collator sees as the same.
std::u16string respelled(std::u16string text) {
    const std::pair<std::u16string, std::u16string> spellings[] = {
        {u"\u0301\u0323", u"\u0323\u0301"}, {u"\u00E9", u"e\u0301"}, {u"\u0344", u"\u0308\u0301"}};
    for (const auto& [from, to] : spellings) {
        for (std::size_t at = text.find(from); at != std::u16string::npos; at = text.find(from, at))
            text.replace(at, from.size(), to);
    }
    return text;
}

TEST(LocalizedKey, KeysOrderStringsAsTheComparisonDoes) {
    for (const char* name : {"en_US", "de_DE", "sv_SE", "da_DK"}) {
        const icu::Locale locale(name);
        std::mt19937 random(7);
        for (int round = 0; round < 4000; ++round) {
            const bool latin1Only = round % 2 == 0;
            const std::u16string a = randomString(random, latin1Only);
            const std::u16string b =
                round % 4 == 1 ? respelled(a) : randomString(random, latin1Only);
            ASSERT_EQ(byKeys(a, b, locale), localizedStandardCompare(a, b, locale))
                << name << " round " << round;
        }
    }
}

TEST(LocalizedKey, ShortBufferAsksForTheRoomTheKeyNeeds) {
    const icu::Locale locale("en_US");
    uint8_t tiny[2];
    const std::size_t needed = localizedStandardKey(u"résumé 2024", tiny, sizeof tiny, locale);
    EXPECT_GT(needed, sizeof tiny);
    EXPECT_EQ(keyOf(u"résumé 2024", locale).size(), needed);
}

TEST(LocalizedKey, TieBreakPutsShorterDigitRunsFirstThenUnits) {
    EXPECT_EQ(localizedStandardTieBreak(u"a1", u"a01"), std::weak_ordering::less);
    EXPECT_EQ(localizedStandardTieBreak(u"a01b2", u"a1b02"), std::weak_ordering::greater);
    EXPECT_EQ(localizedStandardTieBreak(u"x", u"x"), std::weak_ordering::equivalent);
    EXPECT_EQ(localizedStandardTieBreak(u"e\u0301", u"\u00E9"), std::weak_ordering::less);
}

}  // namespace
}  // namespace quod
