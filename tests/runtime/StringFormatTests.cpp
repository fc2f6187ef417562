#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "quoddle/runtime/StringFormat.h"

namespace quod {
namespace {

TEST(StringFormat, FillsInPlaceholdersAsPrintfAndThePlatformDo) {
    struct Case {
        std::string_view format;
        std::vector<FormatArgument> arguments;
        std::string_view expected;
    };
    const std::string owned = "owned";
    const Case cases[] = {
        {"%@ of %@", {"Line", owned}, "Line of owned"},
        {"%d|%ld|%lld|%i|%qd|%zd", {1, -2L, 3LL, 4, 5, std::size_t{6}}, "1|-2|3|4|5|6"},
        {"%2$@, %1$@!", {"World", "Hello"}, "Hello, World!"},
        {"%1$@ %1$@", {"echo"}, "echo echo"},
        {"100%% sure", {}, "100% sure"},
        {"%5d|%-5d|%05d|%+d|% d", {42, 42, 42, 42, 42}, "   42|42   |00042|+42| 42"},
        {"%.3d|%06.3d|%.0d", {7, 7, 0}, "007|   007|"},
        {"%d", {INT64_MIN}, "-9223372036854775808"},
        {"%u|%lu",
         {-1, std::uint64_t{18446744073709551615u}},
         "18446744073709551615|18446744073709551615"},
        {"%x %X %#x %o %#o", {255, 255, 255, 8, 8}, "ff FF 0xff 10 010"},
        {"%.2f|%8.3f|%-8.1f|%+.1f|%e|%G",
         {3.14159, 2.5, -1.25, 2.0, 1234.5, 0.00001},
         "3.14|   2.500|-1.2    |+2.0|1.234500e+03|1E-05"},
        {"%f|%.0f|%g", {1, 2.5, 100000.0}, "1.000000|2|100000"},
        {"%05.1f", {-2.5}, "-02.5"},
        {"%c%c", {0x48, 0x2026}, "H…"},
        {"%5@|%-3@|%.3@|%s", {"é", "x", "abcdef", "plain"}, "    é|x  |abc|plain"},
        {"%@ and %@", {"one"}, "one and %@"},  // a missing argument stays as written
        {"%3$@", {"a", "b"}, "%3$@"},
        {"%d items", {"many"}, "many items"},  // text is never made into a number
        {"%@ / %@ / %@", {7, -3.5, std::uint64_t{9}}, "7 / -3.5 / 9"},
        {"%d", {2.9}, "2"},
        {"%n %p %*d %k", {1, 2, 3, 4}, "%n %p %*d %k"},  // unknown or unsafe: copied
        {"ends with %", {}, "ends with %"},
        {"ends with %l", {1}, "ends with %l"},
        {"", {1}, ""},
    };
    for (const Case& formatCase : cases) {
        EXPECT_EQ(formatString(formatCase.format, formatCase.arguments), formatCase.expected)
            << formatCase.format;
    }
}

}  // namespace
}  // namespace quod
