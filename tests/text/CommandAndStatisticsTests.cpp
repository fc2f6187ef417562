#include <gtest/gtest.h>

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/text/CommandSplitting.h"
#include "quoddle/text/SelectionStatistics.h"

namespace quod {
namespace {

using Arguments = std::vector<std::u16string>;

TEST(CommandSplitting, SplitsAsTheCommandLineHasAlwaysBeenSplit) {
    const std::pair<std::u16string_view, Arguments> cases[] = {
        {u"ls -l", {u"ls", u"-l"}},
        {u"a   b", {u"a", u"", u"b"}},  // three spaces halve to two
        {u"  trimmed  ", {u"trimmed"}},
        {u"", {u""}},
        {u"open \"my file.txt\"", {u"open", u"my file.txt"}},
        {u"open 'my file.txt' -a", {u"open", u"my file.txt", u"-a"}},
        {u"cat my\\ file", {u"cat", u"my file"}},
        {u"say a\\\"b c", {u"say", u"a\"b"}},  // the escaped quote costs the last two
        {u"echo \\\"word\\\"", {u"echo", u"\"word"}},
        {u"run \"unclosed arg", {u"run", u"unclosed arg"}},
        {u"\"quoted\"next", {u"quoted", u"next"}},
        {u"x @@@@ y\\", {u"x", u"\"", u"y\\"}},      // a typed marker comes out as a quote
        {u"e\u0301 \"😀 x\"", {u"e\u0301", u"😀 x"}},  // characters, not units
    };
    for (const auto& [command, expected] : cases) {
        EXPECT_EQ(Text::separateCommand(command), expected) << std::u16string(command).size();
    }
}

TEST(SelectionStatistics, CountsCharactersAndWordsOfEverySelection) {
    setCurrentLocale(icu::Locale("en_US"));
    const std::u16string text = u"hello world";
    EXPECT_EQ(Text::selectionCount(text, {{0, 5}, {6, 5}}), (Text::SelectionCount{10, 2}));
    EXPECT_EQ(Text::selectionCount(text, {{0, 5}, {6, 5}, {8, 9}, {3, 0}}),
              (Text::SelectionCount{10, 2}));
    EXPECT_EQ(Text::selectionCount(text, {{0, 11}, {0, 5}}), (Text::SelectionCount{16, 3}));
    EXPECT_EQ(Text::selectionCount(text, {}), (Text::SelectionCount{0, 0}));
    // A family emoji of seven code points is one character and no word.
    EXPECT_EQ(Text::selectionCount(u"👨‍👩‍👧 ok, e.g. 3.14", {{0, 22}}),
              (Text::SelectionCount{15, 3}));
}

}  // namespace
}  // namespace quod
