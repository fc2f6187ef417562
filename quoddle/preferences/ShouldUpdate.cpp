#include "quoddle/preferences/ShouldUpdate.h"

#include "quoddle/preferences/ValueConversions.h"

namespace quod {
namespace {

bool numberListsDiffer(const std::vector<double>& oldNumbers,
                       const std::vector<double>& newNumbers) {
    if (oldNumbers.size() != newNumbers.size()) return true;
    for (std::size_t i = 0; i < oldNumbers.size(); ++i) {
        if (!(oldNumbers[i] == newNumbers[i])) return true;  // NaN: never equal
    }
    return false;
}

bool dictionaryListsDiffer(const PlistArray& oldList, const PlistArray& newList) {
    if (oldList.empty()) return false;
    if (newList.empty()) return true;
    for (std::size_t i = 0; i < oldList.size(); ++i) {
        if (i == newList.size()) return true;
        if (!isEqualTo(oldList[i], newList[i])) return true;
    }
    return false;
}

}  // namespace

bool shouldUpdate(const std::optional<PlistValue>& oldValue,
                  const std::optional<PlistValue>& newValue) {
    if (!oldValue || !newValue) return true;
    if (const std::string* oldString = oldValue->as<std::string>()) {
        if (const std::string* newString = newValue->as<std::string>()) {
            return *oldString != *newString;
        }
        return true;
    }
    const PlistArray* oldArray = oldValue->as<PlistArray>();
    const PlistArray* newArray = newValue->as<PlistArray>();
    if (oldArray == nullptr || newArray == nullptr) return true;
    if (const auto oldNumbers = internal::numberList(*oldArray)) {
        if (const auto newNumbers = internal::numberList(*newArray)) {
            return numberListsDiffer(*oldNumbers, *newNumbers);
        }
    }
    if (internal::isDictionaryList(*oldArray) && internal::isDictionaryList(*newArray)) {
        return dictionaryListsDiffer(*oldArray, *newArray);
    }
    return true;
}

}  // namespace quod
