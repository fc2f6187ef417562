#include "quoddle/preferences/ValueConversions.h"

#include <algorithm>
#include <cstdint>

namespace quod::internal {
namespace {

std::optional<double> exactDouble(int64_t value) {
    const auto converted = static_cast<double>(value);
    // 2^63 is the first double past INT64_MAX; casting it back would be undefined.
    if (converted >= 9223372036854775808.0) return std::nullopt;
    if (static_cast<int64_t>(converted) != value) return std::nullopt;
    return converted;
}

template <typename T>
std::optional<std::vector<T>> listOf(const PlistArray& array) {
    std::vector<T> list;
    list.reserve(array.size());
    for (const PlistValue& element : array) {
        const T* value = element.as<T>();
        if (value == nullptr) return std::nullopt;
        list.push_back(*value);
    }
    return list;
}

}  // namespace

std::optional<std::vector<double>> numberList(const PlistArray& array) {
    std::vector<double> numbers;
    numbers.reserve(array.size());
    for (const PlistValue& element : array) {
        if (const double* real = element.as<double>()) {
            numbers.push_back(*real);
        } else if (const int64_t* integer = element.as<int64_t>()) {
            const auto exact = exactDouble(*integer);
            if (!exact) return std::nullopt;
            numbers.push_back(*exact);
        } else {
            return std::nullopt;
        }
    }
    return numbers;
}

std::optional<std::vector<PlistDictionary>> dictionaryList(const PlistArray& array) {
    return listOf<PlistDictionary>(array);
}

bool isDictionaryList(const PlistArray& array) {
    return std::all_of(array.begin(), array.end(), [](const PlistValue& element) {
        return element.as<PlistDictionary>() != nullptr;
    });
}

std::optional<std::vector<Data>> dataList(const PlistArray& array) {
    return listOf<Data>(array);
}

std::string storedString(const PlistDictionary& record, std::string_view key) {
    const auto entry = record.find(key);
    if (entry == record.end()) return {};
    const std::string* value = entry->second.as<std::string>();
    return value != nullptr ? *value : std::string();
}

bool storedBool(const PlistDictionary& record, std::string_view key) {
    const auto entry = record.find(key);
    if (entry == record.end()) return false;
    const bool* value = entry->second.as<bool>();
    return value != nullptr && *value;
}

}  // namespace quod::internal
