#include "quoddle/base/CurrentLocale.h"

#include <cstdlib>
#include <mutex>
#include <string>

namespace quod {
namespace {

struct LocaleState {
    std::mutex mutex;
    icu::Locale locale;
};

const char* environmentLocaleName() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return value;
    }
    return "";
}

LocaleState& state() {
    static LocaleState* shared = [] {
        auto* created = new LocaleState;
        created->locale = localeFromPosixName(environmentLocaleName());
        return created;
    }();
    return *shared;
}

}  // namespace

icu::Locale localeFromPosixName(std::string_view name) {
    std::string base(name.substr(0, name.find_first_of(".@")));
    if (base.empty() || base == "C" || base == "POSIX") return icu::Locale("en_US");
    icu::Locale locale(base.c_str());
    if (locale.isBogus() || std::string_view(locale.getName()) == "en_US_POSIX") {
        return icu::Locale("en_US");
    }
    return locale;
}

icu::Locale currentLocale() {
    LocaleState& shared = state();
    std::lock_guard lock(shared.mutex);
    return shared.locale;
}

void setCurrentLocale(const icu::Locale& locale) {
    LocaleState& shared = state();
    std::lock_guard lock(shared.mutex);
    shared.locale = locale;
}

}  // namespace quod
