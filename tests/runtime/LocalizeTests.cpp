#include <gtest/gtest.h>

#include <cctype>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/runtime/Localize.h"

namespace quod {
namespace {

using Localize::Group;

// The process's message language for as long as it lives, the way gettext reads it: the
// LANGUAGE list applies once the host has activated a locale other than "C".
class MessageLanguage {
  public:
    explicit MessageLanguage(const char* language) {
        setenv("LANGUAGE", language, 1);
        std::setlocale(LC_ALL, "C.UTF-8");  // also tells gettext to drop what it cached
    }
    ~MessageLanguage() {
        unsetenv("LANGUAGE");
        std::setlocale(LC_ALL, "C");
    }
    MessageLanguage(const MessageLanguage&) = delete;
    MessageLanguage& operator=(const MessageLanguage&) = delete;
};

const Localize::Entry* findEntry(Group group, std::string_view member) {
    for (const Localize::Entry& entry : Localize::entries()) {
        if (entry.group == group && entry.member == member) return &entry;
    }
    return nullptr;
}

// The entries whose English text is given as it is rather than derived from the member name.
const std::vector<std::tuple<Group, std::string_view, std::string_view>> exceptions = {
    {Group::plain, "anErrorOccurredInRetrievingUpdateInformation",
     "An error occurred in retrieving update information. Please try again later."},
    {Group::plain, "autoComplete", "Auto Complete:"},
    {Group::plain, "couldntSaveDocument", "Couldn’t save document."},
    {Group::plain, "downloading", "Downloading…"},
    {Group::plain, "editScript", "Edit Script…"},
    {Group::plain, "forString", "For"},
    {Group::plain, "importString", "Import"},
    {Group::plain, "showInStatusBar", "Show In Status Bar:"},
    {Group::plain, "showPageGuideAtColumn", "Show page guide, at column"},
    {Group::plain, "suggestAutomaticallyAfterDelay", "Suggest automatically, after delay"},
    {Group::plain, "thankYou", "Thank You!"},
    {Group::plain, "useCommandAndNumberToSwitchTabs", "Use ⌘‐1 through ⌘‐9 to switch tabs"},
    {Group::plain, "useTheChooseButton",
     "Use the Choose… button to select an app, a script or write a simple command. After that "
     "you can test what you want to run."},
    {Group::plain, "youCantUndoThisAction", "You can’t undo this action."},
    {Group::plain, "yourChangesWillBeLostIfYouDontSaveThem",
     "Your changes will be lost if you don't save them."},
    {Group::ellipsis, "buildAnApp", "Build an App…"},
    {Group::ellipsis, "choose", "Choose…"},
    {Group::ellipsis, "chooseFile", "Choose File…"},
    {Group::ellipsis, "chooseFolder", "Choose Folder…"},
    {Group::ellipsis, "createNew", "Create New…"},
    {Group::ellipsis, "edit", "Edit…"},
    {Group::ellipsis, "exportString", "Export…"},
    {Group::ellipsis, "gotoLine", "Go To Line…"},
    {Group::ellipsis, "loading", "Loading…"},
    {Group::ellipsis, "save", "Save…"},
    {Group::ellipsis, "showFonts", "Show Fonts…"},
    {Group::lowercase, "whereString", "where"},
};

bool isException(const Localize::Entry& entry) {
    for (const auto& [group, member, text] : exceptions) {
        if (entry.group == group && entry.member == member) return true;
    }
    return false;
}

// Letters only, lower-cased: "Day of Month" and "dayOfMonth" both give "dayofmonth".
std::string letters(std::string_view text) {
    std::string result;
    for (char c : text) {
        if (std::isalpha(static_cast<unsigned char>(c))) {
            result += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return result;
}

TEST(LocalizeCatalogue, HasItsEntriesInThreeGroups) {
    std::map<Group, int> counts;
    std::set<std::pair<Group, std::string_view>> members;
    for (const Localize::Entry& entry : Localize::entries()) {
        ++counts[entry.group];
        EXPECT_TRUE(members.emplace(entry.group, entry.member).second) << entry.member;
    }
    EXPECT_EQ(counts[Group::plain], 250);
    EXPECT_EQ(counts[Group::ellipsis], 11);
    EXPECT_EQ(counts[Group::lowercase], 18);
}

TEST(LocalizeCatalogue, TheExceptionsKeepTheirTextsExactly) {
    for (const auto& [group, member, text] : exceptions) {
        const Localize::Entry* entry = findEntry(group, member);
        ASSERT_NE(entry, nullptr) << member;
        EXPECT_EQ(entry->key, text) << member;
    }
    EXPECT_EQ(Localize::Ellipsis::gotoLine(), "Go To Line…");
    EXPECT_EQ(Localize::couldntSaveDocument(), "Couldn’t save document.");
}

TEST(LocalizeCatalogue, TextsFollowTheirGroupsAndMemberNames) {
    for (const Localize::Entry& entry : Localize::entries()) {
        if (entry.group == Group::ellipsis) {
            EXPECT_TRUE(entry.key.ends_with("…")) << entry.member;
            EXPECT_FALSE(entry.key.ends_with("...")) << entry.member;
        }
        if (entry.group == Group::lowercase) {
            for (char c : entry.key)
                EXPECT_FALSE(std::isupper(static_cast<unsigned char>(c))) << entry.member;
        }
        if (isException(entry)) continue;
        std::string_view member = entry.member;
        if (member.ends_with("String")) member.remove_suffix(6);
        EXPECT_EQ(letters(entry.key), letters(member)) << entry.member << ": " << entry.key;
        EXPECT_FALSE(entry.key.ends_with("…")) << entry.member;
    }
}

TEST(Localize, WithoutATranslationEveryEntryReadsAsItsEnglishText) {
    std::setlocale(LC_ALL, "C");  // gettext translates nothing in the C locale
    // First reads come from several threads at once; each entry is made exactly once.
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i) {
        readers.emplace_back([] {
            for (const Localize::Entry& entry : Localize::entries())
                (void)entry.text();
        });
    }
    for (std::thread& reader : readers)
        reader.join();
    for (const Localize::Entry& entry : Localize::entries()) {
        EXPECT_EQ(entry.text(), entry.key) << entry.member;
        EXPECT_EQ(&entry.text(), &entry.text()) << "made again: " << entry.member;
    }
    MessageLanguage french("fr");  // a language without a catalogue
    for (const Localize::Entry& entry : Localize::entries()) {
        EXPECT_EQ(Localize::string(entry.key), entry.key) << entry.member;
    }
}

TEST(Localize, SwitchingTheLanguageSwitchesTheText) {
    struct Case {
        const char* language;
        std::vector<std::pair<std::string_view, std::string_view>> texts;
    };
    const Case cases[] = {
        {"de",
         {{"Cancel", "Abbrechen"},
          {"Go To Line…", "Gehe zu Zeile…"},
          {"lines", "Zeilen"},
          {"Couldn’t save document.", "Das Dokument konnte nicht gesichert werden."},
          {"Not in the catalogue", "Not in the catalogue"},
          {"", ""}}},  // gettext's own answer for "" would be the catalogue's header
        {"fr", {{"Cancel", "Cancel"}, {"Go To Line…", "Go To Line…"}}},
        {"de_AT:de", {{"Cancel", "Abbrechen"}}},  // falls back along the LANGUAGE list
        {"C", {{"Cancel", "Cancel"}}},
    };
    for (const Case& languageCase : cases) {
        MessageLanguage language(languageCase.language);
        for (const auto& [key, text] : languageCase.texts) {
            EXPECT_EQ(Localize::string(key), text) << languageCase.language << ": " << key;
        }
    }
    MessageLanguage german("de");
    EXPECT_EQ(Localize::format("Line", {}), "Zeile");
    EXPECT_EQ(Localize::format("%@ of %ld", {"Zeile", 12}), "Zeile of 12");
}

TEST(Localize, TheGermanCatalogueTranslatesEveryEntry) {
    // Words that German spells as English does; anything else left unchanged is an entry the
    // catalogue misses, most likely because its English text changed.
    const std::set<std::string_view> sameInGerman = {"Tab",      "OK",     "Agent",  "Clients",
                                                     "Filter",   "Info",   "Magnet", "Name",
                                                     "Position", "Status", "System", "Text"};
    MessageLanguage german("de");
    std::set<std::string_view> unchanged;
    for (const Localize::Entry& entry : Localize::entries()) {
        if (Localize::string(entry.key) == entry.key) unchanged.insert(entry.key);
    }
    EXPECT_EQ(unchanged, sameInGerman);
    EXPECT_TRUE(
        std::filesystem::exists(Localize::localeDirectory() / "de" / "LC_MESSAGES" / "quoddle.mo"));
}

TEST(Localize, IntegerTextsFollowTheCurrentLocale) {
    const icu::Locale original = currentLocale();
    struct Case {
        const char* locale;
        std::int64_t value;
        std::string_view text;
    };
    // Back and forth, so that a cache kept across locales would answer wrongly.
    const Case cases[] = {{"en_US", 1234567, "1,234,567"},
                          {"de_DE", 1234567, "1.234.567"},
                          {"de_DE", -42, "-42"},
                          {"en_US", 1234567, "1,234,567"},
                          {"en_US", 0, "0"},
                          {"fr_FR", 1234, "1\u202f234"}};
    for (const Case& numberCase : cases) {
        setCurrentLocale(icu::Locale(numberCase.locale));
        EXPECT_EQ(Localize::intString(numberCase.value), numberCase.text) << numberCase.locale;
        EXPECT_EQ(Localize::intString(numberCase.value), numberCase.text) << "from the cache";
    }
    setCurrentLocale(original);
}

}  // namespace
}  // namespace quod
