#include "quoddle/text/TextStorage.h"

#include <algorithm>
#include <vector>

#include "quoddle/base/FileBytes.h"
#include "quoddle/base/Utf.h"

namespace quod {

TextStorage::TextStorage() = default;

TextStorage::TextStorage(std::u16string_view text) {
    buffer_.insert(0, std::span<const char16_t>(text.data(), text.size()));
    indexWholeText();
}

TextStorage::TextStorage(SplitVector<char16_t>&& buffer) : buffer_(std::move(buffer)) {
    indexWholeText();
}

TextStorage TextStorage::fromUtf8(std::string_view bytes) {
    // Room for every byte to become a unit, plus the gap the first edits will use.
    const int64_t capacity = std::ssize(bytes) + SplitVector<char16_t>::slackFor(std::ssize(bytes));
    auto units = std::make_unique_for_overwrite<char16_t[]>(static_cast<std::size_t>(capacity));
    const auto decoded = internal::decodeUtf8(bytes, units.get());
    return TextStorage(SplitVector<char16_t>(std::move(units), capacity,
                                             static_cast<int64_t>(decoded.unitsWritten)));
}

std::optional<TextStorage> TextStorage::fromUtf8File(const std::string& path) {
    const auto file = FileBytes::read(path);
    if (!file) return std::nullopt;
    const auto bytes = file->bytes();
    return fromUtf8({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void TextStorage::indexWholeText() {
    const std::span<const char16_t> text = buffer_.contiguousContent();
    std::vector<int64_t> starts;
    starts.reserve(text.size() / 48 + 1);
    starts.push_back(0);
    appendLineStarts({text.data(), text.size()}, 0, false, starts);
    lines_ = LineStartIndex(starts);
}

std::u16string TextStorage::string() const {
    return substringWithRange({0, length()});
}

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
    const bool pair =
        end - 2 >= lineStart && buffer_.at(end - 1) == u'\n' && buffer_.at(end - 2) == u'\r';
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

Range TextStorage::lineRangeForRange(Range range) const {
    return lineBoundsForRange(range).range();
}

void TextStorage::getLineStart(int64_t* start, int64_t* end, int64_t* contentsEnd,
                               Range range) const {
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

    // Both neighbours of the change survive it, so they can be read before the buffer changes.
    const char16_t unitBefore = location > 0 ? buffer_.at(location - 1) : u'\0';
    const bool nextIsLineFeed = range.end() < length() && buffer_.at(range.end()) == u'\n';
    buffer_.erase(location, range.length);
    buffer_.insert(location, std::span<const char16_t>(text.data(), text.size()));
    lines_.replace(range, text, unitBefore, nextIsLineFeed);

    didProcessEditing.emit(TextStorageEdit{{location, inserted}, delta});
}

}  // namespace quod
