#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>

#include "quoddle/strings/Octal.h"

namespace quod {
namespace {

using namespace Octal;

TEST(Octal, DigitTablesTreatAnythingElseAsTheZeroRow) {
    const struct {
        std::string_view character, permission, mask;
    } rows[] = {
        {"7", "rwx", "---"},      {"6", "rw-", "--x"}, {"5", "r-x", "-w-"},  {"4", "r--", "-wx"},
        {"3", "-wx", "r--"},      {"2", "-w-", "r-x"}, {"1", "--x", "rw-"},  {"0", "---", "rwx"},
        {"8", "---", "rwx"},      {"", "---", "rwx"},  {"77", "---", "rwx"}, {"x", "---", "rwx"},
        {"\u0667", "---", "rwx"},  // ARABIC-INDIC DIGIT SEVEN is not an octal digit
    };
    for (const auto& row : rows) {
        EXPECT_EQ(permission(row.character), row.permission) << row.character;
        EXPECT_EQ(mask(row.character), row.mask) << row.character;
    }
}

TEST(Octal, PreparesThreeCharacters) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"12345", "345"},
        {"4755", "755"},
        {"755", "755"},
        {"5", "005"},
        {"", "000"},
        // A combining mark makes one character with what precedes it, a padding zero included.
        {"7\u0301", "007\u0301"},
        {"\u0301", "000\u0301"},
        {"1234\u0301", "234\u0301"},
    };
    for (const auto& [from, expected] : cases) {
        EXPECT_EQ(preparedString(from), expected) << from;
    }
}

TEST(Octal, DisplaysSymbolicText) {
    const std::tuple<std::string_view, Mode, std::string_view> cases[] = {
        {"755", Mode::permission, "u=rwx,g=r-x,o=r-x"},
        {"022", Mode::mask, "u=rwx,g=r-x,o=r-x"},
        {"644", Mode::permission, "u=rw-,g=r--,o=r--"},
        {"4755", Mode::permission, "u=rwx,g=r-x,o=r-x"},
        {"8", Mode::permission, "u=---,g=---,o=---"},
        {"", Mode::mask, "u=rwx,g=rwx,o=rwx"},
        {"7\u0301", Mode::permission, "u=---,g=---,o=---"},
        {"1a7", Mode::mask, "u=rw-,g=rwx,o=---"},
    };
    for (const auto& [from, mode, expected] : cases) {
        EXPECT_EQ(displayString(from, mode), expected) << from;
    }
}

TEST(Octal, MaskDigitsAndRightsAreInverses) {
    for (int bits = 0; bits < 8; ++bits) {
        const Attribute rights{(bits & 4) != 0, (bits & 2) != 0, (bits & 1) != 0};
        const std::string_view digit = maskCharacter(rights);
        EXPECT_EQ(attribute(digit), rights) << digit;
        // The digit leaves exactly these rights by the mask column too.
        const std::string letters = std::string(rights.read ? "r" : "-") +
                                    (rights.write ? "w" : "-") + (rights.execute ? "x" : "-");
        EXPECT_EQ(mask(digit), letters) << digit;
    }
    EXPECT_EQ(maskCharacter(defaultAttribute), "0");
    EXPECT_EQ(attribute("8"), (Attribute{false, false, false}));
    EXPECT_EQ(attribute(""), (Attribute{false, false, false}));
}

TEST(Octal, ReadsAndPrintsBaseEight) {
    constexpr int64_t lowest = std::numeric_limits<int64_t>::min();
    constexpr int64_t highest = std::numeric_limits<int64_t>::max();
    const std::pair<std::string_view, std::optional<int64_t>> readings[] = {
        {"755", 493},
        {"0", 0},
        {"-10", -8},
        {"+7", 7},
        {"777777777777777777777", highest},
        {"-1000000000000000000000", lowest},
        {"1000000000000000000000", std::nullopt},
        {"-1000000000000000000001", std::nullopt},
        {"99999999999999999999999999", std::nullopt},
        {"9", std::nullopt},
        {"", std::nullopt},
        {"-", std::nullopt},
        {" 7", std::nullopt},
        {"7 ", std::nullopt},
        {"0o7", std::nullopt},
        {"+-7", std::nullopt},
    };
    for (const auto& [text, expected] : readings) {
        EXPECT_EQ(toInt(text), expected) << text;
    }
    const std::pair<int64_t, std::string_view> printings[] = {
        {493, "755"},
        {0, "0"},
        {-8, "-10"},
        {highest, "777777777777777777777"},
        {lowest, "-1000000000000000000000"},
    };
    for (const auto& [value, expected] : printings) {
        EXPECT_EQ(fromInt(value), expected) << value;
    }
    std::mt19937_64 random(755);
    for (int i = 0; i < 1000; ++i) {
        const auto value = static_cast<int64_t>(random()) >> (random() % 64);
        EXPECT_EQ(toInt(fromInt(value)), value);
    }
}

TEST(Octal, UserClassesHaveRawValuesAndTitles) {
    const std::pair<int64_t, std::string_view> classes[] = {
        {0, "user"}, {1, "group"}, {2, "other"}};
    for (const auto& [raw, expected] : classes) {
        ASSERT_TRUE(userClassFromRawValue(raw).has_value());
        EXPECT_EQ(title(*userClassFromRawValue(raw)), expected);
    }
    EXPECT_EQ(userClassFromRawValue(3), std::nullopt);
    EXPECT_EQ(userClassFromRawValue(-1), std::nullopt);
}

TEST(OctalDeathTest, AClassOutsideTheEnumerationIsAProgrammingError) {
    EXPECT_DEATH((void)title(static_cast<UserClass>(3)), "not a user class");
}

}  // namespace
}  // namespace quod
