#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quoddle/strings/LocalizedCompare.h"

namespace quod {
namespace {

std::vector<std::u16string> sorted(std::vector<std::u16string> strings, const char* locale,
                                   SortOrder order = SortOrder::ascending) {
    const std::vector<std::u16string_view> views(strings.begin(), strings.end());
    std::vector<std::u16string> result;
    for (std::size_t index : localizedStandardOrder(views, order, icu::Locale(locale))) {
        result.push_back(strings[index]);
    }
    // The key-based order must agree with the pairwise comparison.
    for (std::size_t i = 1; i < result.size(); ++i) {
        const auto ordering =
            localizedStandardCompare(result[i - 1], result[i], icu::Locale(locale));
        EXPECT_TRUE(order == SortOrder::ascending ? ordering <= 0 : ordering >= 0);
    }
    return result;
}

using Strings = std::vector<std::u16string>;

TEST(LocalizedCompare, OrdersAsFileBrowsersDo) {
    const std::pair<Strings, Strings> cases[] = {
        {{u"item10", u"item9", u"Item1"}, {u"Item1", u"item9", u"item10"}},
        {{u"ISO 8859-10", u"ISO 8859-2"}, {u"ISO 8859-2", u"ISO 8859-10"}},
        {{u"a001", u"a01", u"a1", u"a2", u"a10"}, {u"a1", u"a01", u"a001", u"a2", u"a10"}},
        {{u"File", u"file", u"FILE", u"fIle"}, {u"file", u"fIle", u"File", u"FILE"}},
        {{u"file10", u"ｆｉｌｅ2", u"file1"}, {u"file1", u"ｆｉｌｅ2", u"file10"}},
        {{u"résumé", u"resume", u"Resume", u"rèsume"},
         {u"resume", u"Resume", u"résumé", u"rèsume"}},
        {{u"x-1", u"x 1", u"x_1", u"x1"}, {u"x 1", u"x_1", u"x-1", u"x1"}},
        {{u"apple", u"Banana"}, {u"apple", u"Banana"}},  // not code-unit order
    };
    for (const auto& [input, expected] : cases) {
        EXPECT_EQ(sorted(input, "en_US"), expected);
    }
    EXPECT_EQ(sorted({u"b", u"a", u"c"}, "en_US", SortOrder::descending),
              (Strings{u"c", u"b", u"a"}));
}

TEST(LocalizedCompare, OnlyIdenticalStringsAreEqual) {
    const icu::Locale locale("en_US");
    EXPECT_EQ(localizedStandardCompare(u"same", u"same", locale), std::weak_ordering::equivalent);
    EXPECT_NE(localizedStandardCompare(u"e\u0301", u"\u00E9", locale),
              std::weak_ordering::equivalent);
    EXPECT_TRUE(localizedStandardCompare(u"", u"a", locale) < 0);
    // Descending keeps equal strings in their original order: both "x" stay as they came.
    const std::vector<std::u16string_view> views{u"x", u"y", u"x"};
    EXPECT_EQ(localizedStandardOrder(views, SortOrder::descending, locale),
              (std::vector<std::size_t>{1, 0, 2}));
}

}  // namespace
}  // namespace quod
