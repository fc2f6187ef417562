#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <numbers>
#include <string>

#include "quoddle/runtime/Calendar.h"
#include "quoddle/runtime/Math.h"

namespace quod {
namespace {

using namespace std::chrono;

Date utc(int year, unsigned month, unsigned day, int hour, int minute) {
    return sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day)) +
           hours(hour) + minutes(minute);
}

TEST(Calendar, ReadsThePartsOfADateInItsTimeZone) {
    struct Case {
        Date date;
        const char* zone;
        int year;
        int hour;
        int minute;
    };
    const Case cases[] = {
        {utc(2006, 1, 2, 15, 4), "UTC", 2006, 15, 4},
        {utc(2006, 1, 2, 15, 4), "Europe/Berlin", 2006, 16, 4},
        {utc(2006, 7, 2, 15, 4), "Europe/Berlin", 2006, 17, 4},  // summer time
        {utc(2006, 1, 2, 15, 4), "America/Los_Angeles", 2006, 7, 4},
        {utc(2006, 1, 2, 15, 4), "Asia/Kolkata", 2006, 20, 34},
        {utc(2005, 12, 31, 23, 30), "Europe/Berlin", 2006, 0, 30},  // a new year there already
        {utc(2006, 1, 2, 15, 4), "Not/AZone", 2006, 15, 4},         // unknown zones read as UTC
    };
    for (const Case& dateCase : cases) {
        const Calendar calendar(dateCase.zone, icu::Locale("en_US"));
        EXPECT_EQ(calendar.year(dateCase.date), dateCase.year) << dateCase.zone;
        EXPECT_EQ(calendar.hour(dateCase.date), dateCase.hour) << dateCase.zone;
        EXPECT_EQ(calendar.minute(dateCase.date), dateCase.minute) << dateCase.zone;
    }
}

TEST(Calendar, NamesMonthsAndWeekdaysInItsLocale) {
    struct Case {
        const char* locale;
        const char* firstMonth;
        const char* lastMonth;
        const char* firstWeekday;
    };
    for (const Case& names : {Case{"en_US", "January", "December", "Sunday"},
                              Case{"de_DE", "Januar", "Dezember", "Sonntag"}}) {
        const Calendar calendar("UTC", icu::Locale(names.locale));
        const auto months = calendar.monthSymbols();
        const auto weekdays = calendar.weekdaySymbols();
        ASSERT_EQ(months.size(), 12u) << names.locale;
        ASSERT_EQ(weekdays.size(), 7u) << names.locale;
        EXPECT_EQ(months.front(), names.firstMonth);
        EXPECT_EQ(months.back(), names.lastMonth);
        EXPECT_EQ(weekdays.front(), names.firstWeekday);
    }
}

TEST(Calendar, TheStandardTextShowsDateAndTimeForTheLocaleAndZone) {
    const Date date = utc(2006, 1, 2, 15, 4);
    struct Case {
        const char* zone;
        const char* locale;
        const char* datePart;
        const char* timePart;
    };
    for (const Case& text : {Case{"UTC", "en_US", "Jan 2, 2006", "3:04"},
                             Case{"Europe/Berlin", "de_DE", "02.01.2006", "16:04"}}) {
        const std::string shown = Calendar(text.zone, icu::Locale(text.locale)).standardText(date);
        EXPECT_NE(shown.find(text.datePart), std::string::npos) << shown;
        EXPECT_NE(shown.find(text.timePart), std::string::npos) << shown;
    }
    EXPECT_FALSE(Calendar::gregorian().timeZone().empty());
}

TEST(Math, AnglesAndDistances) {
    const std::pair<double, double> angles[] = {
        {0, 0}, {180, std::numbers::pi}, {90, std::numbers::pi / 2}, {-360, -2 * std::numbers::pi}};
    for (const auto& [degrees, radians] : angles) {
        EXPECT_DOUBLE_EQ(Math::radians(degrees), radians) << degrees;
    }
    struct Distance {
        Point a;
        Point b;
        double expected;
    };
    for (const Distance& d :
         {Distance{{0, 0}, {3, 4}, 5}, Distance{{1, 1}, {1, 1}, 0}, Distance{{-1, -2}, {2, 2}, 5},
          Distance{{0, 0}, {3e200, 4e200}, 5e200}}) {
        EXPECT_DOUBLE_EQ(Math::distance(d.a, d.b), d.expected);
        EXPECT_DOUBLE_EQ(Math::distance(d.b, d.a), d.expected);
    }
}

}  // namespace
}  // namespace quod
