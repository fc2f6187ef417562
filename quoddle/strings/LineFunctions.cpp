#include "quoddle/strings/LineFunctions.h"

namespace quod {
namespace {

template <bool (*isTerminator)(char16_t)>
LineBounds boundsBy(std::u16string_view text, Range range) {
    const auto length = static_cast<int64_t>(text.size());
    QUOD_PRECONDITION(range.isInside(length), "range outside the text");

    int64_t start = range.location;
    // Between the CR and the LF of a pair we are still on the line that the pair ends.
    if (start > 0 && start < length && text[start] == u'\n' && text[start - 1] == u'\r') --start;
    while (start > 0 && !isTerminator(text[start - 1])) --start;

    int64_t scan = range.length > 0 ? range.end() - 1 : range.location;
    if (scan < length && text[scan] == u'\n' && scan > 0 && text[scan - 1] == u'\r') --scan;
    while (scan < length && !isTerminator(text[scan])) ++scan;
    if (scan == length) return {start, length, length};
    const int64_t terminatorLength =
        text[scan] == u'\r' && scan + 1 < length && text[scan + 1] == u'\n' ? 2 : 1;
    return {start, scan + terminatorLength, scan};
}

}  // namespace

LineBounds lineBounds(std::u16string_view text, Range range) {
    return boundsBy<isLineTerminator>(text, range);
}

LineBounds paragraphBounds(std::u16string_view text, Range range) {
    return boundsBy<isParagraphTerminator>(text, range);
}

}  // namespace quod
