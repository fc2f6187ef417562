#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "quoddle/interface/NotificationName.h"
#include "quoddle/interface/ToolbarItemIdentifier.h"
#include "quoddle/interface/UserInterfaceItemIdentifier.h"
#include "quoddle/runtime/NotificationCenter.h"

namespace quod {
namespace {

// The member as the catalogue names it: without a group prefix and without the "String" suffix
// that C++ keywords get.
std::string baseName(std::string_view member) {
    if (auto colons = member.rfind("::"); colons != std::string_view::npos) {
        member.remove_prefix(colons + 2);
    }
    if (member.ends_with("String")) member.remove_suffix(6);
    return std::string(member);
}

std::string capitalised(std::string text) {
    text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text;
}

// Every entry's value, checked against `pattern` except where `exceptions` says otherwise;
// answers the values in catalogue order.
template <typename Identifier, typename Pattern>
std::vector<std::string> checkValues(const std::map<std::string_view, std::string_view>& exceptions,
                                     Pattern pattern) {
    std::vector<std::string> values;
    std::set<std::string_view> exceptionsSeen;
    for (const auto& entry : Identifier::entries()) {
        const std::string& value = entry.value().rawValue();
        values.push_back(value);
        if (auto found = exceptions.find(entry.member); found != exceptions.end()) {
            exceptionsSeen.insert(found->first);
            EXPECT_EQ(value, found->second) << entry.member;
        } else {
            EXPECT_EQ(value, pattern(baseName(entry.member))) << entry.member;
        }
    }
    EXPECT_EQ(exceptionsSeen.size(), exceptions.size()) << "an exception names no member";
    return values;
}

std::set<std::string> duplicates(const std::vector<std::string>& values) {
    std::map<std::string, int> counts;
    for (const std::string& value : values)
        ++counts[value];
    std::set<std::string> repeated;
    for (const auto& [value, count] : counts) {
        if (count > 1) repeated.insert(value);
    }
    return repeated;
}

TEST(IdentifierCatalogues, NotificationNames) {
    const auto values = checkValues<NotificationName>({{"loadingChanged", "Loading"},
                                                       {"removeAllColors", "RemoveColors"},
                                                       {"urlChanged", "URLChanged"}},
                                                      capitalised);
    EXPECT_EQ(values.size(), 31u);
    EXPECT_TRUE(duplicates(values).empty());
    EXPECT_EQ(NotificationName::loadingChanged().rawValue(), "Loading");
}

TEST(IdentifierCatalogues, ToolbarItemIdentifiers) {
    const auto values = checkValues<ToolbarItemIdentifier>(
        {{"remove", "InsertToolbarItem"}},
        [](const std::string& member) { return capitalised(member) + "ToolbarItem"; });
    EXPECT_EQ(values.size(), 27u);
    EXPECT_EQ(duplicates(values), std::set<std::string>{"InsertToolbarItem"});
    EXPECT_EQ(ToolbarItemIdentifier::remove(), ToolbarItemIdentifier::insert());
    EXPECT_EQ(ToolbarItemIdentifier::deleteString().rawValue(), "DeleteToolbarItem");
}

TEST(IdentifierCatalogues, UserInterfaceItemIdentifiers) {
    const auto values = checkValues<UserInterfaceItemIdentifier>(
        {{"findResult", "FindResultIdentifier"}, {"findResultGroup", "FindResultGroupIdentifier"}},
        capitalised);
    EXPECT_EQ(values.size(), 36u);
    EXPECT_TRUE(duplicates(values).empty());
    int columns = 0;
    for (const auto& entry : UserInterfaceItemIdentifier::entries()) {
        columns += entry.member.starts_with("Column::");
    }
    EXPECT_EQ(columns, 24);
    EXPECT_EQ(UserInterfaceItemIdentifier::Column::intString().rawValue(), "Int");
}

TEST(IdentifierCatalogues, NotificationNamesPostThroughTheNotificationCentre) {
    NotificationCenter center;
    int themeChanges = 0;
    Connection observer = center.addObserver(NotificationName::themeChanged().rawValue(), nullptr,
                                             [&](const Notification&) { ++themeChanges; });
    center.post(NotificationName::themeChanged());
    center.post(NotificationName::textFontChanged());
    center.post(NotificationName("ThemeChanged"));
    EXPECT_EQ(themeChanges, 2);
}

}  // namespace
}  // namespace quod
