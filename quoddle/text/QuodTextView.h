// The editing surface: a UTF-16 text with one selection, an undo history and a change protocol.
//
// Every text operation of the framework reads the text and the selection from a QuodTextView and
// hands one replacement back through `replaceWithUndo`, which runs the protocol:
//     shouldChangeText -> replaceCharacters -> didChangeText
// `shouldChangeText` refuses when the view is not editable or its delegate says no; when it agrees
// it opens an undo record that `didChangeText` closes. Everything one command changes is one undo
// step: wrap a command that makes several changes in an `UndoGroup` (the `Text` operations do), and
// undo restores both the text and the selection the command started from.
//
// The view stays silent and toolkit-free: text and selection changes, scroll requests, find
// indicators and the system alert are signals that a host (or the Qt layer) turns into real
// effects. Ranges outside the text and negative counts are programming errors that stop the
// process.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/base/Range.h"
#include "quoddle/base/Signal.h"
#include "quoddle/text/TextStorage.h"
#include "quoddle/text/UndoManager.h"

namespace quod {

class QuodTextView;

// May refuse a change; held weakly by the view.
class QUODDLE_EXPORT QuodTextViewDelegate {
  public:
    virtual ~QuodTextViewDelegate() = default;
    virtual bool textViewShouldChangeText(QuodTextView& view, Range range,
                                          std::u16string_view replacementString) = 0;
};

enum class SelectionGranularity { selectByCharacter, selectByWord, selectByParagraph };

class QUODDLE_EXPORT QuodTextView {
  public:
    QuodTextView();
    explicit QuodTextView(std::u16string_view text);
    explicit QuodTextView(TextStorage&& storage);
    QuodTextView(const QuodTextView&) = delete;
    QuodTextView& operator=(const QuodTextView&) = delete;

    // --- The text view's own operations ---

    [[nodiscard]] TextStorage& textStorage() { return storage_; }
    [[nodiscard]] const TextStorage& textStorage() const { return storage_; }
    [[nodiscard]] std::u16string string() const { return storage_.string(); }
    [[nodiscard]] int64_t length() const { return storage_.length(); }

    [[nodiscard]] Range selectedRange() const { return selectedRange_; }
    void setSelectedRange(Range range);

    [[nodiscard]] bool isEditable() const { return editable_; }
    void setEditable(bool editable) { editable_ = editable; }
    void setDelegate(std::weak_ptr<QuodTextViewDelegate> delegate) {
        delegate_ = std::move(delegate);
    }
    // Always true: the surface paints its whole bounds.
    [[nodiscard]] bool isOpaque() const { return true; }

    // False when not editable or the delegate refuses; otherwise opens the undo record.
    [[nodiscard]] bool shouldChangeText(Range range, std::u16string_view replacementString);
    // Replaces in the text storage. The selection stays valid: one before the change stays, one
    // after it moves with the text, one that overlaps it (or an insertion point at the insertion
    // position) moves behind the new text.
    void replaceCharacters(Range range, std::u16string_view text);
    // Closes the change opened by shouldChangeText and announces it.
    void didChangeText();

    // Widens a range: to whole grapheme clusters, to the word-break segments at its ends (an
    // insertion point takes the segment before it at the end of a line; never a line terminator),
    // or to whole paragraphs. An empty range on an empty line stays empty for words.
    [[nodiscard]] Range selectionRangeForProposedRange(Range proposed,
                                                       SelectionGranularity granularity) const;
    void selectWord();
    void selectParagraph();
    void selectAll();

    void scrollRangeToVisible(Range range);
    void showFindIndicatorForRange(Range range);
    // The system alert: an impossible command (a line up at the top).
    void beep();

    [[nodiscard]] UndoManager& undoManager() { return undoManager_; }
    void undo();
    void redo();

    // --- QuodTextView's members ---

    // The selection, or for an insertion point the whole line under it, terminator included.
    [[nodiscard]] Range selection() const;
    // Lines of the whole text; an empty last line after a final terminator counts.
    [[nodiscard]] int64_t numberOfLines() const;
    // Lines touched by the selection; at least 1, and a line the selection only reaches the start
    // of does not count.
    [[nodiscard]] int64_t numberOfLinesSelected() const;
    // Selects from the start of the line of `location` over `count` line ends from location on.
    void selectLines(int64_t count, int64_t location);
    // Selects, scrolls to and highlights a line by its 1-based number.
    void selectLineNumber(int64_t line);
    // The one path by which operations change text; with select true the new text ends selected.
    void replaceWithUndo(std::u16string_view newText, Range range, bool select);
    // The same for a replacement built as a storage (TextStorage::Builder): it goes in without a
    // UTF-16 copy, and a replaced whole text goes to the undo record as it is. A delegate is still
    // asked about the replacement as a string.
    void replaceWithUndo(TextStorage&& newText, Range range, bool select);

    // --- Signals ---
    Signal<QuodTextView> textDidChange;
    Signal<QuodTextView, Range> selectionDidChange;
    Signal<QuodTextView, Range> scrollRangeToVisibleRequested;
    Signal<QuodTextView, Range> findIndicatorRequested;
    Signal<QuodTextView> alertRequested;

    // One undo step around a command that changes the text more than once.
    class UndoGroup {
      public:
        explicit UndoGroup(QuodTextView& view) : view_(view) {
            view_.undoManager_.beginUndoGrouping(view_.selectedRange_);
        }
        ~UndoGroup() { view_.undoManager_.endUndoGrouping(view_.selectedRange_); }
        UndoGroup(const UndoGroup&) = delete;
        UndoGroup& operator=(const UndoGroup&) = delete;

      private:
        QuodTextView& view_;
    };

  private:
    Range wordRangeForProposedRange(Range proposed) const;
    void adjustSelectionForReplacement(Range range, int64_t newLength);
    void restoreSelection(std::optional<Range> selection);

    TextStorage storage_;
    UndoManager undoManager_;
    Range selectedRange_{0, 0};
    bool editable_ = true;
    int64_t openChanges_ = 0;
    std::weak_ptr<QuodTextViewDelegate> delegate_;
};

}  // namespace quod
