// The counting scan against ICU alone: on many short random texts built to hit the word and
// cluster rules where the scan hands over to ICU, on real prose, in every set of word rules ICU
// ships, and piece by piece with random splits against the whole.
#include <gtest/gtest.h>
#include <unicode/uvernum.h>

#include <cstdio>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/strings/TextBoundaries.h"
#include "quoddle/text/SelectionStatistics.h"
#include "quoddle/text/internal/SegmentCounting.h"

namespace quod {
namespace Text {
// Failures print the counts rather than their bytes.
void PrintTo(const SelectionCount& count, std::ostream* out) {
    *out << "{" << count.characters << " characters, " << count.words << " words}";
}
}  // namespace Text
namespace {

using Text::SelectionCount;
using Text::internal::SegmentCounter;

// Locales covering the three sets of word rules in ICU's data (root, Finnish/Swedish,
// en_US_POSIX) and a dictionary-breaking one.
const std::vector<const char*> locales = {"root", "en_US", "sv", "fi", "de", "ja", "en_US_POSIX"};

std::string escaped(std::u16string_view text) {
    std::string out;
    for (char16_t unit : text) {
        char buffer[8];
        if (unit >= 0x20 && unit < 0x7F) {
            out += static_cast<char>(unit);
        } else {
            std::snprintf(buffer, sizeof buffer, "\\u%04X", static_cast<unsigned>(unit));
            out += buffer;
        }
    }
    return out;
}

// Pieces that meet in the rules' corner cases: mid-word punctuation between letters and digits,
// connectors, line ends, marks and joiners that attach to what is before them, and the scripts
// that ICU segments by dictionary or with rules of their own.
const std::vector<std::u16string> asciiAtoms = {
    u"a",  u"Z", u"x", u"7", u"0",  u".",  u",",  u"'",    u":",  u";", u"_", u"@",
    u"\"", u"-", u" ", u" ", u"\t", u"\r", u"\n", u"\r\n", u"\v", u"!", u"#", u"e.g."};
const std::vector<std::u16string> otherAtoms = {u"é",
                                                u"ß",
                                                u"e\u0301",
                                                u"\u0301",
                                                u"\u00B7",
                                                u"α",
                                                u"\u0387",
                                                u"я",
                                                u"Ж",
                                                u"\u0483",
                                                u"א",
                                                u"\u05F4",
                                                u"\u05D1\"",
                                                u"ع",
                                                u"\u0600",
                                                u"\u0661",
                                                u"\u066B",
                                                u"ไทย",
                                                u"\u0E31",
                                                u"中文",
                                                u"カタ",
                                                u"ひら",
                                                u"한",
                                                u"\u1100",
                                                u"👍",
                                                u"\U0001F3FD",
                                                u"\u200D",
                                                u"\uFE0F",
                                                u"🇸🇪",
                                                u"\U0001F1E6",
                                                u"\xD83D",
                                                u"\xDC4D",
                                                u"\u0085",
                                                u"\u2028",
                                                u"\u00A0",
                                                u"\u00AD",
                                                u"\u200B",
                                                u"\u2019",
                                                u"\u2018",
                                                u"\u2024",
                                                u"\u202F",
                                                u"\u3000",
                                                u"\uFF0C",
                                                u"\uFF1A",
                                                u"\u00B2",
                                                u"©",
                                                u"\u0915\u094D\u0937",
                                                u"\u2060",
                                                u"\u2003"};

std::u16string randomText(std::mt19937& random, int atoms, int otherPercent) {
    std::u16string text;
    for (int i = 0; i < atoms; ++i) {
        const auto& pool =
            static_cast<int>(random() % 100) < otherPercent ? otherAtoms : asciiAtoms;
        text += pool[random() % pool.size()];
    }
    return text;
}

SelectionCount icuOnly(std::u16string_view text, const icu::Locale& locale) {
    SegmentCounter counter(locale, SegmentCounter::Path::icuOnly);
    counter.add(text, true);
    return counter.count();
}

SelectionCount scanned(SegmentCounter& counter, std::u16string_view text) {
    counter.reset();
    counter.add(text, true);
    return counter.count();
}

// Adds the text in pieces of random lengths, from empty to a little over the text.
SelectionCount inPieces(std::u16string_view text, const icu::Locale& locale, std::mt19937& random) {
    Text::SelectionCounter counter(locale);
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t length = random() % 4 == 0 ? 0 : 1 + random() % (text.size() / 3 + 2);
        counter.add(text.substr(at, length));
        at += std::min(length, text.size() - at);
    }
    return counter.count();
}

// Prose and code as people write them, in the scripts of the locales above and a few more.
const std::vector<std::u16string> samples = {
    u"It's 3.14, not 3,14: e.g. \"a.b.c\" costs $1,000.50 (U.S.A.) at 10:30 on 2024-01-02.\r\n"
    u"Don't split can't; foo_bar@example.com and x:y and S:t Eriks väg... -- ok\n",
    u"Hyvää päivää! Kööpenhamina on Tanskan pääkaupunki, S:t Petersburg ei ole.\n"
    u"Räksmörgås: 1 500 kr; Ångström & Öresund\u2028— slut.\r",
    u"Το Ελληνικό αλφάβητο· «λέξεις» και 3,5 ευρώ. Русский текст, ёжик — 42-й.\n",
    u"שלום עולם, צה\"ל ו-ג'ירפה. مرحبا بالعالم ١٢٣ و ٤٫٥\n",
    u"日本語の文章です。カタカナとひらがな、漢字。ﾃｽﾄ 123、ＡＢＣ。\n한국어 문장입니다.\n",
    u"ภาษาไทยไม่มีช่องว่างระหว่างคำ 12.5 บาท\n",
    u"Emoji: 👨\u200D👩\u200D👧 👍🏽 ❤\uFE0F 🇸🇪🇫🇮 #️⃣ café naïve Zoë résumé "
    u"ñandú\n",
    u"for (int i = 0; i < n; ++i) { total_count += values[i] * 2.5e-3; }\n"
    u"\tif (a->b && c::d) return \"x:y\"; // TODO(me): 1,2,3\n",
};

TEST(SelectionCountDifferential, TheScanRunsForTheUsualLocales) {
    // The scan knows ICU's rules by the hash of their text, recorded from ICU 72; another ICU
    // counts through ICU alone, correctly and slowly, until its rules are checked and recorded.
    if (U_ICU_VERSION_MAJOR_NUM != 72) GTEST_SKIP() << "word rules recorded from ICU 72 only";
    for (const char* name : locales) {
        EXPECT_TRUE(SegmentCounter(icu::Locale(name)).scans()) << name;
    }
    EXPECT_FALSE(SegmentCounter(icu::Locale("en_US"), SegmentCounter::Path::icuOnly).scans());
}

TEST(SelectionCountDifferential, IcuOnlyIsTheDefinition) {
    std::mt19937 random(7);
    const icu::Locale locale("en_US");
    for (int i = 0; i < 300; ++i) {
        const std::u16string text = randomText(random, 1 + static_cast<int>(random() % 30), 40);
        const SelectionCount expected{characterCount(text),
                                      static_cast<int64_t>(wordRanges(text, locale).size())};
        ASSERT_EQ(icuOnly(text, locale), expected) << escaped(text);
    }
}

TEST(SelectionCountDifferential, ScanMatchesIcuOnShortRandomTexts) {
    std::mt19937 random(2024);
    int cases = 0;
    for (const char* name : locales) {
        const icu::Locale locale(name);
        SegmentCounter counter(locale);
        for (int i = 0; i < 15'000; ++i, ++cases) {
            // Mostly ASCII, so most cases exercise the scan and its hand-over rather than ICU.
            const int otherPercent = i % 3 == 0 ? 30 : 6;
            const std::u16string text =
                randomText(random, 1 + static_cast<int>(random() % 14), otherPercent);
            ASSERT_EQ(scanned(counter, text), icuOnly(text, locale))
                << name << " \"" << escaped(text) << "\"";
        }
    }
    EXPECT_GE(cases, 100'000);
}

TEST(SelectionCountDifferential, ScanMatchesIcuOnProse) {
    for (const char* name : locales) {
        const icu::Locale locale(name);
        SegmentCounter counter(locale);
        for (const std::u16string& sample : samples) {
            EXPECT_EQ(scanned(counter, sample), icuOnly(sample, locale))
                << name << " \"" << escaped(sample) << "\"";
        }
    }
}

TEST(SelectionCountDifferential, PiecesCountAsTheWhole) {
    std::mt19937 random(99);
    for (const char* name : {"en_US", "sv", "en_US_POSIX", "ja"}) {
        const icu::Locale locale(name);
        for (int i = 0; i < 3'000; ++i) {
            const std::u16string text =
                randomText(random, 1 + static_cast<int>(random() % 20), i % 2 == 0 ? 25 : 5);
            ASSERT_EQ(inPieces(text, locale, random), icuOnly(text, locale))
                << name << " \"" << escaped(text) << "\"";
        }
        std::u16string prose;
        for (const std::u16string& sample : samples)
            prose += sample;
        for (int i = 0; i < 50; ++i) {
            ASSERT_EQ(inPieces(prose, locale, random), icuOnly(prose, locale)) << name;
        }
    }
}

TEST(SelectionCountDifferential, PiecesKeepOnlyTheUnfinishedSegment) {
    // Counting mid-way and going on gives the same as counting once at the end.
    Text::SelectionCounter counter(icu::Locale("en_US"));
    counter.add(u"one two thr");
    EXPECT_EQ(counter.count(), (SelectionCount{11, 3}));
    counter.add(u"ee e\u0301");
    EXPECT_EQ(counter.count(), (SelectionCount{15, 4}));
    counter.add(u"\u0301x. 4");
    EXPECT_EQ(counter.count(), (SelectionCount{19, 5}));
    counter.add(u".5");
    EXPECT_EQ(counter.count(), (SelectionCount{21, 5}));
}

TEST(SelectionCountDifferential, SelectionCountUsesTheCurrentLocalesRules) {
    const icu::Locale before = currentLocale();
    const std::u16string text = u"x:y e.g. 3.14";
    setCurrentLocale(icu::Locale("en_US"));
    EXPECT_EQ(Text::selectionCount(text, {{0, std::ssize(text)}}).words, 4);
    setCurrentLocale(icu::Locale("sv"));
    EXPECT_EQ(Text::selectionCount(text, {{0, std::ssize(text)}}).words, 3);
    setCurrentLocale(icu::Locale("en_US_POSIX"));
    EXPECT_EQ(Text::selectionCount(text, {{0, std::ssize(text)}}).words, 5);
    setCurrentLocale(before);
}

}  // namespace
}  // namespace quod
