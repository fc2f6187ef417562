#include "quoddle/runtime/Localize.h"

#include <dlfcn.h>
#include <libintl.h>
#include <unicode/numberformatter.h>

#include <cstdlib>
#include <mutex>
#include <unordered_map>

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/runtime/Bundle.h"

namespace quod::Localize {
namespace {

// The installed catalogues: beside the library that holds this code, by the relative path that
// configuring fixed, so that a prefix chosen at install time (or a package's /usr) finds its own.
// Linked statically, the code lies in the program, which may live anywhere: then the configured
// prefix is all there is to go by.
std::filesystem::path installedLocaleDirectory() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&installedLocaleDirectory), &info) != 0 &&
        info.dli_fname != nullptr) {
        std::error_code error;
        const std::filesystem::path library = std::filesystem::canonical(info.dli_fname, error);
        if (!error && library != internal::runningExecutablePath()) {
            return (library.parent_path() / QUODDLE_LOCALEDIR_FROM_LIBDIR).lexically_normal();
        }
    }
    return QUODDLE_INSTALL_LOCALEDIR;
}

std::filesystem::path chooseLocaleDirectory() {
    if (const char* override = std::getenv("QUODDLE_LOCALEDIR"); override && *override) {
        return override;
    }
    std::error_code error;
    const std::filesystem::path buildTree =
        std::filesystem::weakly_canonical(QUODDLE_BUILD_DIR, error);
    const std::filesystem::path& executable = internal::runningExecutablePath();
    if (!error && !executable.empty()) {
        const std::filesystem::path relative = executable.lexically_relative(buildTree);
        if (!relative.empty() && *relative.begin() != "..") return QUODDLE_BUILD_LOCALEDIR;
    }
    return installedLocaleDirectory();
}

void bindDomainOnce() {
    static std::once_flag bound;
    std::call_once(bound, [] {
        const std::string domain(textDomain);
        bindtextdomain(domain.c_str(), localeDirectory().c_str());
        // Our texts are UTF-8 whatever the process's character set.
        bind_textdomain_codeset(domain.c_str(), "UTF-8");
    });
}

// Localized decimal texts of integers for one locale; cleared when the locale changes or when
// it holds `capacity` texts (the platform's cache may drop entries at any time as well).
struct IntCache {
    static constexpr std::size_t capacity = 4096;
    std::mutex mutex;
    std::string localeName;
    std::unordered_map<std::int64_t, std::string> texts;
};

IntCache& intCache() {
    static IntCache* const cache = new IntCache;
    return *cache;
}

std::string formatInteger(std::int64_t value, const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString text =
        icu::number::NumberFormatter::withLocale(locale).formatInt(value, status).toString(status);
    if (U_FAILURE(status)) return std::to_string(value);
    std::string utf8;
    text.toUTF8String(utf8);
    return utf8;
}

}  // namespace

const std::filesystem::path& localeDirectory() {
    static const std::filesystem::path* const directory =
        new std::filesystem::path(chooseLocaleDirectory());
    return *directory;
}

std::string string(std::string_view key) {
    // gettext answers the catalogue's header for the empty id.
    if (key.empty()) return {};
    bindDomainOnce();
    const std::string domain(textDomain);
    const std::string id(key);
    return dgettext(domain.c_str(), id.c_str());
}

std::string format(std::string_view key, std::span<const FormatArgument> arguments) {
    return formatString(string(key), arguments);
}

std::string intString(std::int64_t value) {
    const icu::Locale locale = currentLocale();
    IntCache& cache = intCache();
    {
        std::lock_guard lock(cache.mutex);
        if (cache.localeName != locale.getName()) {
            cache.texts.clear();
            cache.localeName = locale.getName();
        }
        if (auto found = cache.texts.find(value); found != cache.texts.end()) return found->second;
    }
    std::string text = formatInteger(value, locale);
    std::lock_guard lock(cache.mutex);
    if (cache.localeName == locale.getName()) {
        if (cache.texts.size() >= IntCache::capacity) cache.texts.clear();
        cache.texts.emplace(value, text);
    }
    return text;
}

#define QUOD_LOCALIZE_DEFINE(member, key)                                                      \
    const std::string& member() {                                                              \
        static const std::string* const text = new std::string(::quod::Localize::string(key)); \
        return *text;                                                                          \
    }
QUOD_LOCALIZE_PLAIN_ENTRIES(QUOD_LOCALIZE_DEFINE)
namespace Ellipsis {
QUOD_LOCALIZE_ELLIPSIS_ENTRIES(QUOD_LOCALIZE_DEFINE)
}
namespace Lowercase {
QUOD_LOCALIZE_LOWERCASE_ENTRIES(QUOD_LOCALIZE_DEFINE)
}
#undef QUOD_LOCALIZE_DEFINE

std::span<const Entry> entries() {
#define QUOD_LOCALIZE_PLAIN(member, key) Entry{Group::plain, #member, key, &member},
#define QUOD_LOCALIZE_ELLIPSIS(member, key) Entry{Group::ellipsis, #member, key, &Ellipsis::member},
#define QUOD_LOCALIZE_LOWERCASE(member, key) \
    Entry{Group::lowercase, #member, key, &Lowercase::member},
    static const Entry everyEntry[] = {
        QUOD_LOCALIZE_PLAIN_ENTRIES(QUOD_LOCALIZE_PLAIN)
            QUOD_LOCALIZE_ELLIPSIS_ENTRIES(QUOD_LOCALIZE_ELLIPSIS)
                QUOD_LOCALIZE_LOWERCASE_ENTRIES(QUOD_LOCALIZE_LOWERCASE)};
#undef QUOD_LOCALIZE_PLAIN
#undef QUOD_LOCALIZE_ELLIPSIS
#undef QUOD_LOCALIZE_LOWERCASE
    return everyEntry;
}

}  // namespace quod::Localize
