#include "quoddle/text/LineOperations.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "quoddle/strings/CharacterSets.h"
#include "quoddle/strings/LineEnding.h"
#include "quoddle/strings/LineFunctions.h"
#include "quoddle/strings/LocalizedCompare.h"
#include "quoddle/strings/Normalization.h"
#include "quoddle/strings/StringEditing.h"
#include "quoddle/text/EditingSteps.h"

namespace quod::Text {
namespace {

using internal::changeText;
using internal::clampToText;
using internal::lineOf;
using internal::textOf;

void replaceInLines(QuodTextView& view, std::u16string_view target,
                    std::u16string_view replacement) {
    QuodTextView::UndoGroup command(view);
    const Range selection = view.selection();
    const Range lines = view.textStorage().lineRangeForRange(selection);
    changeText(view, lines, replacingOccurrences(textOf(view, lines), target, replacement));
    view.setSelectedRange({clampToText(view, selection.location), 0});
}

std::u16string joinWithLineFeeds(const std::vector<std::u16string_view>& lines) {
    std::size_t size = lines.empty() ? 0 : lines.size() - 1;
    for (const auto line : lines)
        size += line.size();
    std::u16string joined;
    joined.reserve(size);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i > 0) joined += u'\n';
        joined += lines[i];
    }
    return joined;
}

// sort and unique: the lines touched by the raw selection are rebuilt and put in place of the raw
// selection itself (the whole text when it is empty).
template <typename Rebuild>
void rebuildSelectedLines(QuodTextView& view, Rebuild rebuild) {
    QuodTextView::UndoGroup command(view);
    const TextStorage& storage = view.textStorage();
    const Range raw = view.selectedRange();
    Range source{0, view.length()};
    Range target = source;
    if (raw.length > 0) {
        const int64_t start = storage.lineRangeForRange(raw).location;
        const int64_t end = lineOf(view, raw.end()).end();
        source = {start, end - start};
        target = raw;
    }
    const std::u16string text = textOf(view, source);
    view.replaceWithUndo(joinWithLineFeeds(rebuild(enumerateLines(text))), target, true);
}

bool isNewlineUnit(char16_t unit) {
    return isNewline(unit);
}

// The indexes of the first occurrence of each distinct key, in order. An open-addressing table of
// (hash, index) pairs: a million lines stay within a few cache-friendly arrays instead of a
// million hash nodes.
std::vector<std::size_t> firstOccurrences(const std::vector<std::u16string_view>& keys) {
    struct Slot {
        std::size_t hash = 0;
        std::size_t index = SIZE_MAX;
    };
    std::size_t capacity = 16;
    while (capacity < keys.size() * 2)
        capacity *= 2;
    std::vector<Slot> slots(capacity);
    const std::size_t mask = capacity - 1;
    const std::hash<std::u16string_view> hasher;
    std::vector<std::size_t> firsts;
    for (std::size_t index = 0; index < keys.size(); ++index) {
        const std::size_t hash = hasher(keys[index]);
        std::size_t at = hash & mask;
        bool seen = false;
        for (; slots[at].index != SIZE_MAX; at = (at + 1) & mask) {
            if (slots[at].hash == hash && keys[slots[at].index] == keys[index]) {
                seen = true;
                break;
            }
        }
        if (seen) continue;
        slots[at] = {hash, index};
        firsts.push_back(index);
    }
    return firsts;
}

}  // namespace

void shiftLeft(QuodTextView& view, bool select) {
    QuodTextView::UndoGroup command(view);
    const int64_t start = view.selection().location;
    const int64_t lines = view.numberOfLinesSelected();
    int64_t position = start;
    for (int64_t pass = 0; pass < lines; ++pass) {
        const Range line = lineOf(view, position);
        if (line.length > 0) {
            const char16_t first = view.textStorage().characterAtIndex(line.location);
            if (first == u' ' || first == u'\t') {
                if (changeText(view, {line.location, 1}, u"") && select) {
                    view.setSelectedRange({line.location, 0});
                }
                // As if the unit had gone: a refused change sends the next pass to this line again.
                position = line.end() - 1;
            } else {
                position = line.end();
            }
        }
        if (position >= view.length()) break;
    }
    if (select) view.selectLines(lines, clampToText(view, start));
}

void shiftRight(QuodTextView& view, std::u16string_view indent) {
    QuodTextView::UndoGroup command(view);
    const int64_t start = view.selection().location;
    const int64_t lines = view.numberOfLinesSelected();
    const auto indentLength = static_cast<int64_t>(indent.size());
    int64_t position = start;
    for (int64_t pass = 0; pass < lines; ++pass) {
        const Range line = lineOf(view, clampToText(view, position));
        if (changeText(view, {line.location, 0}, indent)) {
            view.setSelectedRange({line.location, indentLength});
        }
        position = checkedAdd(line.end(), indentLength);
    }
    view.selectLines(lines, clampToText(view, start));
}

void spacesToTab(QuodTextView& view, std::u16string_view replace) {
    replaceInLines(view, replace, u"\t");
}

void tabToSpaces(QuodTextView& view, std::u16string_view replacement) {
    replaceInLines(view, u"\t", replacement);
}

void removeNeedlessWhitespace(QuodTextView& view) {
    QuodTextView::UndoGroup command(view);
    const TextStorage& storage = view.textStorage();
    const Range selection = view.selection();
    int64_t end = selection.end();  // a running bound: it follows the text as lines shrink
    int64_t position = selection.location;
    while (end >= position && position < view.length()) {
        const LineBounds line = storage.lineBoundsForRange({position, 0});
        const Range bodyRange{line.start, line.contentsEnd - line.start};
        const std::u16string body = textOf(view, bodyRange);
        auto kept = body.size();
        while (kept > 0 && isWhitespace(body[kept - 1]))
            --kept;
        if (kept == body.size() && kept > 0) {
            position = line.end;
            continue;
        }
        // A blank line (even an empty one) goes through the change protocol as well.
        const std::u16string_view trimmed(body.data(), kept);
        changeText(view, bodyRange, trimmed);
        end -= static_cast<int64_t>(body.size() - trimmed.size());
        position = lineOf(view, line.start).end();
    }
    view.setSelectedRange({clampToText(view, selection.location), 0});
}

void removeLineEndingsInSelection(QuodTextView& view) {
    QuodTextView::UndoGroup command(view);
    const Range selection = view.selection();
    view.replaceWithUndo(removeLineEndings(textOf(view, selection)), selection, true);
    view.setSelectedRange({selection.location, 0});
}

void sort(QuodTextView& view, bool reverse) {
    rebuildSelectedLines(view, [reverse](std::vector<std::u16string_view> lines) {
        const auto order =
            localizedStandardOrder(lines, reverse ? SortOrder::descending : SortOrder::ascending);
        std::vector<std::u16string_view> sorted;
        sorted.reserve(lines.size());
        for (const std::size_t index : order)
            sorted.push_back(lines[index]);
        return sorted;
    });
}

void unique(QuodTextView& view) {
    rebuildSelectedLines(view, [](std::vector<std::u16string_view> lines) {
        // Composed forms are equal exactly when lines are canonically equivalent. Most lines are
        // composed already and are compared where they stand; only the others get a composed copy.
        std::deque<std::u16string> composedCopies;
        std::vector<std::u16string_view> keys;
        keys.reserve(lines.size());
        for (const auto line : lines) {
            keys.push_back(
                isCanonicalComposition(line)
                    ? line
                    : std::u16string_view(composedCopies.emplace_back(canonicalComposition(line))));
        }
        std::vector<std::u16string_view> kept;
        for (const std::size_t index : firstOccurrences(keys))
            kept.push_back(lines[index]);
        return kept;
    });
}

void moveUp(QuodTextView& view) {
    QuodTextView::UndoGroup command(view);
    const Range raw = view.selectedRange();
    const Range current = view.textStorage().lineRangeForRange(raw);
    if (current.location == 0) {
        view.beep();
        return;
    }
    const Range previous = lineOf(view, current.location - 1);
    const std::u16string moved = textOf(view, current) + textOf(view, previous);
    view.replaceWithUndo(moved, {previous.location, static_cast<int64_t>(moved.size())}, true);
    view.setSelectedRange({raw.location - previous.length, raw.length});
}

void moveDown(QuodTextView& view) {
    QuodTextView::UndoGroup command(view);
    const Range raw = view.selectedRange();
    const Range current = view.textStorage().lineRangeForRange(raw);
    if (current.end() >= view.length()) {
        view.beep();
        return;
    }
    const Range next = lineOf(view, current.end());
    std::u16string moved = textOf(view, next);
    // The unterminated last line needs a terminator once it is no longer last.
    if (std::none_of(moved.begin(), moved.end(), isNewlineUnit)) moved += u'\n';
    moved += textOf(view, current);
    view.replaceWithUndo(moved, {current.location, current.length + next.length}, true);
    view.setSelectedRange({raw.location + next.length, raw.length});
}

void duplicateLine(QuodTextView& view) {
    QuodTextView::UndoGroup command(view);
    const Range lines = view.textStorage().lineRangeForRange(view.selectedRange());
    std::u16string copy = textOf(view, lines);
    if (!copy.ends_with(u'\n') && !copy.ends_with(u'\r')) copy.insert(copy.begin(), u'\n');
    view.replaceWithUndo(copy, {lines.end(), 0}, true);
}

void selectLine(QuodTextView& view) {
    view.setSelectedRange(view.textStorage().lineRangeForRange(view.selectedRange()));
}

void selectMore(QuodTextView& view) {
    const Range raw = view.selectedRange();
    const int64_t characters =
        view.selectionRangeForProposedRange(raw, SelectionGranularity::selectByCharacter).length;
    const int64_t words =
        view.selectionRangeForProposedRange(raw, SelectionGranularity::selectByWord).length;
    // Only the lengths are compared, not the locations.
    if (characters == 0 || characters != words) {
        view.selectWord();
    } else if (view.textStorage().lineRangeForRange(view.selectedRange()) != raw) {
        view.selectParagraph();
    } else {
        view.selectAll();
    }
}

}  // namespace quod::Text
