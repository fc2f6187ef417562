#include "quoddle/text/LineOperations.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <ranges>
#include <string>
#include <thread>
#include <vector>

#include "quoddle/base/Precondition.h"
#include "quoddle/base/Utf.h"
#include "quoddle/strings/CharacterSets.h"
#include "quoddle/strings/LineEnding.h"
#include "quoddle/strings/LineFunctions.h"
#include "quoddle/strings/LocalizedCompare.h"
#include "quoddle/strings/Normalization.h"
#include "quoddle/strings/StringEditing.h"
#include "quoddle/text/EditingSteps.h"
#include "quoddle/text/internal/OccurrenceTable.h"
#include "quoddle/text/internal/Utf8Lines.h"

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

// sort and unique read the lines touched by the raw selection and put the rebuilt lines, joined
// with LF, in place of the raw selection itself (the whole text when it is empty). Neither holds
// the selection in UTF-16: lines are read from the storage piece by piece, remembered as slices
// (where they start, how long they are), and the result is built chunk by chunk.
struct SelectedLines {
    Range source;  // whole lines
    Range target;  // what the result replaces
};

SelectedLines selectedLines(const QuodTextView& view) {
    const TextStorage& storage = view.textStorage();
    const Range raw = view.selectedRange();
    if (raw.length == 0) return {{0, view.length()}, {0, view.length()}};
    const int64_t start = storage.lineRangeForRange(raw).location;
    const int64_t end = lineOf(view, raw.end()).end();
    return {{start, end - start}, raw};
}

// A line's contents (terminator excluded) as a stretch of the storage.
struct LineSlice {
    int64_t start = 0;
    int64_t length = 0;
};

// Visits the contents of each line of `source` (whole lines) in order, as enumerateLines would
// yield them, with where each starts. A line that crosses a piece border is put together in a
// buffer; the others are visited where they lie in the piece.
template <typename Visit>
void forEachLine(const TextStorage& storage, Range source, Visit&& visit) {
    std::u16string pending;
    int64_t pendingStart = 0;
    int64_t offset = source.location;
    std::vector<int64_t> ends;
    storage.forEachPiece(source, [&](std::u16string_view piece) {
        ends.clear();
        // Chunks never part a CR from its LF, so a piece's last CR ends a line of its own.
        appendLineStarts(piece, 0, false, ends);
        std::size_t start = 0;
        for (const int64_t end : ends) {
            const auto stop = static_cast<std::size_t>(end);
            const bool pair =
                stop >= start + 2 && piece[stop - 1] == u'\n' && piece[stop - 2] == u'\r';
            const std::u16string_view contents = piece.substr(start, stop - start - (pair ? 2 : 1));
            if (pending.empty()) {
                visit(LineSlice{offset + static_cast<int64_t>(start), std::ssize(contents)},
                      contents);
            } else {
                pending += contents;
                visit(LineSlice{pendingStart, std::ssize(pending)}, std::u16string_view(pending));
                pending.clear();
            }
            start = stop;
        }
        if (start < piece.size()) {
            if (pending.empty()) pendingStart = offset + static_cast<int64_t>(start);
            pending += piece.substr(start);
        }
        offset += std::ssize(piece);
    });
    if (!pending.empty())
        visit(LineSlice{pendingStart, std::ssize(pending)}, std::u16string_view(pending));
}

// Copies a line's contents out of the storage into `buffer` and answers a view of it.
std::u16string_view readLine(const TextStorage& storage, LineSlice line, std::u16string& buffer) {
    buffer.clear();
    storage.forEachPiece({line.start, line.length},
                         [&buffer](std::u16string_view piece) { buffer += piece; });
    return buffer;
}

// Builds the result from slices of the storage in the given order, joined with LF, and puts it in
// place of the target as one undo step.
template <typename Slices>
void replaceWithLines(QuodTextView& view, const SelectedLines& lines, const Slices& order) {
    const TextStorage& storage = view.textStorage();
    TextStorage::Builder builder(storage);
    const auto append = [&builder](std::u16string_view piece) { builder.append(piece); };
    bool first = true;
    for (const LineSlice line : order) {
        if (!first) builder.append(u"\n");
        first = false;
        storage.forEachPiece({line.start, line.length}, append);
    }
    view.replaceWithUndo(builder.finish(), lines.target, true);
}

// How sorting reads lines: from a storage, where slices count UTF-16 units, or from UTF-8 bytes,
// where they count bytes. Either way the keys and the tie-break see the lines in UTF-16.
class StorageLines {
  public:
    explicit StorageLines(const TextStorage& storage) : storage_(storage) {}
    template <typename Visit>
    void forEach(Range range, Visit&& visit) const {
        forEachLine(storage_, range, visit);
    }
    std::u16string_view read(LineSlice line, std::u16string& buffer) const {
        return readLine(storage_, line, buffer);
    }
    // A line start near `position`, at or before it.
    int64_t lineStartNear(int64_t position) const {
        return storage_.lineRangeForRange({position, 0}).location;
    }
    // The length of the contents of the line that starts at `start`.
    int64_t lineLength(int64_t start) const {
        return storage_.lineBoundsForRange({start, 0}).contentsEnd - start;
    }
    // At least as many as forEach visits: one a line start in the range, and one more.
    std::size_t lineCountBound(Range range) const {
        return static_cast<std::size_t>(storage_.lineIndexOfPosition(range.end()) -
                                        storage_.lineIndexOfPosition(range.location) + 1);
    }

  private:
    const TextStorage& storage_;
};

class Utf8Lines {
  public:
    explicit Utf8Lines(std::string_view text) : text_(text) {}
    template <typename Visit>
    void forEach(Range range, Visit&& visit) const {
        const std::string_view part = bytes({range.location, range.length});
        std::u16string decoded;
        quod::internal::forEachUtf8Line(part, [&](std::string_view line, std::string_view) {
            decoded = toUtf16(line);
            visit(LineSlice{range.location + (line.data() - part.data()), std::ssize(line)},
                  std::u16string_view(decoded));
        });
    }
    std::u16string_view read(LineSlice line, std::u16string& buffer) const {
        buffer = toUtf16(bytes(line));
        return buffer;
    }
    std::string_view bytes(LineSlice line) const {
        return text_.substr(static_cast<std::size_t>(line.start),
                            static_cast<std::size_t>(line.length));
    }
    // A line start near `position`: just after the first terminator from the character there
    // (from the LF when the position parts a CR from it), or the end of the text.
    int64_t lineStartNear(int64_t position) const {
        auto at = static_cast<std::size_t>(position);
        while (at > 0 && at < text_.size() && (static_cast<std::uint8_t>(text_[at]) & 0xC0) == 0x80)
            --at;
        if (at > 0 && at < text_.size() && text_[at - 1] == '\r' && text_[at] == '\n') ++at;
        for (; at < text_.size(); ++at) {
            if (const std::size_t length = quod::internal::terminatorAt(text_, at)) {
                return static_cast<int64_t>(at + length);
            }
        }
        return std::ssize(text_);
    }
    std::size_t lineCountBound(Range range) const {
        std::size_t count = 0;
        quod::internal::forEachUtf8Line(bytes({range.location, range.length}),
                                        [&count](std::string_view, std::string_view) { ++count; });
        return count;
    }
    int64_t lineLength(int64_t start) const {
        for (auto at = static_cast<std::size_t>(start); at < text_.size(); ++at) {
            if (quod::internal::terminatorAt(text_, at) > 0)
                return static_cast<int64_t>(at) - start;
        }
        return std::ssize(text_) - start;
    }

  private:
    std::string_view text_;
};

// Collation keys of a run of lines, each behind its slice, in blocks of memory that never move:
// an entry is a LineSlice followed by the key, which ends with ICU's terminating zero byte (the
// only zero in it), so keys compare as C strings of unsigned bytes.
class SortKeys {
  public:
    const std::byte* add(LineSlice line, std::u16string_view text) {
        const uint64_t packed = pack(line);
        const std::size_t guess = text.size() * 2 + 16;
        std::byte* entry = reserve(sizeof packed + guess);
        std::memcpy(entry, &packed, sizeof packed);
        auto* key = reinterpret_cast<uint8_t*>(entry + sizeof packed);
        std::size_t needed = localizedStandardKey(text, key, guess);
        if (needed > guess) {
            entry = reserve(sizeof packed + needed);
            std::memcpy(entry, &packed, sizeof packed);
            key = reinterpret_cast<uint8_t*>(entry + sizeof packed);
            needed = localizedStandardKey(text, key, needed);
        }
        used_ += sizeof packed + needed;
        return entry;
    }

    // The slice of an entry's line; `lines` measures the rare line too long to pack.
    template <typename Lines>
    static LineSlice slice(const std::byte* entry, const Lines& lines) {
        uint64_t packed;
        std::memcpy(&packed, entry, sizeof packed);
        const auto start = static_cast<int64_t>(packed >> lengthBits);
        const auto length = static_cast<int64_t>(packed & longLine);
        return {start, length == longLine ? lines.lineLength(start) : length};
    }
    static const char* key(const std::byte* entry) {
        return reinterpret_cast<const char*>(entry + sizeof(uint64_t));
    }

  private:
    // A slice in eight bytes, read with memcpy so that entries need no alignment: where the line
    // starts (40 bits) and how long it is (24 bits), or a mark for a line of 16 Mi units or more.
    static constexpr int lengthBits = 24;
    static constexpr uint64_t longLine = (uint64_t{1} << lengthBits) - 1;
    static uint64_t pack(LineSlice line) {
        QUOD_PRECONDITION(line.start < (int64_t{1} << (64 - lengthBits)), "text too long to sort");
        return static_cast<uint64_t>(line.start) << lengthBits |
               std::min(static_cast<uint64_t>(line.length), longLine);
    }

    static constexpr std::size_t blockSize = std::size_t{1} << 20;
    // Room for `size` bytes at the end of the last block, starting a block when it has none.
    std::byte* reserve(std::size_t size) {
        if (blocks_.empty() || used_ + size > capacity_) {
            capacity_ = std::max(blockSize, size);
            blocks_.push_back(std::make_unique<std::byte[]>(capacity_));
            used_ = 0;
        }
        return blocks_.back().get() + used_;
    }

    std::vector<std::unique_ptr<std::byte[]>> blocks_;
    std::size_t used_ = 0;
    std::size_t capacity_ = 0;
};

// The lines of `source` in localized standard order; equal lines keep their order. The keys, the
// costly part, are made in two halves on two threads; the sort itself is one std::stable_sort
// over all lines, as localizedStandardOrder does it. That matters beyond speed: the tie-break
// between lines with equal keys is not transitive when digit runs are split or written in other
// scripts ("é1" < "\x01é01" < "é１" < "é1"), and a different sorting algorithm would then order
// such lines differently from the way they have always been ordered.
//
// The result keeps the keys, which its entries point into: each entry is a line's slice and key.
struct SortedLines {
    SortKeys firstKeys;
    SortKeys secondKeys;
    std::vector<const std::byte*> entries;

    template <typename Lines>
    auto slices(const Lines& lines) const {
        return entries | std::views::transform([&lines](const std::byte* entry) {
                   return SortKeys::slice(entry, lines);
               });
    }
};

template <typename Lines>
SortedLines sortedLines(const Lines& lines, Range source, bool reverse) {
    // Each half writes its entries into its own part of one vector, sized from the halves' line
    // counts (at most those), so that no vector grows by doubling or is copied into another.
    struct Half {
        SortKeys& keys;
        const std::byte** next;
    };
    const auto makeKeys = [&lines](Range range, Half& half) {
        lines.forEach(range, [&half](LineSlice line, std::u16string_view text) {
            *half.next++ = half.keys.add(line, text);
        });
    };
    // The second half starts at a line start near the middle; small sources stay on one thread.
    constexpr int64_t parallelFrom = 64 * 1024;
    int64_t middle = source.end();
    if (source.length >= parallelFrom) {
        middle = lines.lineStartNear(source.location + source.length / 2);
        middle = std::clamp(middle, source.location, source.end());
    }
    const Range firstRange{source.location, middle - source.location};
    const Range secondRange{middle, source.end() - middle};
    const std::size_t firstBound = lines.lineCountBound(firstRange);
    SortedLines sorted;
    std::vector<const std::byte*>& entries = sorted.entries;
    entries.resize(firstBound + (secondRange.length > 0 ? lines.lineCountBound(secondRange) : 0));
    Half first{sorted.firstKeys, entries.data()};
    Half second{sorted.secondKeys, entries.data() + firstBound};
    {
        std::jthread helper;
        if (secondRange.length > 0) helper = std::jthread([&] { makeKeys(secondRange, second); });
        makeKeys(firstRange, first);
    }
    const auto firstEnd = entries.begin() + (first.next - entries.data());
    const auto secondEnd = std::move(entries.begin() + static_cast<std::ptrdiff_t>(firstBound),
                                     entries.begin() + (second.next - entries.data()), firstEnd);
    entries.erase(secondEnd, entries.end());

    std::u16string textA;
    std::u16string textB;
    const auto compare = [&](const std::byte* a, const std::byte* b) {
        const int bytes = std::strcmp(SortKeys::key(a), SortKeys::key(b));
        if (bytes != 0) return bytes < 0 ? std::weak_ordering::less : std::weak_ordering::greater;
        // Equal keys: the texts decide, read back from the storage.
        return localizedStandardTieBreak(lines.read(SortKeys::slice(a, lines), textA),
                                         lines.read(SortKeys::slice(b, lines), textB));
    };
    if (reverse) {
        std::stable_sort(entries.begin(), entries.end(),
                         [&](const std::byte* a, const std::byte* b) { return compare(a, b) > 0; });
    } else {
        std::stable_sort(entries.begin(), entries.end(),
                         [&](const std::byte* a, const std::byte* b) { return compare(a, b) < 0; });
    }
    return sorted;
}

bool isNewlineUnit(char16_t unit) {
    return isNewline(unit);
}

// The first line of each group of canonically equivalent lines of `source`, in order. Composed
// forms are equal exactly when lines are canonically equivalent; most lines are composed already
// and are hashed where they stand, only the others are composed (into a scratch string).
std::vector<LineSlice> firstOccurrences(const TextStorage& storage, Range source) {
    const int64_t lineBound = storage.lineIndexOfPosition(source.end()) -
                              storage.lineIndexOfPosition(source.location) + 1;
    quod::internal::OccurrenceTable table(static_cast<std::size_t>(lineBound));
    const std::hash<std::u16string_view> hasher;
    std::u16string composed;
    std::u16string earlier;
    std::u16string earlierComposed;
    const auto composedForm = [](std::u16string_view text, std::u16string& buffer) {
        if (isCanonicalComposition(text)) return text;
        buffer = canonicalComposition(text);
        return std::u16string_view(buffer);
    };
    std::vector<LineSlice> firsts;
    forEachLine(storage, source, [&](LineSlice line, std::u16string_view text) {
        const std::u16string_view key = composedForm(text, composed);
        const bool isNew = table.insertIfNew(hasher(key), [&](std::size_t kept) {
            return composedForm(readLine(storage, firsts[kept], earlier), earlierComposed) == key;
        });
        if (isNew) firsts.push_back(line);
    });
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
    QuodTextView::UndoGroup command(view);
    const SelectedLines lines = selectedLines(view);
    const StorageLines storageLines(view.textStorage());
    const SortedLines sorted = sortedLines(storageLines, lines.source, reverse);
    replaceWithLines(view, lines, sorted.slices(storageLines));
}

void unique(QuodTextView& view) {
    QuodTextView::UndoGroup command(view);
    const SelectedLines lines = selectedLines(view);
    replaceWithLines(view, lines, firstOccurrences(view.textStorage(), lines.source));
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

void sortUtf8Lines(std::string_view utf8, bool reverse,
                   const std::function<void(std::string_view)>& write) {
    // The selection leaves out the final terminator, which goes out after the lines as it was.
    std::size_t contentsEnd = utf8.size();
    quod::internal::forEachUtf8Line(
        utf8.substr(utf8.size() - std::min<std::size_t>(utf8.size(), 3)),
        [&](std::string_view, std::string_view terminator) {
            contentsEnd = utf8.size() - terminator.size();
        });
    const Utf8Lines lines(utf8);
    const SortedLines sorted = sortedLines(lines, {0, std::ssize(utf8)}, reverse);
    // Written a megabyte at a time: the result is as large as the text.
    constexpr std::size_t flushAt = std::size_t{1} << 20;
    std::string buffer;
    bool first = true;
    for (const LineSlice line : sorted.slices(lines)) {
        if (!first) buffer += '\n';
        first = false;
        buffer += lines.bytes(line);
        if (buffer.size() >= flushAt) {
            write(buffer);
            buffer.clear();
        }
    }
    buffer += utf8.substr(contentsEnd);
    write(buffer);
}

}  // namespace quod::Text
