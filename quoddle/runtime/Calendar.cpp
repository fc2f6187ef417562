#include "quoddle/runtime/Calendar.h"

#include <unicode/datefmt.h>
#include <unicode/dtfmtsym.h>
#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <memory>

#include "quoddle/base/CurrentLocale.h"

namespace quod {
namespace {

UDate toUDate(Date date) {
    return static_cast<UDate>(
        std::chrono::duration_cast<std::chrono::milliseconds>(date.time_since_epoch()).count());
}

std::unique_ptr<icu::TimeZone> zoneNamed(const std::string& identifier) {
    return std::unique_ptr<icu::TimeZone>(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(identifier)));
}

std::string systemZoneIdentifier() {
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString identifier;
    std::string utf8;
    if (zone) zone->getID(identifier).toUTF8String(utf8);
    return utf8.empty() ? "UTC" : utf8;
}

int field(const std::string& timeZone, const icu::Locale& locale, Date date,
          UCalendarDateFields which) {
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(zoneNamed(timeZone).release(), locale, status);
    calendar.setTime(toUDate(date), status);
    const int value = calendar.get(which, status);
    return U_SUCCESS(status) ? value : 0;
}

std::vector<std::string> symbols(const icu::UnicodeString* names, int32_t count) {
    std::vector<std::string> result;
    for (int32_t i = 0; i < count; ++i) {
        if (names[i].isEmpty()) continue;  // ICU's weekday list starts with an empty slot
        std::string utf8;
        names[i].toUTF8String(utf8);
        result.push_back(std::move(utf8));
    }
    return result;
}

}  // namespace

Calendar Calendar::gregorian() {
    return Calendar(systemZoneIdentifier(), currentLocale());
}

Calendar::Calendar(std::string_view timeZone, const icu::Locale& locale)
    : timeZone_(timeZone), locale_(locale) {}

int Calendar::year(Date date) const {
    return field(timeZone_, locale_, date, UCAL_EXTENDED_YEAR);
}

int Calendar::hour(Date date) const {
    return field(timeZone_, locale_, date, UCAL_HOUR_OF_DAY);
}

int Calendar::minute(Date date) const {
    return field(timeZone_, locale_, date, UCAL_MINUTE);
}

std::vector<std::string> Calendar::monthSymbols() const {
    UErrorCode status = U_ZERO_ERROR;
    icu::DateFormatSymbols names(locale_, status);
    if (U_FAILURE(status)) return {};
    int32_t count = 0;
    const icu::UnicodeString* months =
        names.getMonths(count, icu::DateFormatSymbols::STANDALONE, icu::DateFormatSymbols::WIDE);
    return symbols(months, count);
}

std::vector<std::string> Calendar::weekdaySymbols() const {
    UErrorCode status = U_ZERO_ERROR;
    icu::DateFormatSymbols names(locale_, status);
    if (U_FAILURE(status)) return {};
    int32_t count = 0;
    const icu::UnicodeString* days =
        names.getWeekdays(count, icu::DateFormatSymbols::STANDALONE, icu::DateFormatSymbols::WIDE);
    return symbols(days, count);
}

std::string Calendar::standardText(Date date) const {
    std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateTimeInstance(
        icu::DateFormat::kMedium, icu::DateFormat::kShort, locale_));
    if (!format) return {};
    format->adoptTimeZone(zoneNamed(timeZone_).release());
    icu::UnicodeString text;
    format->format(toUDate(date), text);
    std::string utf8;
    text.toUTF8String(utf8);
    return utf8;
}

}  // namespace quod
