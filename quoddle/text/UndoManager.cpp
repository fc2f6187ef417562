#include "quoddle/text/UndoManager.h"

namespace quod {
namespace {

// Short texts are kept as strings; from this many units on, as compact storages (one byte a unit
// for mostly Latin-1 text instead of two).
constexpr int64_t compactFrom = 4096;

std::variant<std::u16string, TextStorage> keep(const TextStorage& storage, Range range) {
    if (range.length < compactFrom) return storage.substringWithRange(range);
    return storage.storageWithRange(range);
}

int64_t lengthOf(const std::variant<std::u16string, TextStorage>& text) {
    if (const auto* string = std::get_if<std::u16string>(&text)) return std::ssize(*string);
    return std::get<TextStorage>(text).length();
}

}  // namespace

void UndoManager::Replacement::swap(TextStorage& storage) {
    const int64_t restoredLength = lengthOf(text);
    if (auto* restored = std::get_if<TextStorage>(&text)) {
        // Storages trade chunks where they can (see exchangeCharactersInRange).
        text = storage.exchangeCharactersInRange(range, std::move(*restored));
        range.length = restoredLength;
        return;
    }
    auto current = keep(storage, range);
    storage.replaceCharactersInRange(range, std::get<std::u16string>(text));
    range.length = restoredLength;
    // A swap, not a move: moving a short string into a long one would keep the long one's buffer.
    text.swap(current);
}

void UndoManager::beginUndoGrouping(Range selection) {
    if (level_ == 0) open_ = Group{{}, selection, selection};
    ++level_;
}

void UndoManager::endUndoGrouping(Range selection) {
    QUOD_PRECONDITION(level_ > 0, "endUndoGrouping without beginUndoGrouping");
    if (--level_ > 0) return;
    open_->selectionAfter = selection;
    if (!open_->replacements.empty()) undoStack_.push_back(std::move(*open_));
    open_.reset();
}

void UndoManager::registerReplacement(const TextStorage& storage, Range range, int64_t newLength) {
    QUOD_PRECONDITION(level_ > 0, "a replacement is recorded only inside an undo group");
    QUOD_PRECONDITION(newLength >= 0, "negative replacement length");
    redoStack_.clear();
    open_->replacements.push_back({{range.location, newLength}, keep(storage, range)});
}

void UndoManager::registerReplacement(Range range, int64_t newLength, TextStorage&& replaced) {
    QUOD_PRECONDITION(level_ > 0, "a replacement is recorded only inside an undo group");
    QUOD_PRECONDITION(newLength >= 0, "negative replacement length");
    redoStack_.clear();
    std::variant<std::u16string, TextStorage> kept;
    if (range.length < compactFrom) {
        kept = replaced.string();
    } else {
        kept = std::move(replaced);
    }
    open_->replacements.push_back({{range.location, newLength}, std::move(kept)});
}

std::optional<Range> UndoManager::undo(TextStorage& storage) {
    QUOD_PRECONDITION(level_ == 0, "undo while an undo group is open");
    if (undoStack_.empty()) return std::nullopt;
    Group group = std::move(undoStack_.back());
    undoStack_.pop_back();
    for (auto replacement = group.replacements.rbegin(); replacement != group.replacements.rend();
         ++replacement) {
        replacement->swap(storage);
    }
    const Range selection = group.selectionBefore;
    redoStack_.push_back(std::move(group));
    return selection;
}

std::optional<Range> UndoManager::redo(TextStorage& storage) {
    QUOD_PRECONDITION(level_ == 0, "redo while an undo group is open");
    if (redoStack_.empty()) return std::nullopt;
    Group group = std::move(redoStack_.back());
    redoStack_.pop_back();
    for (Replacement& replacement : group.replacements)
        replacement.swap(storage);
    const Range selection = group.selectionAfter;
    undoStack_.push_back(std::move(group));
    return selection;
}

void UndoManager::removeAllActions() {
    QUOD_PRECONDITION(level_ == 0, "clearing the history while an undo group is open");
    undoStack_.clear();
    redoStack_.clear();
}

}  // namespace quod
