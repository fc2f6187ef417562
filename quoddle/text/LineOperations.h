// The line commands of a programmer's editor, as operations on a QuodTextView.
//
// Each operation reads the text and a selection from the view, changes the text only through the
// view's change protocol and sets the selection afterwards; everything one call changes is one
// undo step. None reads a preference: the caller passes indent strings and widths in.
//
// Which selection an operation reads matters and differs on purpose:
//   - `view.selection()` (an insertion point stands for its whole line, terminator included):
//     shiftLeft, shiftRight, spacesToTab, tabToSpaces, removeNeedlessWhitespace,
//     removeLineEndingsInSelection;
//   - `view.selectedRange()`, the raw selection: sort, unique, moveUp, moveDown, duplicateLine,
//     selectLine, selectMore.
// A change the view refuses is skipped silently; the position arithmetic of the per-line
// operations then carries on as if it had happened (a refused shiftLeft retries the same line).
// The view sounds its alert where a move is impossible (moveUp on the first line, moveDown on the
// last).
#pragma once

#include <functional>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/text/QuodTextView.h"

namespace quod::Text {

// Removes one leading space or tab from each line of the selection; never more than one unit a
// line. Stops early at the end of the text. With `select`, the touched lines end up selected.
QUODDLE_EXPORT void shiftLeft(QuodTextView& view, bool select);

// Inserts `indent` at the start of each line of the selection, empty lines included, then selects
// the lines.
QUODDLE_EXPORT void shiftRight(QuodTextView& view, std::u16string_view indent);

// In the whole lines of the selection, every non-overlapping occurrence of `replace` (anywhere in
// a line) becomes one TAB; leaves an insertion point at the selection's start.
QUODDLE_EXPORT void spacesToTab(QuodTextView& view, std::u16string_view replace);

// In the whole lines of the selection, every TAB becomes `replacement`.
QUODDLE_EXPORT void tabToSpaces(QuodTextView& view, std::u16string_view replacement);

// Trims trailing whitespace (TAB, the Unicode space separators and U+200B) and empties blank
// lines, from the selection's start to its end and the line that starts exactly at its end; with
// an insertion point that is the current line and the one below it.
QUODDLE_EXPORT void removeNeedlessWhitespace(QuodTextView& view);

// Removes CR LF, CR and LF inside the selection (an insertion point joins its line with the next).
QUODDLE_EXPORT void removeLineEndingsInSelection(QuodTextView& view);

// Sorts the lines touched by the raw selection (the whole text when it is empty) in localized
// standard order, joins them with LF (no terminator after the last) and puts them in place of the
// raw selection itself, selected. Equal lines keep their order; `reverse` puts greater lines first.
QUODDLE_EXPORT void sort(QuodTextView& view, bool reverse);

// As sort, but keeps the first of each group of canonically equivalent lines, in their order.
QUODDLE_EXPORT void unique(QuodTextView& view);

// Sort for well-formed UTF-8 text held whole, such as a mapped file, without decoding it into a
// view: hands `write`, a megabyte or so at a time, the bytes that sort makes of a view of the text
// whose raw selection is every line without the last line's terminator (the lines, sorted and
// joined with LF, then the final terminator as it was). Sorting a file takes its size in memory
// for the keys, instead of twice that for the text alone. (UniqueLinesStream is unique's form.)
QUODDLE_EXPORT void sortUtf8Lines(std::string_view utf8, bool reverse,
                                  const std::function<void(std::string_view)>& write);

// Swaps the lines of the raw selection with the line above and keeps the selection on them. The
// last line, when unterminated, runs together with the line it passes.
QUODDLE_EXPORT void moveUp(QuodTextView& view);

// Swaps the lines of the raw selection with the line below; an unterminated last line gains an LF
// as it moves up, and the selection then lands one unit before the moved lines.
QUODDLE_EXPORT void moveDown(QuodTextView& view);

// Inserts a copy of the lines of the raw selection behind them, selected.
QUODDLE_EXPORT void duplicateLine(QuodTextView& view);

// Selects the whole lines of the raw selection.
QUODDLE_EXPORT void selectLine(QuodTextView& view);

// Widens the selection a step: to a word, then the paragraph, then everything.
QUODDLE_EXPORT void selectMore(QuodTextView& view);

}  // namespace quod::Text
