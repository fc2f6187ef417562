#include "quoddle/preferences/Snippet.h"

#include "quoddle/preferences/ValueConversions.h"

namespace quod {

std::vector<Snippet> Snippet::snippets(const std::optional<PlistArray>& from) {
    std::vector<Snippet> snippets;
    if (!from || !internal::isDictionaryList(*from)) return snippets;
    snippets.reserve(from->size());
    for (const PlistValue& element : *from) {
        const PlistDictionary& stored = *element.as<PlistDictionary>();
        snippets.emplace_back(internal::storedString(stored, "name"),
                              internal::storedString(stored, "text"), false);
    }
    return snippets;
}

std::vector<PlistDictionary> Snippet::array(const std::vector<Snippet>& from) {
    std::vector<PlistDictionary> stored;
    stored.reserve(from.size());
    for (const Snippet& snippet : from) {
        stored.push_back({{"name", snippet.name()}, {"text", snippet.text()}});
    }
    return stored;
}

}  // namespace quod
