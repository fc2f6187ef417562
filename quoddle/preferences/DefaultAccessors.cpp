#include "quoddle/preferences/DefaultAccessors.h"

#include <locale.h>
#include <stdlib.h>

#include <charconv>
#include <memory>

#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/preferences/ValueConversions.h"

namespace quod {
namespace {

constexpr std::string_view fontSeparator = "@@@@";

// Looked up on every access, never kept: a host or test may replace the standard store at any
// time. The pointer keeps the store alive to the end of the statement that uses it.
std::shared_ptr<UserDefaults> store() {
    return UserDefaults::standard();
}

// The first two "@@@@"-separated parts of a stored font string.
std::optional<std::pair<std::string_view, std::string_view>> fontParts(std::string_view stored) {
    const auto first = stored.find(fontSeparator);
    if (first == std::string_view::npos) return std::nullopt;
    const std::string_view name = stored.substr(0, first);
    std::string_view size = stored.substr(first + fontSeparator.size());
    size = size.substr(0, size.find(fontSeparator));
    return std::pair{name, size};
}

// A float written in the C locale, as a whole: no leading blanks (strtof would skip them), nothing
// after the number. Accepts what strtof does otherwise ("+12", "1e1", "0x1p3", "inf", "nan").
std::optional<float> parseWholeFloat(std::string_view text) {
    constexpr std::string_view cBlanks = " \t\n\v\f\r";
    if (text.empty() || cBlanks.find(text.front()) != std::string_view::npos) return std::nullopt;
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    if (cLocale == static_cast<locale_t>(nullptr)) return std::nullopt;
    const std::string terminated(text);
    char* end = nullptr;
    const float value = strtof_l(terminated.c_str(), &end, cLocale);
    if (end != terminated.c_str() + terminated.size()) return std::nullopt;
    return value;
}

PlistArray arrayOf(std::vector<PlistDictionary> dictionaries) {
    PlistArray array;
    array.reserve(dictionaries.size());
    for (auto& dictionary : dictionaries)
        array.emplace_back(std::move(dictionary));
    return array;
}

}  // namespace

bool DefaultBool::get() const {
    return store()->boolForKey(key());
}
void DefaultBool::set(bool value) const {
    store()->setBool(key(), value);
}

bool DefaultBoolResume::get() const {
    return store()->boolForKey(key());
}
void DefaultBoolResume::set(bool value) const {
    const auto defaults = store();
    defaults->setBool(key(), value);
    defaults->setBool(Defaults::Key::resumeNS.rawValue(), value);
}

int64_t DefaultInt::get() const {
    return store()->integerForKey(key());
}
void DefaultInt::set(int64_t value) const {
    store()->setInteger(key(), value);
}

float DefaultFloat::get() const {
    return store()->floatForKey(key());
}
void DefaultFloat::set(float value) const {
    store()->setFloat(key(), value);
}

std::optional<std::string> DefaultString::get() const {
    return store()->stringForKey(key());
}
void DefaultString::set(std::optional<std::string> value) const {
    if (!value) {
        store()->removeObject(key());
        return;
    }
    store()->setObject(key(), PlistValue(std::move(*value)));
}

Font DefaultFont::get() const {
    return fontFromStoredString(store()->stringForKey(key()));
}
void DefaultFont::set(const Font& value) const {
    store()->setObject(key(), PlistValue(storedString(value)));
}

Font DefaultFont::fallbackFont() {
    if (auto menlo = Font::withName("Menlo", 11)) return *menlo;
    return Font::systemFont(11);
}

std::string DefaultFont::storedString(const Font& font) {
    // "%.2f" without the process locale: to_chars with a precision is printf in the C locale.
    char size[400];  // the longest finite double in fixed notation with two decimals fits
    const auto written =
        std::to_chars(size, size + sizeof size, font.pointSize(), std::chars_format::fixed, 2);
    std::string stored = font.fontName();
    stored += fontSeparator;
    stored.append(size, written.ptr);
    return stored;
}

Font DefaultFont::fontFromStoredString(const std::optional<std::string>& stored) {
    if (!stored) return fallbackFont();
    const auto parts = fontParts(*stored);
    if (!parts) return fallbackFont();
    const auto size = parseWholeFloat(parts->second);
    if (!size) return fallbackFont();
    if (auto font = Font::withName(parts->first, *size)) return *font;
    return fallbackFont();
}

std::optional<std::vector<Data>> DefaultArrayData::get() const {
    const auto array = store()->arrayForKey(key());
    if (!array) return std::nullopt;
    return internal::dataList(*array);
}
void DefaultArrayData::set(std::optional<std::vector<Data>> value) const {
    if (!value) {
        store()->removeObject(key());
        return;
    }
    PlistArray array;
    array.reserve(value->size());
    for (Data& blob : *value)
        array.emplace_back(std::move(blob));
    store()->setObject(key(), PlistValue(std::move(array)));
}

std::optional<std::vector<PlistDictionary>> DefaultArrayStandardDictionary::get() const {
    const auto array = store()->arrayForKey(key());
    if (!array) return std::nullopt;
    return internal::dictionaryList(*array);
}
void DefaultArrayStandardDictionary::set(std::optional<std::vector<PlistDictionary>> value) const {
    if (!value) {
        store()->removeObject(key());
        return;
    }
    store()->setObject(key(), PlistValue(arrayOf(std::move(*value))));
}

std::vector<Command> DefaultArrayCommand::get() const {
    return Command::commands(store()->arrayForKey(key()));
}
void DefaultArrayCommand::set(const std::vector<Command>& value) const {
    store()->setObject(key(), PlistValue(arrayOf(Command::array(value))));
}

std::vector<Snippet> DefaultArraySnippet::get() const {
    return Snippet::snippets(store()->arrayForKey(key()));
}
void DefaultArraySnippet::set(const std::vector<Snippet>& value) const {
    store()->setObject(key(), PlistValue(arrayOf(Snippet::array(value))));
}

std::optional<StringDictionary> DefaultStringDictionary::get() const {
    const auto object = store()->objectForKey(key());
    if (!object) return std::nullopt;
    const PlistDictionary* dictionary = object->as<PlistDictionary>();
    if (dictionary == nullptr) return std::nullopt;
    StringDictionary strings;
    for (const auto& [entryKey, entryValue] : *dictionary) {
        const std::string* text = entryValue.as<std::string>();
        if (text == nullptr) return std::nullopt;
        strings.emplace_hint(strings.end(), entryKey, *text);
    }
    return strings;
}
void DefaultStringDictionary::set(std::optional<StringDictionary> value) const {
    if (!value) {
        store()->removeObject(key());
        return;
    }
    PlistDictionary dictionary;
    for (auto& [entryKey, entryValue] : *value) {
        dictionary.emplace_hint(dictionary.end(), entryKey, PlistValue(std::move(entryValue)));
    }
    store()->setObject(key(), PlistValue(std::move(dictionary)));
}

}  // namespace quod
