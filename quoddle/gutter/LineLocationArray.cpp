#include "quoddle/gutter/LineLocationArray.h"

#include <algorithm>

namespace quod {

int64_t LineLocationArray::operator[](int64_t index) const {
    QUOD_PRECONDITION(index >= 0 && index < size(), "line location index outside the array");
    const int64_t start = starts_.start(index);
    return index + 1 == size() && start == textLength_ ? emptyLastLine : start;
}

int64_t LineLocationArray::firstIndexAtOrAfter(int64_t location) const {
    if (location <= 0 || empty()) return 0;
    // The line that holds location - 1 is the last one starting before `location`...
    const int64_t index = starts_.lineContaining(location - 1) + 1;
    // ...but an empty last line's marker comes after every location.
    if (index == size() && (*this)[size() - 1] == emptyLastLine) return size() - 1;
    return index;
}

std::vector<int64_t> LineLocationArray::toVector() const {
    if (!indexed_) return {};
    std::vector<int64_t> locations = starts_.starts();
    if (locations.back() == textLength_) locations.back() = emptyLastLine;
    return locations;
}

bool operator==(const LineLocationArray& array, const std::vector<int64_t>& locations) {
    return array.size() == std::ssize(locations) && array.toVector() == locations;
}

std::vector<int64_t> LineLocationArray::locationsByRebuilding(const TextStorage& textStorage) {
    std::vector<int64_t> locations = textStorage.lineStarts();
    if (locations.back() == textStorage.length()) locations.back() = emptyLastLine;
    return locations;
}

bool LineLocationArray::rebuild(const TextStorage& textStorage) {
    std::vector<int64_t> locations = locationsByRebuilding(textStorage);
    if (*this == locations) return false;
    textLength_ = textStorage.length();
    if (locations.back() == emptyLastLine) locations.back() = textLength_;
    starts_ = LineStartIndex(locations);
    indexed_ = true;
    return true;
}

bool LineLocationArray::apply(const TextStorage& textStorage, const TextStorageEdit& edit) {
    if (!indexed_) return false;
    const Range inserted = edit.editedRange;
    const int64_t length = textStorage.length();
    const int64_t removedLength = inserted.length - edit.changeInLength;
    if (textLength_ + edit.changeInLength != length || !inserted.isInside(length) ||
        removedLength < 0) {
        return rebuild(textStorage);
    }
    const Range replaced{inserted.location, removedLength};

    // Entries can change only where starts are dropped and refound, behind the change (when the
    // length changes), and at the end (an empty last line appearing or going).
    const int64_t oldSize = size();
    const int64_t oldLast = (*this)[oldSize - 1];
    const LineStartIndex::Lines window = starts_.linesStartingInReplacedRange(replaced);
    std::vector<int64_t> oldWindow;
    oldWindow.reserve(static_cast<std::size_t>(window.count));
    for (int64_t index = window.first; index < window.first + window.count; ++index)
        oldWindow.push_back((*this)[index]);

    const int64_t location = inserted.location;
    const char16_t unitBefore = location > 0 ? textStorage.characterAtIndex(location - 1) : u'\0';
    const bool nextIsLineFeed =
        inserted.end() < length && textStorage.characterAtIndex(inserted.end()) == u'\n';
    const LineStartIndex::Lines refound = starts_.replace(
        replaced, textStorage.substringWithRange(inserted), unitBefore, nextIsLineFeed);
    textLength_ = length;

    if (size() != oldSize) return true;
    for (int64_t k = 0; k < refound.count; ++k) {
        if ((*this)[refound.first + k] != oldWindow[static_cast<std::size_t>(k)]) return true;
    }
    // Every shifted entry but the last moves with the length; the last one (a shifted empty last
    // line stays the marker) is compared with what it was.
    const int64_t shifted = size() - (refound.first + refound.count);
    if (edit.changeInLength != 0 && shifted > 1) return true;
    return (*this)[size() - 1] != oldLast;
}

}  // namespace quod
