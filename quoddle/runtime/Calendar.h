// Dates and the Gregorian calendar: parts of a date, month and weekday names, and the standard
// date text of the interface.
//
// A Date is an instant (system clock). A Calendar reads it in one time zone and names things in
// one locale. `Calendar::gregorian()` uses the system's time zone (TZ, else /etc/localtime) and
// currentLocale(), both read when it is made; tests and hosts that need fixed answers pass a
// zone and a locale. An unknown zone identifier reads as UTC ("Etc/Unknown").
//
//     Calendar calendar = Calendar::gregorian();
//     statusBar.setText(calendar.standardText(std::chrono::system_clock::now()));
//     // "Jan 2, 2006, 3:04 PM" in en_US, "02.01.2006, 15:04" in de_DE
#pragma once

#include <unicode/locid.h>

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"

namespace quod {

using Date = std::chrono::system_clock::time_point;

class QUODDLE_EXPORT Calendar {
  public:
    [[nodiscard]] static Calendar gregorian();

    // `timeZone` is an IANA zone identifier ("Europe/Berlin", "UTC").
    Calendar(std::string_view timeZone, const icu::Locale& locale);

    [[nodiscard]] const std::string& timeZone() const { return timeZone_; }
    [[nodiscard]] const icu::Locale& locale() const { return locale_; }

    [[nodiscard]] int year(Date date) const;
    [[nodiscard]] int hour(Date date) const;  // 0 to 23
    [[nodiscard]] int minute(Date date) const;

    // The twelve month names ("January" first) and the seven weekday names ("Sunday" first),
    // in the calendar's locale, as they stand alone in a menu or a table header.
    [[nodiscard]] std::vector<std::string> monthSymbols() const;
    [[nodiscard]] std::vector<std::string> weekdaySymbols() const;

    // The interface's standard text for a date: medium date and short time, in the calendar's
    // locale and zone.
    [[nodiscard]] std::string standardText(Date date) const;

  private:
    std::string timeZone_;
    icu::Locale locale_;
};

}  // namespace quod
