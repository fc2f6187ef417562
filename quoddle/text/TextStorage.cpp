#include "quoddle/text/TextStorage.h"

#include <algorithm>
#include <vector>

#include "quoddle/base/Utf.h"

namespace quod {
namespace {

// A line starts at position p > 0 when unit p-1 ends a line, except between the CR and LF of a
// pair. `unitAt` answers for any position below `length`.
template <typename UnitAt>
bool startsLine(int64_t position, int64_t length, const UnitAt& unitAt) {
    const char16_t before = unitAt(position - 1);
    if (!isLineTerminator(before)) return false;
    return !(before == u'\r' && position < length && unitAt(position) == u'\n');
}

}  // namespace

TextStorage::TextStorage() = default;

TextStorage::TextStorage(std::u16string_view text) {
    buffer_.insert(0, std::span<const char16_t>(text.data(), text.size()));
    indexWholeText();
}

TextStorage::TextStorage(SplitVector<char16_t>&& buffer) : buffer_(std::move(buffer)) {
    indexWholeText();
}

TextStorage TextStorage::fromUtf8(std::string_view bytes) {
    std::vector<char16_t> units(bytes.size());
    const auto decoded = internal::decodeUtf8(bytes, units.data());
    return TextStorage(SplitVector<char16_t>(std::move(units), static_cast<int64_t>(decoded.unitsWritten)));
}

void TextStorage::indexWholeText() {
    const int64_t length = buffer_.length();
    std::vector<int64_t> starts;
    starts.reserve(static_cast<std::size_t>(length / 48 + 1));
    starts.push_back(0);
    auto [first, second] = buffer_.pieces(0, length);
    int64_t position = 0;
    char16_t previous = 0;
    for (auto piece : {first, second}) {
        for (const char16_t unit : piece) {
            if (isLineTerminator(previous) && !(previous == u'\r' && unit == u'\n')) {
                starts.push_back(position);
            }
            previous = unit;
            ++position;
        }
    }
    if (length > 0 && isLineTerminator(previous)) starts.push_back(length);
    starts.shrink_to_fit();
    lines_ = LineStartIndex(std::move(starts));
}

std::u16string TextStorage::string() const { return substringWithRange({0, length()}); }

char16_t TextStorage::characterAtIndex(int64_t index) const {
    QUOD_PRECONDITION(index >= 0 && index < length(), "character index outside the text");
    return buffer_.at(index);
}

std::u16string TextStorage::substringWithRange(Range range) const {
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    std::u16string result(static_cast<std::size_t>(range.length), u'\0');
    buffer_.copyOut(result.data(), range.location, range.length);
    return result;
}

int64_t TextStorage::lineIndexOfPosition(int64_t position) const {
    QUOD_PRECONDITION(position >= 0 && position <= length(), "position outside the text");
    return lines_.lineContaining(position);
}

int64_t TextStorage::startOfLine(int64_t line) const {
    QUOD_PRECONDITION(line >= 0 && line < lineCount(), "line number outside the text");
    return lines_.start(line);
}

int64_t TextStorage::endOfLine(int64_t line) const {
    return line + 1 < lineCount() ? lines_.start(line + 1) : length();
}

Range TextStorage::rangeOfLine(int64_t line) const {
    const int64_t start = startOfLine(line);
    return {start, endOfLine(line) - start};
}

int64_t TextStorage::terminatorLengthBefore(int64_t end, int64_t lineStart) const {
    if (end == lineStart || !isLineTerminator(buffer_.at(end - 1))) return 0;
    const bool pair = end - 2 >= lineStart && buffer_.at(end - 1) == u'\n' && buffer_.at(end - 2) == u'\r';
    return pair ? 2 : 1;
}

LineBounds TextStorage::lineBoundsForRange(Range range) const {
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    const int64_t start = lines_.start(lines_.lineContaining(range.location));
    const int64_t last = range.length > 0 ? range.end() - 1 : range.location;
    if (last >= length()) return {start, length(), length()};
    const int64_t lastLine = lines_.lineContaining(last);
    const int64_t end = endOfLine(lastLine);
    return {start, end, end - terminatorLengthBefore(end, lines_.start(lastLine))};
}

LineBounds TextStorage::paragraphBoundsForRange(Range range) const {
    // Paragraph ends are a subset of line ends: walk whole lines, asking only about terminators.
    const LineBounds lines = lineBoundsForRange(range);
    int64_t firstLine = lines_.lineContaining(lines.start);
    while (firstLine > 0) {
        const int64_t previousEnd = lines_.start(firstLine);
        if (isParagraphTerminator(buffer_.at(previousEnd - 1))) break;
        --firstLine;
    }
    int64_t end = lines.end;
    int64_t contentsEnd = lines.contentsEnd;
    while (end > contentsEnd && !isParagraphTerminator(buffer_.at(end - 1))) {
        const int64_t nextLine = lines_.lineContaining(end);
        end = endOfLine(nextLine);
        contentsEnd = end - terminatorLengthBefore(end, lines_.start(nextLine));
    }
    return {lines_.start(firstLine), end, contentsEnd};
}

Range TextStorage::lineRangeForRange(Range range) const { return lineBoundsForRange(range).range(); }

void TextStorage::getLineStart(int64_t* start, int64_t* end, int64_t* contentsEnd, Range range) const {
    const LineBounds bounds = lineBoundsForRange(range);
    if (start != nullptr) *start = bounds.start;
    if (end != nullptr) *end = bounds.end;
    if (contentsEnd != nullptr) *contentsEnd = bounds.contentsEnd;
}

void TextStorage::replaceCharactersInRange(Range range, std::u16string_view text) {
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    const int64_t location = range.location;
    const int64_t inserted = static_cast<int64_t>(text.size());
    const int64_t delta = checkedSubtract(inserted, range.length);
    QUOD_PRECONDITION(checkedAdd(length(), delta) >= 0, "negative text length");

    // Whether a line starts at p depends on units p-1 and p, so only starts in [location, end of
    // the change] can appear or vanish (position 0 always starts line 0). Drop the old ones there,
    // shift the later ones, then find the new ones in the changed stretch.
    const int64_t low = std::max<int64_t>(location, 1);
    const int64_t firstLine = lines_.lineContaining(low - 1) + 1;
    const int64_t lastLine = lines_.lineContaining(range.end());
    if (lastLine >= firstLine) lines_.removeStarts(firstLine, lastLine - firstLine + 1);
    lines_.shiftAfter(firstLine - 1, delta);

    buffer_.erase(location, range.length);
    buffer_.insert(location, std::span<const char16_t>(text.data(), text.size()));

    const int64_t newLength = length();
    const auto unitAt = [&](int64_t position) {
        const int64_t offset = position - location;
        return offset >= 0 && offset < inserted ? text[offset] : buffer_.at(position);
    };
    std::vector<int64_t> starts;
    for (int64_t position = low; position <= location + inserted; ++position) {
        if (startsLine(position, newLength, unitAt)) starts.push_back(position);
    }
    lines_.insertStarts(firstLine, starts);

    didProcessEditing.emit(TextStorageEdit{{location, inserted}, delta});
}

}  // namespace quod
