// What commands and snippets share: a name, a text, a "made in this run" flag and an identity.
//
// `DataItem<Item>` is the common base of `Command` and `Snippet` (the item type passes itself, so
// the operations work on lists of that type):
//   - `uuid()` is a fresh random version-4 UUID in upper-case 8-4-4-4-12 form, made whenever an
//     item is made: by the constructor and by every load from the store. It is never stored, so
//     the same stored command loaded twice gives two different identities. Copies share it.
//   - `==` compares identities only: an item edited in place stays equal to its earlier copies,
//     and two items with the same name and text but made separately are not equal.
//   - `sort` orders by name with the file browser's comparison (`localizedStandardCompare`):
//     "File1", "file9", "file10". Items whose names compare the same keep their order.
//   - `alreadyInArray` asks whether the list holds an item with exactly this name and this text
//     (bytes compared, so case matters); identities are not consulted, so an item finds itself.
#pragma once

#include <unicode/locid.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/base/CurrentLocale.h"

namespace quod {
namespace internal {

// A new random version-4 UUID, upper case.
[[nodiscard]] QUODDLE_EXPORT std::string makeUuidString();

// The indexes of `names` in localized standard order, stable.
[[nodiscard]] QUODDLE_EXPORT std::vector<std::size_t> localizedOrder(
    const std::vector<const std::string*>& names, const icu::Locale& locale);

}  // namespace internal

template <typename Item>
class DataItem {
  public:
    [[nodiscard]] const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    [[nodiscard]] const std::string& text() const { return text_; }
    void setText(std::string text) { text_ = std::move(text); }
    [[nodiscard]] bool newItem() const { return newItem_; }
    void setNewItem(bool newItem) { newItem_ = newItem; }
    [[nodiscard]] const std::string& uuid() const { return uuid_; }

    friend bool operator==(const DataItem& a, const DataItem& b) { return a.uuid_ == b.uuid_; }

    [[nodiscard]] static std::vector<Item> sort(std::vector<Item> items,
                                                const icu::Locale& locale = currentLocale()) {
        std::vector<const std::string*> names;
        names.reserve(items.size());
        for (const Item& item : items)
            names.push_back(&item.name());
        const auto order = internal::localizedOrder(names, locale);
        std::vector<Item> sorted;
        sorted.reserve(items.size());
        for (std::size_t index : order)
            sorted.push_back(std::move(items[index]));
        return sorted;
    }

    [[nodiscard]] bool alreadyInArray(const std::vector<Item>& items) const {
        return std::any_of(items.begin(), items.end(), [this](const Item& other) {
            return other.name() == name_ && other.text() == text_;
        });
    }

  protected:
    DataItem(std::string name, std::string text, bool newItem)
        : name_(std::move(name)),
          text_(std::move(text)),
          newItem_(newItem),
          uuid_(internal::makeUuidString()) {}

  private:
    std::string name_;
    std::string text_;
    bool newItem_;
    std::string uuid_;
};

}  // namespace quod
