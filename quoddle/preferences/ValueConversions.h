// Whole-list conversions of stored arrays, shared by the accessors, colours and `shouldUpdate`.
//
// A stored array converts to a typed list only as a whole: one element of another kind and there
// is no list at all, never a shorter one. That is how the platform casts an array to a typed
// array, and what keeps a damaged preference from being half used.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoddle/preferences/PropertyList.h"

namespace quod::internal {

// The numbers of an array of reals and integers (colour components are stored as reals, but a
// hand-edited file may say 1 for 1.0). An integer that no double holds exactly, a boolean or any
// other kind makes the array no list of numbers.
[[nodiscard]] std::optional<std::vector<double>> numberList(const PlistArray& array);

// The dictionaries of an array of dictionaries.
[[nodiscard]] std::optional<std::vector<PlistDictionary>> dictionaryList(const PlistArray& array);
[[nodiscard]] bool isDictionaryList(const PlistArray& array);

// The blobs of an array of byte blobs.
[[nodiscard]] std::optional<std::vector<Data>> dataList(const PlistArray& array);

// An entry of a stored record if it has the right kind, else the empty string resp. false.
[[nodiscard]] std::string storedString(const PlistDictionary& record, std::string_view key);
[[nodiscard]] bool storedBool(const PlistDictionary& record, std::string_view key);

}  // namespace quod::internal
