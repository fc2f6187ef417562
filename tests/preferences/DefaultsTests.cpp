#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string_view>
#include <unordered_set>

#include "PreferencesTestSupport.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/preferences/ShouldUpdate.h"

namespace quod {
namespace {

using Defaults::Key;
using testing::PreferencesTest;

TEST(DefaultsKey, CatalogueHasUniqueExactKeyStrings) {
    const auto keys = Key::allCases();
    EXPECT_EQ(keys.size(), 115u);
    EXPECT_EQ(keys.front(), Key::advancedFindIgnoreCase);
    EXPECT_EQ(keys.back(), Key::verticalText);
    std::set<std::string_view> strings;
    for (Key key : keys) {
        EXPECT_TRUE(strings.insert(key.rawValue()).second) << key.rawValue();
        EXPECT_EQ(Key::fromRawValue(key.rawValue()), key) << key.rawValue();
    }
    EXPECT_EQ(std::unordered_set<Key>(keys.begin(), keys.end()).size(), keys.size());

    // The spellings that do not follow the case name, which existing stores hold.
    const std::pair<Key, std::string_view> spellings[] = {
        {Key::advancedFindIgnoreCase, "IgnoreCaseAdvancedFind"},
        {Key::automaticPATH, "AutomaticEnvPath"},
        {Key::completeAutoAfterDelay, "AutocompleteAfterDelay"},
        {Key::editSystemJobs,
         "IWantToEditSystemJobsAndIUnderstandTheRisksAndITakeFullResponsibility"},
        {Key::highlightLine, "HighlightCurrentLine"},
        {Key::printMarginsMin, "MarginsMin"},
        {Key::printSyntaxColors, "PrintSyntaxColours"},
        {Key::resumeNS, "NSQuitAlwaysKeepsWindows"},
        {Key::selectedMode, "ViewMode"},
        {Key::showInternalHelpers, "ListTessivHelper"},
        {Key::spellingGrammarChecking, "GrammarChecking"},
        {Key::substitutionSmartInsertDelete, "SmartInsertDelete"},
        {Key::suppressAlertComplexRun, "AlertComplexWhat"},
        {Key::utf8WithBOM, "UTF8WithBOM"},
        {Key::themes9, "Themes9"},
        {Key::tabWidth, "TabWidth"},
    };
    for (const auto& [key, rawValue] : spellings)
        EXPECT_EQ(key.rawValue(), rawValue);

    for (std::string_view other : {"tabwidth", "TABWIDTH", "TabWidth ", " TabWidth", "", "Tab"}) {
        EXPECT_EQ(Key::fromRawValue(other), std::nullopt) << other;
    }
}

TEST(DefaultsKey, SeventeenKeysHaveNoAccessor) {
    std::set<std::string_view> withoutAccessor;
#define QUOD_IGNORE(...)
#define QUOD_COLLECT(name, rawValue) withoutAccessor.insert(#name);
    QUOD_DEFAULTS_KEYS(QUOD_IGNORE, QUOD_COLLECT)
#undef QUOD_IGNORE
#undef QUOD_COLLECT
    const std::set<std::string_view> expected{
        "exceptions",
        "launchdSectionWhenCollapsed",
        "launchdSectionPathsCollapsed",
        "launchdSectionLimitsCollapsed",
        "launchdSectionRootCollapsed",
        "launchdSectionMiscellaneousCollapsed",
        "launchdSectionEnvironmentVariablesCollapsed",
        "launchdSectionLaunchEventsCollapsed",
        "launchdSectionMachServicesCollapsed",
        "launchdSectionSocketsCollapsed",
        "launchdSectionDeprecatedCollapsed",
        "launchdSectionUnknownCollapsed",
        "launchdSectionNotesCollapsed",
        "launchdSectionTagsCollapsed",
        "resumeNS",
        "securityBookmarks",
        "selectedToolsMode",
    };
    EXPECT_EQ(withoutAccessor, expected);
}

TEST(DefaultsKey, FontAndColorKeys) {
    EXPECT_EQ(Key::Font::allCases().size(), 3u);
    EXPECT_EQ(Key::Font::print.rawValue(), "PrintFont");
    EXPECT_EQ(Key::Font::fromRawValue("TextFont"), Key::Font::text);
    const auto colors = Key::Color::allCases();
    EXPECT_EQ(colors.size(), 15u);
    EXPECT_EQ(colors.front().rawValue(), "APIColour");
    EXPECT_EQ(colors.back().rawValue(), "VariablesColour");
    EXPECT_EQ(Key::Color::fromRawValue("AttributesColour"), Key::Color::attribute);
    EXPECT_EQ(Key::Color::fromRawValue("TextColor"), std::nullopt);  // American spelling
    EXPECT_EQ(Key::Color::fromRawValue("TextFont"), std::nullopt);
}

TEST_F(PreferencesTest, FreshStoreReadsAbsentAnswers) {
    EXPECT_EQ(Defaults::tabWidth.get(), 0);
    EXPECT_FALSE(Defaults::indentWithSpaces.get());
    EXPECT_FALSE(Defaults::resume.get());
    EXPECT_EQ(Defaults::completeAutoAfterDelay.get(), 0.0f);
    EXPECT_EQ(Defaults::fileNameExtension.get(), std::nullopt);
    EXPECT_EQ(Defaults::bookmarks.get(), std::nullopt);
    EXPECT_EQ(Defaults::themes9.get(), std::nullopt);
    EXPECT_EQ(Defaults::syntaxExtensions.get(), std::nullopt);
    EXPECT_TRUE(Defaults::commands.get().empty());
    EXPECT_TRUE(Defaults::snippets.get().empty());
    for (const DefaultFont& font :
         {Defaults::textFont, Defaults::printFont, Defaults::lineNumberFont}) {
        EXPECT_EQ(font.get().fontName(), "Menlo-Regular");
        EXPECT_EQ(font.get().pointSize(), 11.0);
    }
}

TEST_F(PreferencesTest, WritesReachTheStoreUnderTheKeyString) {
    Defaults::tabWidth.set(4);
    Defaults::showLineNumbers.set(true);
    Defaults::printMarginsMin.set(0.5f);
    Defaults::languageToken.set("//");
    Defaults::folders.set(std::vector<Data>{{1, 2}, {}});
    Defaults::syntaxExtensions.set(StringDictionary{{"h", "cpp"}});
    EXPECT_EQ(store->objectForKey("TabWidth"), PlistValue(4));
    EXPECT_EQ(store->objectForKey("ShowLineNumbers"), PlistValue(true));
    EXPECT_EQ(store->floatForKey("MarginsMin"), 0.5f);
    EXPECT_EQ(store->objectForKey("LanguageToken"), PlistValue("//"));
    EXPECT_EQ(store->objectForKey("Folders"), PlistValue(PlistArray{Data{1, 2}, Data{}}));
    EXPECT_EQ(store->objectForKey("SyntaxExtensions"),
              PlistValue(PlistDictionary{{"h", PlistValue("cpp")}}));
    EXPECT_EQ(Defaults::syntaxExtensions.get(), (StringDictionary{{"h", "cpp"}}));

    // Setting no value removes the key.
    Defaults::languageToken.set(std::nullopt);
    Defaults::folders.set(std::nullopt);
    Defaults::syntaxExtensions.set(std::nullopt);
    for (std::string_view key : {"LanguageToken", "Folders", "SyntaxExtensions"}) {
        EXPECT_EQ(store->objectForKey(key), std::nullopt) << key;
    }
}

TEST_F(PreferencesTest, ModifyAlwaysWritesBack) {
    store->setObject("TabWidth", PlistValue("7"));  // reads as 7 through the integer getter
    Defaults::tabWidth.modify([](int64_t&) {});
    EXPECT_EQ(store->objectForKey("TabWidth"), PlistValue(7));

    Defaults::fileNameExtension.modify([](std::optional<std::string>& value) { value = "txt"; });
    Defaults::fileNameExtension.modify([](std::optional<std::string>& value) { *value += "2"; });
    EXPECT_EQ(Defaults::fileNameExtension.get(), "txt2");
}

TEST_F(PreferencesTest, ResumeAlsoWritesThePlatformKey) {
    for (bool value : {true, false}) {
        Defaults::resume.set(value);
        EXPECT_EQ(store->objectForKey("Resume"), PlistValue(value));
        EXPECT_EQ(store->objectForKey("NSQuitAlwaysKeepsWindows"), PlistValue(value));
    }
    // The plain boolean accessor does not.
    Defaults::autoSave.set(true);
    EXPECT_EQ(store->persistentDomain().size(), 3u);
}

TEST_F(PreferencesTest, NegateFlipsAFreshKey) {
    Defaults::negate(Key::showLineNumbers);
    EXPECT_EQ(store->objectForKey("ShowLineNumbers"), PlistValue(true));
    Defaults::negate(Key::showLineNumbers);
    EXPECT_EQ(store->objectForKey("ShowLineNumbers"), PlistValue(false));
}

TEST_F(PreferencesTest, FontStringsReadWithTheirFallback) {
    const struct {
        std::string_view stored;
        std::string_view name;
        double size;
    } cases[] = {
        {"Menlo-Bold@@@@12.00", "Menlo-Bold", 12},
        {"Courier@@@@14.00@@@@x", "Courier", 14},  // a third part is ignored
        {"Menlo@@@@13", "Menlo-Regular", 13},      // a family names its regular face
        {"Courier@@@@+1e1", "Courier", 10},        // whatever strtof takes, whole
        {"Courier@@@@0", "Courier", 12},           // size 0 asks for the default size
        {"Menlo-Regular@@@@", "Menlo-Regular", 11},
        {"Menlo-Bold", "Menlo-Regular", 11},
        {"Menlo-Bold@@@@12,5", "Menlo-Regular", 11},
        {"Courier@@@@ 12", "Menlo-Regular", 11},
        {"Courier@@@@12 ", "Menlo-Regular", 11},
        {"Courier@@@@nan", "Menlo-Regular", 11},
        {"Courier@@@@@12", "Menlo-Regular", 11},
        {"Futura@@@@12.00", "Menlo-Regular", 11},
        {"@@@@12.00", "Menlo-Regular", 11},
    };
    for (const auto& c : cases) {
        store->setObject("TextFont", PlistValue(std::string(c.stored)));
        const Font font = Defaults::textFont.get();
        EXPECT_EQ(font.fontName(), c.name) << c.stored;
        EXPECT_EQ(font.pointSize(), c.size) << c.stored;
    }
    store->setObject("TextFont", PlistValue(PlistArray{}));
    EXPECT_EQ(Defaults::textFont.get().fontName(), "Menlo-Regular");

    // Without Menlo the fallback is the system font, at the same size.
    Font::setCatalogue(testing::testFonts(false));
    EXPECT_EQ(Defaults::printFont.get().fontName(), "TestSans");
    EXPECT_EQ(Defaults::printFont.get().pointSize(), 11.0);
}

TEST_F(PreferencesTest, FontsAreStoredWithTwoDecimals) {
    const std::pair<double, std::string_view> cases[] = {
        {10.5, "Courier@@@@10.50"}, {12, "Courier@@@@12.00"}, {9.999, "Courier@@@@10.00"}};
    for (const auto& [size, expected] : cases) {
        Defaults::lineNumberFont.set(*Font::withName("Courier", size));
        EXPECT_EQ(store->objectForKey("LineNumberFont"), PlistValue(std::string(expected)));
        EXPECT_EQ(Defaults::lineNumberFont.get().pointSize(), std::round(size * 100) / 100);
    }
}

TEST_F(PreferencesTest, ListsConvertAsAWholeOrNotAtAll) {
    store->setObject("Bookmarks", PlistValue(PlistArray{Data{1}, Data{2}, Data{3}, "x"}));
    EXPECT_EQ(Defaults::bookmarks.get(), std::nullopt);
    store->setObject("Bookmarks", PlistValue(PlistArray{Data{1}, Data{}}));
    EXPECT_EQ(Defaults::bookmarks.get(), (std::vector<Data>{{1}, {}}));

    const PlistDictionary theme{{"TextFont", PlistValue("Courier@@@@12.00")}};
    store->setObject("Themes9", PlistValue(PlistArray{theme, 1}));
    EXPECT_EQ(Defaults::themes9.get(), std::nullopt);
    store->setObject("Themes9", PlistValue(PlistArray{theme, theme}));
    EXPECT_EQ(Defaults::themes9.get(), (std::vector<PlistDictionary>{theme, theme}));
    store->setObject("Themes9", PlistValue(theme));
    EXPECT_EQ(Defaults::themes9.get(), std::nullopt);

    store->setObject("SyntaxExtensions",
                     PlistValue(PlistDictionary{{"h", PlistValue("c")}, {"x", PlistValue(1)}}));
    EXPECT_EQ(Defaults::syntaxExtensions.get(), std::nullopt);
}

TEST(ShouldUpdate, FollowsItsOrderedRules) {
    const PlistDictionary a{{"TextColour", PlistValue(PlistArray{0.0, 0.0, 0.0, 1.0})}};
    const PlistDictionary b{{"TextColour", PlistValue(PlistArray{1.0, 1.0, 1.0, 1.0})}};
    // Deep equality counts 1 and 1.0 as the same number.
    const PlistDictionary aWithIntegers{{"TextColour", PlistValue(PlistArray{0, 0, 0, 1})}};
    const auto list = [](std::initializer_list<PlistValue> values) {
        return std::optional<PlistValue>(PlistArray(values));
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* what;
        std::optional<PlistValue> oldValue, newValue;
        bool expected;
    } cases[] = {
        {"old absent", std::nullopt, PlistValue("x"), true},
        {"new absent", PlistValue("x"), std::nullopt, true},
        {"equal strings", PlistValue("x"), PlistValue("x"), false},
        {"different strings", PlistValue("x"), PlistValue("y"), true},
        {"string and integer", PlistValue("1"), PlistValue(1), true},
        {"equal integers", PlistValue(1), PlistValue(1), true},
        {"equal numbers", list({0.5, 0.25, 1.0, 1.0}), list({0.5, 0.25, 1, 1}), false},
        {"a number differs", list({0.5, 0.25, 1.0, 1.0}), list({0.5, 0.2, 1.0, 1.0}), true},
        {"number lengths", list({0.5, 0.25, 1.0}), list({0.5, 0.25, 1.0, 1.0}), true},
        {"NaN", list({nan}), list({nan}), true},
        {"empty old themes", list({}), list({a}), false},
        {"empty new themes", list({a}), list({}), true},
        {"both empty", list({}), list({}), false},
        {"grew at the end", list({a}), list({a, b}), false},
        {"shrank", list({a, b}), list({a}), true},
        {"changed", list({a, b}), list({a, a}), true},
        {"same by value", list({a}), list({aWithIntegers}), false},
        {"themes and numbers", list({a}), list({1.0}), true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(shouldUpdate(c.oldValue, c.newValue), c.expected) << c.what;
    }
}

}  // namespace
}  // namespace quod
