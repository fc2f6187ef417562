#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "quoddle/base/GeometryText.h"

namespace quod {
namespace {

TEST(GeometryText, WritesTheStoredFormAndReadsItBackExactly) {
    const struct {
        Rect rect;
        const char* text;
    } cases[] = {
        {{{1, 2}, {3, 4}}, "{{1, 2}, {3, 4}}"},
        {{{10, 10.5}, {0.1, -0.6}}, "{{10, 10.5}, {0.10000000000000001, -0.59999999999999998}}"},
        {{{0.1, 0.5}, {100.123, 100.951}},
         "{{0.10000000000000001, 0.5}, {100.123, 100.95099999999999}}"},
        {{{-1200, 1e21}, {0, 2.5e-7}}, "{{-1200, 1e+21}, {0, 2.4999999999999999e-07}}"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(stringFromRect(c.rect), c.text);
        EXPECT_EQ(rectFromString(c.text), c.rect) << c.text;
    }
}

TEST(GeometryText, IgnoresTheHostsLocale) {
    // A decimal comma locale, when the machine has one; the C locale otherwise (still a check
    // that nothing depends on it).
    const std::string previous = std::setlocale(LC_ALL, nullptr);
    if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) std::setlocale(LC_ALL, "C.UTF-8");
    const Rect rect{{10.5, 0.25}, {640.75, 480}};
    EXPECT_EQ(stringFromRect(rect), "{{10.5, 0.25}, {640.75, 480}}");
    EXPECT_EQ(rectFromString("{{10.5, 0.25}, {640.75, 480}}"), rect);
    std::setlocale(LC_ALL, previous.c_str());
}

TEST(GeometryText, ReadsOddTextQuietly) {
    const struct {
        const char* text;
        Rect rect;
    } cases[] = {
        {"{0.6,5.4}", {{0.6, 5.4}, {0, 0}}},           // missing numbers are 0
        {"{  0.6   , 5.4   }", {{0.6, 5.4}, {0, 0}}},  // spacing is free
        {"{{1,2},{3,4}}", {{1, 2}, {3, 4}}},
        {"", {}},
        {"no numbers at all", {}},
        {"{{-, -}, {x, 7}}", {{7, 0}, {0, 0}}},      // a lone minus is no number
        {"{{+5,.5},{3,4}}", {{5, 5}, {3, 4}}},       // "+" and "." do not start a number
        {"1 2 3 4 5 6", {{1, 2}, {3, 4}}},           // extra numbers are ignored
        {"{{1e999, 2}, {3, 4}}", {{0, 2}, {3, 4}}},  // out of range reads as 0
    };
    for (const auto& c : cases)
        EXPECT_EQ(rectFromString(c.text), c.rect) << c.text;
}

}  // namespace
}  // namespace quod
