#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "PreferencesTestSupport.h"
#include "quoddle/preferences/Defaults.h"

namespace quod {
namespace {

using testing::PreferencesTest;

std::vector<std::string> namesOf(const auto& items) {
    std::vector<std::string> names;
    for (const auto& item : items)
        names.push_back(item.name());
    return names;
}

TEST(Command, StoresExactlyItsFourEntries) {
    const std::vector<Command> commands{Command("List", "ls -l", true, false, true),
                                        Command("", "", false, true, false)};
    const auto stored = Command::array(commands);
    ASSERT_EQ(stored.size(), 2u);
    EXPECT_EQ(stored[0], (PlistDictionary{{"name", PlistValue("List")},
                                          {"text", PlistValue("ls -l")},
                                          {"inline", PlistValue(true)},
                                          {"suppressResult", PlistValue(false)}}));
    EXPECT_EQ(stored[1].at("suppressResult"), PlistValue(true));

    const auto snippets = Snippet::array({Snippet("Loop", "for (;;) {}", true)});
    ASSERT_EQ(snippets.size(), 1u);
    EXPECT_EQ(snippets[0],
              (PlistDictionary{{"name", PlistValue("Loop")}, {"text", PlistValue("for (;;) {}")}}));
}

TEST(Command, LoadsAllOrNothing) {
    const PlistDictionary onlyName{{"name", PlistValue("Build")}};
    const PlistDictionary wrongKinds{{"name", PlistValue(5)},
                                     {"text", PlistValue("make")},
                                     {"inline", PlistValue(1)},  // not a boolean
                                     {"suppressResult", PlistValue(true)},
                                     {"shortcut", PlistValue("⌘B")}};
    const PlistArray array{onlyName, wrongKinds};

    const auto commands = Command::commands(array);
    ASSERT_EQ(commands.size(), 2u);
    EXPECT_EQ(commands[0].name(), "Build");
    EXPECT_EQ(commands[0].text(), "");
    EXPECT_FALSE(commands[0].isInline());
    EXPECT_FALSE(commands[0].suppressResult());
    EXPECT_EQ(commands[1].name(), "");
    EXPECT_EQ(commands[1].text(), "make");
    EXPECT_FALSE(commands[1].isInline());
    EXPECT_TRUE(commands[1].suppressResult());

    const auto snippets = Snippet::snippets(array);
    EXPECT_EQ(namesOf(snippets), (std::vector<std::string>{"Build", ""}));

    const std::optional<PlistArray> unusable[] = {std::nullopt, PlistArray{onlyName, "x"},
                                                  PlistArray{PlistArray{onlyName}}};
    for (const auto& stored : unusable) {
        EXPECT_TRUE(Command::commands(stored).empty());
        EXPECT_TRUE(Snippet::snippets(stored).empty());
    }
}

TEST(DataItem, IdentityIsAFreshRandomUuid) {
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    const PlistArray stored(1000, PlistDictionary{{"name", PlistValue("same")}});
    const auto first = Command::commands(stored);
    const auto second = Command::commands(stored);
    std::set<std::string> uuids;
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_TRUE(std::regex_match(first[i].uuid(), form)) << first[i].uuid();
        EXPECT_NE(first[i], second[i]);
        uuids.insert(first[i].uuid());
        uuids.insert(second[i].uuid());
    }
    EXPECT_EQ(uuids.size(), 2000u);

    // Name and text take no part: an edited copy is still the same item.
    Snippet snippet("a", "b", false);
    Snippet edited = snippet;
    edited.setName("c");
    edited.setText("d");
    EXPECT_EQ(snippet, edited);
    EXPECT_NE(snippet, Snippet("a", "b", false));
}

TEST(DataItem, SortsByLocalizedStandardOrder) {
    std::vector<Snippet> snippets;
    for (const char* name : {"file10", "file9", "File1", "file1"})
        snippets.emplace_back(name, "", false);
    const auto sorted = Snippet::sort(snippets, icu::Locale("en_US"));
    EXPECT_EQ(namesOf(sorted), (std::vector<std::string>{"file1", "File1", "file9", "file10"}));
    EXPECT_EQ(sorted[3], snippets[0]);  // the items themselves move, identities intact
}

TEST(DataItem, AlreadyInArrayComparesNameAndTextExactly) {
    const Command item("Run", "make run", false, false, false);
    const std::vector<Command> others{Command("Run", "Make Run", false, false, false),
                                      Command("run", "make run", false, false, false)};
    EXPECT_FALSE(item.alreadyInArray({}));
    EXPECT_FALSE(item.alreadyInArray(others));
    EXPECT_TRUE(item.alreadyInArray({others[0], Command("Run", "make run", true, true, true)}));
    EXPECT_TRUE(item.alreadyInArray({item}));
}

TEST_F(PreferencesTest, CommandsAndSnippetsRoundTripThroughTheStore) {
    std::vector<Command> commands{Command("b", "echo b", true, false, true),
                                  Command("a", "echo a", false, true, false)};
    Defaults::commands.set(commands);
    const auto loaded = Defaults::commands.get();
    ASSERT_EQ(loaded.size(), 2u);
    EXPECT_EQ(namesOf(loaded), (std::vector<std::string>{"b", "a"}));
    EXPECT_EQ(loaded[0].text(), "echo b");
    EXPECT_TRUE(loaded[0].isInline());
    EXPECT_FALSE(loaded[0].newItem());  // never stored
    EXPECT_TRUE(loaded[1].suppressResult());
    EXPECT_NE(loaded[0], commands[0]);

    Defaults::snippets.modify(
        [](std::vector<Snippet>& snippets) { snippets.emplace_back("s", "text", true); });
    EXPECT_EQ(store->objectForKey("Snippets"),
              PlistValue(PlistArray{
                  PlistDictionary{{"name", PlistValue("s")}, {"text", PlistValue("text")}}}));

    store->setObject("Commands", PlistValue(PlistArray{PlistDictionary{}, "x"}));
    EXPECT_TRUE(Defaults::commands.get().empty());
}

}  // namespace
}  // namespace quod
