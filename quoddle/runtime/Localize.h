// The user-visible words of the framework and its hosts, in the user's language.
//
// Every phrase is looked up by its English text, so English needs no translation table and a
// missing translation (no catalogue for the language, or no entry in it) gives the English text.
// Lookup is gettext: text domain `textDomain` ("quoddle"), catalogues compiled from po/*.po at
// build time, bound to `localeDirectory()`. The language is gettext's choice for the process:
// the LANGUAGE list, else the locale of LC_MESSAGES as the host activated it with
// setlocale(LC_ALL, "") (Qt and GTK do that at start-up). A process that never calls setlocale
// runs in the C locale and reads English.
//
// The catalogue: one accessor per phrase, `Localize::cancel()`, `Localize::Ellipsis::choose()`,
// `Localize::Lowercase::lines()` (the list is in LocalizeEntries.h). Each looks its phrase up on
// first use, from any thread, exactly once, and keeps the text for the life of the process: a
// change of language shows at the next launch. `string` and `format` look up afresh every call.
//
//     label.setText(Localize::Ellipsis::gotoLine());                   // "Go To Line…"
//     Localize::format("Line %ld of %ld", {12, 40});                   // translated, then filled
//
// `intString(n)` is n as decimal text for currentLocale() ("12,345" in en_US, "12.345" in de),
// from a cache kept per locale; a change of the current locale starts a new cache.
#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/runtime/LocalizeEntries.h"
#include "quoddle/runtime/StringFormat.h"

namespace quod::Localize {

inline constexpr std::string_view textDomain = "quoddle";

// The translation of `key`, or `key` itself when there is none. The empty key gives "".
[[nodiscard]] QUODDLE_EXPORT std::string string(std::string_view key);

// The translation of `key`, filled in by formatString (printf-style, `%@` for text).
[[nodiscard]] QUODDLE_EXPORT std::string format(std::string_view key,
                                                std::span<const FormatArgument> arguments);
[[nodiscard]] inline std::string format(std::string_view key,
                                        std::initializer_list<FormatArgument> arguments) {
    return format(key, std::span<const FormatArgument>(arguments.begin(), arguments.size()));
}

[[nodiscard]] QUODDLE_EXPORT std::string intString(std::int64_t value);

// Where the compiled catalogues are read from, chosen once: $QUODDLE_LOCALEDIR when set; else the
// build tree's `locale` folder when the running program lives in the build tree (tests, tools);
// else the installed one, <prefix>/share/locale for the prefix that holds the shared library (for
// a static library, the prefix it was configured for).
[[nodiscard]] QUODDLE_EXPORT const std::filesystem::path& localeDirectory();

enum class Group { plain, ellipsis, lowercase };

// One catalogue entry, for tools and checks that walk the whole catalogue.
struct Entry {
    Group group;
    std::string_view member;
    std::string_view key;
    const std::string& (*text)();
};

[[nodiscard]] QUODDLE_EXPORT std::span<const Entry> entries();

#define QUOD_LOCALIZE_DECLARE(member, key) [[nodiscard]] QUODDLE_EXPORT const std::string& member();
QUOD_LOCALIZE_PLAIN_ENTRIES(QUOD_LOCALIZE_DECLARE)
namespace Ellipsis {
QUOD_LOCALIZE_ELLIPSIS_ENTRIES(QUOD_LOCALIZE_DECLARE)
}
namespace Lowercase {
QUOD_LOCALIZE_LOWERCASE_ENTRIES(QUOD_LOCALIZE_DECLARE)
}
#undef QUOD_LOCALIZE_DECLARE

}  // namespace quod::Localize
