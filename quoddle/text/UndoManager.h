// The undo history of one text: groups of replacements, each able to revert itself.
//
// A change is recorded before it happens as the inverse replacement: "put `text` back into
// `range`", where range is where the new text will lie. Reverting swaps the two: the text now in
// the range is taken out and kept, and the stored text goes in, so the same record then redoes the
// change. Each record therefore holds exactly one copy of the text it replaced, and undoing a
// select-all-and-replace of a huge document keeps only the (small) replacement afterwards. A
// large replaced stretch is kept as a text storage of its own, as compact as the document's.
//
// Grouping. Replacements are recorded only inside a group; groups nest, and the outermost one is
// one undo step. A group remembers the selection when it opened and when it closed, and undo and
// redo answer the selection to restore with the text. A group that recorded nothing is dropped.
// Recording a new step clears the redo history.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/base/Range.h"
#include "quoddle/text/TextStorage.h"

namespace quod {

class QUODDLE_EXPORT UndoManager {
  public:
    void beginUndoGrouping(Range selection);
    void endUndoGrouping(Range selection);
    [[nodiscard]] int64_t groupingLevel() const { return level_; }

    // Records that `range` of `storage` is about to be replaced by `newLength` units. Call inside a
    // group, before the replacement.
    void registerReplacement(const TextStorage& storage, Range range, int64_t newLength);
    // Records a replacement that has already happened, given the text it took out of `range`
    // (now `newLength` units long): for callers that exchanged whole storages and so hold the
    // replaced text without copying it.
    void registerReplacement(Range range, int64_t newLength, TextStorage&& replaced);

    [[nodiscard]] bool canUndo() const { return !undoStack_.empty(); }
    [[nodiscard]] bool canRedo() const { return !redoStack_.empty(); }
    [[nodiscard]] int64_t undoStepCount() const { return std::ssize(undoStack_); }

    // Reverts the last step in `storage` and answers the selection it had before; no value when
    // there is nothing to undo. Must not be called inside a group.
    std::optional<Range> undo(TextStorage& storage);
    // Reapplies the last undone step and answers the selection it left behind.
    std::optional<Range> redo(TextStorage& storage);

    void removeAllActions();

  private:
    struct Replacement {
        Range range;  // where the text to be swapped out lies now
        std::variant<std::u16string, TextStorage> text;  // what goes back in its place
        void swap(TextStorage& storage);
    };
    struct Group {
        std::vector<Replacement> replacements;
        Range selectionBefore;
        Range selectionAfter;
    };

    std::vector<Group> undoStack_;
    std::vector<Group> redoStack_;
    std::optional<Group> open_;
    int64_t level_ = 0;
};

}  // namespace quod
