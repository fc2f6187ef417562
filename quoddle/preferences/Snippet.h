// A user-defined piece of text to insert, as kept in the preferences under "Snippets".
//
// Stored form (`array`), one dictionary per snippet, in list order, with exactly two string
// entries: "name" and "text". `newItem` and `uuid` are not stored.
//
// Loading (`snippets`) is all or nothing: no array, or an array with any element that is not a
// dictionary, loads no snippets at all. "name" and "text" are taken if they are strings, else
// empty; other keys are ignored. Every loaded snippet has `newItem` false and a fresh `uuid`.
//
// Identity, ordering and duplicate detection are DataItem's (DataItem.h).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/preferences/DataItem.h"
#include "quoddle/preferences/PropertyList.h"

namespace quod {

class QUODDLE_EXPORT Snippet : public DataItem<Snippet> {
  public:
    Snippet(std::string name, std::string text, bool newItem)
        : DataItem(std::move(name), std::move(text), newItem) {}

    [[nodiscard]] static std::vector<Snippet> snippets(const std::optional<PlistArray>& from);
    [[nodiscard]] static std::vector<PlistDictionary> array(const std::vector<Snippet>& from);
};

}  // namespace quod
