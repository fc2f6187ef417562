#include "quoddle/text/QuodTextView.h"

#include <algorithm>

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/strings/TextBoundaries.h"

namespace quod {

QuodTextView::QuodTextView() = default;

QuodTextView::QuodTextView(std::u16string_view text) : storage_(text) {}

QuodTextView::QuodTextView(TextStorage&& storage) : storage_(std::move(storage)) {}

void QuodTextView::setSelectedRange(Range range) {
    QUOD_PRECONDITION(range.isInside(length()), "selection outside the text");
    if (range == selectedRange_) return;
    selectedRange_ = range;
    selectionDidChange.emit(range);
}

bool QuodTextView::shouldChangeText(Range range, std::u16string_view replacementString) {
    QUOD_PRECONDITION(range.isInside(length()), "change outside the text");
    if (!editable_) return false;
    if (auto delegate = delegate_.lock()) {
        if (!delegate->textViewShouldChangeText(*this, range, replacementString)) return false;
    }
    undoManager_.beginUndoGrouping(selectedRange_);
    ++openChanges_;
    return true;
}

void QuodTextView::replaceCharacters(Range range, std::u16string_view text) {
    QUOD_PRECONDITION(range.isInside(length()), "change outside the text");
    const auto newLength = static_cast<int64_t>(text.size());
    if (openChanges_ > 0) undoManager_.registerReplacement(storage_, range, newLength);
    storage_.replaceCharactersInRange(range, text);
    adjustSelectionForReplacement(range, newLength);
}

void QuodTextView::didChangeText() {
    if (openChanges_ > 0) {
        --openChanges_;
        undoManager_.endUndoGrouping(selectedRange_);
    }
    textDidChange.emit();
}

void QuodTextView::adjustSelectionForReplacement(Range range, int64_t newLength) {
    const Range old = selectedRange_;
    const int64_t changeEnd = range.location + range.length;
    Range adjusted;
    if (old.location > changeEnd || (old.location == changeEnd && range.length > 0)) {
        adjusted = {old.location - range.length + newLength, old.length};
    } else if (old.location + old.length < range.location ||
               (old.location + old.length == range.location && old.length > 0)) {
        adjusted = old;
    } else {
        adjusted = {range.location + newLength, 0};
    }
    if (adjusted != old) {
        selectedRange_ = adjusted;
        selectionDidChange.emit(adjusted);
    }
}

Range QuodTextView::selectionRangeForProposedRange(Range proposed,
                                                   SelectionGranularity granularity) const {
    QUOD_PRECONDITION(proposed.isInside(length()), "range outside the text");
    switch (granularity) {
        case SelectionGranularity::selectByCharacter: {
            // Clusters never cross a line start, so only the lines at the two ends are looked at.
            const auto clusterAround = [this](int64_t position) {
                const Range line = storage_.lineRangeForRange({position, 0});
                const std::u16string text = storage_.substringWithRange(line);
                const int64_t offset = position - line.location;
                return std::pair{line.location, composedCharacterRange(text, {offset, 0}).location};
            };
            const auto [startLine, startOffset] = clusterAround(proposed.location);
            const int64_t start = startLine + startOffset;
            if (proposed.length == 0) return {start, 0};
            const Range lastLine = storage_.lineRangeForRange({proposed.end() - 1, 0});
            const std::u16string text = storage_.substringWithRange(lastLine);
            const Range last =
                composedCharacterRange(text, {proposed.end() - 1 - lastLine.location, 1});
            return {start, lastLine.location + last.end() - start};
        }
        case SelectionGranularity::selectByWord:
            return wordRangeForProposedRange(proposed);
        case SelectionGranularity::selectByParagraph:
            return storage_.paragraphBoundsForRange(proposed).range();
    }
    return proposed;
}

Range QuodTextView::wordRangeForProposedRange(Range proposed) const {
    const icu::Locale locale = currentLocale();
    // The word-break segment holding the unit at position, or no value on a line terminator.
    const auto segmentAt = [&](int64_t position) -> std::optional<Range> {
        const LineBounds line = storage_.lineBoundsForRange({position, 0});
        if (position >= line.contentsEnd) return std::nullopt;
        const std::u16string contents =
            storage_.substringWithRange({line.start, line.contentsEnd - line.start});
        const Range segment = wordBreakSegment(contents, position - line.start, locale);
        return Range{line.start + segment.location, segment.length};
    };
    if (proposed.length == 0) {
        const int64_t position = proposed.location;
        if (auto segment = segmentAt(position)) return *segment;
        // At the end of a line the word before the insertion point is meant.
        const int64_t lineStart = storage_.lineRangeForRange({position, 0}).location;
        if (position > lineStart) {
            if (auto segment = segmentAt(position - 1)) return *segment;
        }
        return {position, 0};
    }
    const auto first = segmentAt(proposed.location);
    const auto last = segmentAt(proposed.end() - 1);
    const int64_t start = first ? first->location : proposed.location;
    const int64_t end = last ? last->end() : proposed.end();
    return {start, end - start};
}

void QuodTextView::selectWord() {
    setSelectedRange(
        selectionRangeForProposedRange(selectedRange_, SelectionGranularity::selectByWord));
}

void QuodTextView::selectParagraph() {
    setSelectedRange(
        selectionRangeForProposedRange(selectedRange_, SelectionGranularity::selectByParagraph));
}

void QuodTextView::selectAll() {
    setSelectedRange({0, length()});
}

void QuodTextView::scrollRangeToVisible(Range range) {
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    scrollRangeToVisibleRequested.emit(range);
}

void QuodTextView::showFindIndicatorForRange(Range range) {
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    findIndicatorRequested.emit(range);
}

void QuodTextView::beep() {
    alertRequested.emit();
}

void QuodTextView::undo() {
    QUOD_PRECONDITION(openChanges_ == 0, "undo inside an open change");
    restoreSelection(undoManager_.undo(storage_));
}

void QuodTextView::redo() {
    QUOD_PRECONDITION(openChanges_ == 0, "redo inside an open change");
    restoreSelection(undoManager_.redo(storage_));
}

void QuodTextView::restoreSelection(std::optional<Range> selection) {
    if (!selection) return;
    // The storage edits moved the selection about; the recorded one is exact again now.
    selectedRange_ = {0, 0};
    setSelectedRange(*selection);
    textDidChange.emit();
}

Range QuodTextView::selection() const {
    Range range = selectedRange_;
    if (range.length == 0) range = storage_.lineRangeForRange({range.location, 0});
    if (range.location == NotFound) range.location = 0;
    return range;
}

int64_t QuodTextView::numberOfLines() const {
    // The index holds one line per terminator plus the last line, which is what walking the lines
    // and counting an empty last line gives.
    return storage_.lineCount();
}

int64_t QuodTextView::numberOfLinesSelected() const {
    const Range range = selectedRange_;
    if (range.length == 0) return 1;
    return checkedAdd(storage_.lineIndexOfPosition(range.end() - 1) -
                          storage_.lineIndexOfPosition(range.location),
                      1);
}

void QuodTextView::selectLines(int64_t count, int64_t location) {
    QUOD_PRECONDITION(count >= 0, "negative line count");
    QUOD_PRECONDITION(location >= 0 && location <= length(), "location outside the text");
    const int64_t firstLine = storage_.lineIndexOfPosition(location);
    int64_t end = location;
    if (count > 0) {
        // Each step ends the next line; steps past the last line add nothing.
        const int64_t lastLine =
            std::min(checkedAdd(firstLine, count - 1), storage_.lineCount() - 1);
        end = storage_.rangeOfLine(lastLine).end();
    }
    const int64_t start = storage_.startOfLine(firstLine);
    setSelectedRange({start, end - start});
}

void QuodTextView::selectLineNumber(int64_t line) {
    const int64_t index = line <= 1 ? 0 : std::min(line - 1, storage_.lineCount() - 1);
    const Range range = storage_.rangeOfLine(index);
    setSelectedRange(range);
    scrollRangeToVisible(range);
    showFindIndicatorForRange(range);
}

void QuodTextView::replaceWithUndo(std::u16string_view newText, Range range, bool select) {
    // The outer group makes the selection set below part of the same undo step.
    UndoGroup group(*this);
    if (!shouldChangeText(range, newText)) return;
    replaceCharacters(range, newText);
    didChangeText();
    if (select) setSelectedRange({range.location, static_cast<int64_t>(newText.size())});
}

void QuodTextView::replaceWithUndo(TextStorage&& newText, Range range, bool select) {
    UndoGroup group(*this);
    // Only a delegate needs the string; without one, none is made.
    const std::u16string asked = delegate_.expired() ? std::u16string() : newText.string();
    if (!shouldChangeText(range, asked)) return;
    QUOD_PRECONDITION(range.isInside(length()), "change outside the text");
    const int64_t newLength = newText.length();
    TextStorage replaced = storage_.exchangeCharactersInRange(range, std::move(newText));
    if (openChanges_ > 0) undoManager_.registerReplacement(range, newLength, std::move(replaced));
    adjustSelectionForReplacement(range, newLength);
    didChangeText();
    if (select) setSelectedRange({range.location, newLength});
}

}  // namespace quod
