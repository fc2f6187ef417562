#include <gtest/gtest.h>

#include "quoddle/strings/Search.h"

namespace quod {
namespace {

// Units:      e  ◌́  😀😀 a  b  😀😀 a  b
// Characters: é     😀    a  b  😀    a  b
const std::u16string text = u"e\u0301😀ab😀ab";

TEST(Search, CountsCharactersOrUnits) {
    // Needle; start and match in characters; start and match in units.
    const std::tuple<std::u16string_view, int64_t, std::optional<Range>, int64_t,
                     std::optional<int64_t>>
        cases[] = {{u"ab", 0, Range{2, 2}, 0, 4},
                   {u"ab", 3, Range{5, 2}, 5, 8},
                   {u"😀a", 0, Range{1, 2}, 0, 2},
                   {u"😀a", 2, Range{4, 2}, 3, 6},
                   {u"\u0301", 0, Range{0, 1}, 0, 1},  // inside a character: counts from its start
                   {u"e", 1, std::nullopt, 1, std::nullopt},
                   {u"ab", 7, std::nullopt, 10, {}},
                   {u"", 0, std::nullopt, 0, std::nullopt},
                   {u"abc", 0, std::nullopt, 0, {}}};
    for (const auto& [of, characterStart, characters, unitStart, unit] : cases) {
        EXPECT_EQ(indexRange(text, of, characterStart), characters) << characterStart;
        const auto location = characters ? std::optional(characters->location) : std::nullopt;
        EXPECT_EQ(index(text, of, characterStart), location) << characterStart;
        EXPECT_EQ(utf16Index(text, of, unitStart), unit) << unitStart;
    }
}

TEST(SearchDeathTest, StartPositionsOutsideTheTextStop) {
    EXPECT_DEATH((void)index(text, u"a", -1), "negative start position");
    EXPECT_DEATH((void)indexRange(text, u"a", 8), "beyond the characters");
    EXPECT_DEATH((void)utf16Index(text, u"a", 11), "outside the text");
    EXPECT_DEATH((void)utf16Index(text, u"a", -1), "outside the text");
}

}  // namespace
}  // namespace quod
