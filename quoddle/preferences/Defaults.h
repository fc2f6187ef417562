// Every persistent setting, by name: `Defaults::tabWidth`, `Defaults::indentWithSpaces`, ...
//
// One accessor constant per key of the catalogue (DefaultsKey.h) that has an accessor, named as
// the key's case and typed by its accessor column; plus `lineNumberFont`, `printFont` and
// `textFont`. The catalogue is only names, key strings and types: the values live in the standard
// store, and the framework registers no defaults, so a fresh store reads false, 0, 0.0, no value,
// an empty list, or Menlo 11 for fonts (see DefaultAccessors.h).
//
//   const int64_t width = Defaults::tabWidth.get();
//   Defaults::indentWithSpaces.set(true);
//   Defaults::snippets.modify([](auto& snippets) { snippets.push_back(snippet); });
//
// The seventeen keys without an accessor (the "Exceptions" list, the launchd section flags,
// "NSQuitAlwaysKeepsWindows", "SecurityBookmarks", "SelectedToolsMode") belong to the hosts, which
// read and write them through `UserDefaults` by `Defaults::Key::...rawValue()`.
#pragma once

#include "quoddle/Export.h"
#include "quoddle/preferences/DefaultAccessors.h"
#include "quoddle/preferences/DefaultsKey.h"

namespace quod {
namespace internal {

template <typename Accessor>
constexpr Accessor defaultAccessor(Defaults::Key key) {
    return Accessor(key);
}
// These two keep their fixed keys, which are the catalogue's "Commands" and "Snippets".
template <>
constexpr DefaultArrayCommand defaultAccessor<DefaultArrayCommand>(Defaults::Key) {
    return DefaultArrayCommand();
}
template <>
constexpr DefaultArraySnippet defaultAccessor<DefaultArraySnippet>(Defaults::Key) {
    return DefaultArraySnippet();
}

}  // namespace internal

namespace Defaults {

#define QUOD_DEFINE_ACCESSOR(name, rawValue, Accessor) \
    inline constexpr Accessor name = internal::defaultAccessor<Accessor>(Key::name);
#define QUOD_NO_ACCESSOR(name, rawValue)
QUOD_DEFAULTS_KEYS(QUOD_DEFINE_ACCESSOR, QUOD_NO_ACCESSOR)
#undef QUOD_DEFINE_ACCESSOR
#undef QUOD_NO_ACCESSOR

inline constexpr DefaultFont lineNumberFont{Key::Font::lineNumber};
inline constexpr DefaultFont printFont{Key::Font::print};
inline constexpr DefaultFont textFont{Key::Font::text};

// Reads `key` as a boolean (absent reads false) and stores the opposite. Usable with any key,
// meaningful for boolean ones.
QUODDLE_EXPORT void negate(Key key);

}  // namespace Defaults
}  // namespace quod
