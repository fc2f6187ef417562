#include "quoddle/strings/LineFunctions.h"

#include <algorithm>

#include "quoddle/strings/UnitBlocks.h"

namespace quod {
namespace {

template <bool (*isTerminator)(char16_t)>
LineBounds boundsBy(std::u16string_view text, Range range) {
    const auto length = static_cast<int64_t>(text.size());
    QUOD_PRECONDITION(range.isInside(length), "range outside the text");

    int64_t start = range.location;
    // Between the CR and the LF of a pair we are still on the line that the pair ends.
    if (start > 0 && start < length && text[start] == u'\n' && text[start - 1] == u'\r') --start;
    while (start > 0 && !isTerminator(text[start - 1]))
        --start;

    int64_t scan = range.length > 0 ? range.end() - 1 : range.location;
    if (scan < length && text[scan] == u'\n' && scan > 0 && text[scan - 1] == u'\r') --scan;
    while (scan < length && !isTerminator(text[scan]))
        ++scan;
    if (scan == length) return {start, length, length};
    const int64_t terminatorLength =
        text[scan] == u'\r' && scan + 1 < length && text[scan + 1] == u'\n' ? 2 : 1;
    return {start, scan + terminatorLength, scan};
}

}  // namespace

void appendLineStarts(std::u16string_view text, int64_t offset, bool nextIsLineFeed,
                      std::vector<int64_t>& starts) {
    const char16_t* const units = text.data();
    const auto length = static_cast<int64_t>(text.size());
    const auto recordTerminatorAt = [&](int64_t i) {
        if (units[i] == u'\r') {
            const bool pairs = i + 1 < length ? units[i + 1] == u'\n' : nextIsLineFeed;
            if (pairs) return;  // the LF that follows ends the line
        }
        starts.push_back(offset + i + 1);
    };
    int64_t i = 0;
    // A block of units at a time: compare against the five terminators, then visit only the hits.
    // U+2028 and U+2029 differ only in bit 0.
    for (; i + static_cast<int64_t>(internal::unitsPerBlock) <= length;
         i += static_cast<int64_t>(internal::unitsPerBlock)) {
        const internal::UnitBlock block = internal::loadUnitBlock(units + i);
        const auto hits = (block == uint16_t{0x000A}) | (block == uint16_t{0x000D}) |
                          (block == uint16_t{0x0085}) |
                          ((block & uint16_t{0xFFFE}) == uint16_t{0x2028});
        internal::forEachMatchingLane(
            hits, [&](std::size_t lane) { recordTerminatorAt(i + static_cast<int64_t>(lane)); });
    }
    for (; i < length; ++i) {
        if (isLineTerminator(units[i])) recordTerminatorAt(i);
    }
}

std::vector<std::u16string_view> enumerateLines(std::u16string_view text) {
    std::vector<int64_t> ends;
    appendLineStarts(text, 0, false, ends);
    std::vector<std::u16string_view> lines;
    lines.reserve(ends.size() + 1);
    std::size_t start = 0;
    for (const int64_t end : ends) {
        const auto stop = static_cast<std::size_t>(end);
        const bool pair = stop >= start + 2 && text[stop - 1] == u'\n' && text[stop - 2] == u'\r';
        lines.push_back(text.substr(start, stop - start - (pair ? 2 : 1)));
        start = stop;
    }
    if (start < text.size()) lines.push_back(text.substr(start));
    return lines;
}

LineBounds lineBounds(std::u16string_view text, Range range) {
    return boundsBy<isLineTerminator>(text, range);
}

LineBounds paragraphBounds(std::u16string_view text, Range range) {
    return boundsBy<isParagraphTerminator>(text, range);
}

}  // namespace quod
