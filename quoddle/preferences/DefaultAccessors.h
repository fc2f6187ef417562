// Typed access to one stored setting: one small accessor type per stored type.
//
// An accessor holds its key and nothing else. There is no cache and no default of its own: `get`
// reads the standard store (`UserDefaults::standard()`) every time and `set` writes it at once, so
// two accessors of the same key, in this process or another sharing the store, always agree. A
// key the store lacks, or holds with a value of another kind, reads as the type's absent answer:
//
//   accessor                         value                                   absent / unusable
//   DefaultBool                      bool                                    false
//   DefaultBoolResume                bool (also written to "NSQuitAlwaysKeepsWindows")  false
//   DefaultInt                       int64_t                                 0
//   DefaultFloat                     float                                   0
//   DefaultString                    optional string                         no value
//   DefaultFont                      Font ("name@@@@12.00")                  Menlo 11, else system
//   11 DefaultArrayData                 optional list of Data                   no value
//   DefaultArrayStandardDictionary   optional list of PlistDictionary        no value
//   DefaultArrayCommand              list of Command, key "Commands"         empty
//   DefaultArraySnippet              list of Snippet, key "Snippets"         empty
//   DefaultStringDictionary          optional string -> string map           no value
//
// Lists convert as a whole: one element of the wrong kind makes the whole list absent (or empty),
// never shorter. Setting no value on an optional accessor removes the key. `modify` reads, lets the
// caller change the value in place and always writes the result back, also when nothing changed:
//
//   Defaults::tabWidth.set(4);
//   Defaults::commands.modify([](auto& commands) { commands.push_back(command); });
//
// Accessors are constexpr values (Defaults.h makes one per setting) and usable from any thread;
// consistency is the store's.
#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/preferences/Command.h"
#include "quoddle/preferences/DefaultsKey.h"
#include "quoddle/preferences/Font.h"
#include "quoddle/preferences/PropertyList.h"
#include "quoddle/preferences/Snippet.h"

namespace quod {

using StringDictionary = std::map<std::string, std::string, std::less<>>;

namespace internal {

// `modify` for every accessor, over the accessor's own `get` and `set`.
template <typename Accessor, typename Value>
class DefaultAccessor {
  public:
    using ValueType = Value;

    template <typename Change>
    requires std::invocable<Change, Value&>
    void modify(Change&& change) const {
        const auto& self = static_cast<const Accessor&>(*this);
        Value value = self.get();
        std::invoke(std::forward<Change>(change), value);
        self.set(std::move(value));
    }
};

// An accessor that keeps the raw string of the `Defaults::Key` it was made from.
template <typename Accessor, typename Value>
class KeyedDefault : public DefaultAccessor<Accessor, Value> {
  public:
    constexpr explicit KeyedDefault(Defaults::Key key) : key_(key.rawValue()) {}
    [[nodiscard]] constexpr std::string_view key() const { return key_; }

  private:
    std::string_view key_;  // points into the static key table
};

}  // namespace internal

class QUODDLE_EXPORT DefaultBool : public internal::KeyedDefault<DefaultBool, bool> {
  public:
    using KeyedDefault::KeyedDefault;
    [[nodiscard]] bool get() const;
    void set(bool value) const;
};

// Reads as DefaultBool; every write also stores the value under "NSQuitAlwaysKeepsWindows", so the
// application's "resume windows" setting and the system's window restoration never disagree.
class QUODDLE_EXPORT DefaultBoolResume : public internal::KeyedDefault<DefaultBoolResume, bool> {
  public:
    using KeyedDefault::KeyedDefault;
    [[nodiscard]] bool get() const;
    void set(bool value) const;
};

class QUODDLE_EXPORT DefaultInt : public internal::KeyedDefault<DefaultInt, int64_t> {
  public:
    using KeyedDefault::KeyedDefault;
    [[nodiscard]] int64_t get() const;
    void set(int64_t value) const;
};

class QUODDLE_EXPORT DefaultFloat : public internal::KeyedDefault<DefaultFloat, float> {
  public:
    using KeyedDefault::KeyedDefault;
    [[nodiscard]] float get() const;
    void set(float value) const;
};

class QUODDLE_EXPORT DefaultString
    : public internal::KeyedDefault<DefaultString, std::optional<std::string>> {
  public:
    using KeyedDefault::KeyedDefault;
    [[nodiscard]] std::optional<std::string> get() const;
    void set(std::optional<std::string> value) const;
};

// A font stored as one string: PostScript name, "@@@@", point size with two decimals in the C
// locale ("Menlo-Regular@@@@12.00"). Reading splits at every "@@@@" and uses the first two parts
// (more are ignored); the size must be a whole C-locale number, with no blanks or other text
// around it. A missing string, a single part, an unreadable size or a font the catalogue lacks all
// read as `fallbackFont()`, the same for all three font keys.
class QUODDLE_EXPORT DefaultFont : public internal::DefaultAccessor<DefaultFont, Font> {
  public:
    constexpr explicit DefaultFont(Defaults::Key::Font key) : key_(key) {}
    [[nodiscard]] constexpr std::string_view key() const { return key_.rawValue(); }

    [[nodiscard]] Font get() const;
    void set(const Font& value) const;

    // "Menlo" at 11 points, else the system font at 11 points.
    [[nodiscard]] static Font fallbackFont();
    // The stored form of `font`.
    [[nodiscard]] static std::string storedString(const Font& font);
    // The font a stored value stands for, `fallbackFont()` when none.
    [[nodiscard]] static Font fontFromStoredString(const std::optional<std::string>& stored);

  private:
    Defaults::Key::Font key_;
};

class QUODDLE_EXPORT DefaultArrayData
    : public internal::KeyedDefault<DefaultArrayData, std::optional<std::vector<Data>>> {
  public:
    using KeyedDefault::KeyedDefault;
    [[nodiscard]] std::optional<std::vector<Data>> get() const;
    void set(std::optional<std::vector<Data>> value) const;
};

class QUODDLE_EXPORT DefaultArrayStandardDictionary
    : public internal::KeyedDefault<DefaultArrayStandardDictionary,
                                    std::optional<std::vector<PlistDictionary>>> {
  public:
    using KeyedDefault::KeyedDefault;
    [[nodiscard]] std::optional<std::vector<PlistDictionary>> get() const;
    void set(std::optional<std::vector<PlistDictionary>> value) const;
};

// Always the key "Commands"; see Command.h for the stored form.
class QUODDLE_EXPORT DefaultArrayCommand
    : public internal::DefaultAccessor<DefaultArrayCommand, std::vector<Command>> {
  public:
    constexpr DefaultArrayCommand() = default;
    [[nodiscard]] static constexpr std::string_view key() {
        return Defaults::Key::commands.rawValue();
    }
    [[nodiscard]] std::vector<Command> get() const;
    void set(const std::vector<Command>& value) const;
};

// Always the key "Snippets"; see Snippet.h for the stored form.
class QUODDLE_EXPORT DefaultArraySnippet
    : public internal::DefaultAccessor<DefaultArraySnippet, std::vector<Snippet>> {
  public:
    constexpr DefaultArraySnippet() = default;
    [[nodiscard]] static constexpr std::string_view key() {
        return Defaults::Key::snippets.rawValue();
    }
    [[nodiscard]] std::vector<Snippet> get() const;
    void set(const std::vector<Snippet>& value) const;
};

// A dictionary whose keys and values are all strings; any other value reads as absent.
class QUODDLE_EXPORT DefaultStringDictionary
    : public internal::KeyedDefault<DefaultStringDictionary, std::optional<StringDictionary>> {
  public:
    using KeyedDefault::KeyedDefault;
    [[nodiscard]] std::optional<StringDictionary> get() const;
    void set(std::optional<StringDictionary> value) const;
};

}  // namespace quod
