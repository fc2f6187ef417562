// Line and paragraph boundaries in UTF-16 text, as the platform's string line functions find them.
//
// Lines end at LF, CR, CR LF (one terminator of two units), NEL (U+0085), LINE SEPARATOR (U+2028)
// and PARAGRAPH SEPARATOR (U+2029); VT and FF end nothing. Paragraphs end only at LF, CR, CR LF and
// U+2029. A line's range includes its terminator. For a range (loc, len):
//   - the start is the start of the line holding loc; a loc between the CR and LF of a pair belongs
//     to the line the pair ends;
//   - the end is behind the terminator of the line holding unit loc+len-1 (for len > 0) or loc
//     (for len == 0), so a range ending just behind a terminator does not reach the next line;
//   - contentsEnd is the end without the terminator; at the end of the text all three meet, and
//     (length, 0) after a final terminator gives the empty range (length, 0).
// These functions scan the text, costing the length of the lines involved. `TextStorage` answers
// the same questions from its line index.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/base/Precondition.h"
#include "quoddle/base/Range.h"

namespace quod {

[[nodiscard]] constexpr bool isLineTerminator(char16_t unit) {
    return unit == u'\n' || unit == u'\r' || unit == 0x0085 || unit == 0x2028 || unit == 0x2029;
}

[[nodiscard]] constexpr bool isParagraphTerminator(char16_t unit) {
    return unit == u'\n' || unit == u'\r' || unit == 0x2029;
}

struct LineBounds {
    int64_t start = 0;
    int64_t end = 0;
    int64_t contentsEnd = 0;

    [[nodiscard]] Range range() const { return {start, end - start}; }
    friend constexpr bool operator==(const LineBounds&, const LineBounds&) = default;
};

// Preconditions: `range` lies inside `text`.
[[nodiscard]] QUODDLE_EXPORT LineBounds lineBounds(std::u16string_view text, Range range);
[[nodiscard]] QUODDLE_EXPORT LineBounds paragraphBounds(std::u16string_view text, Range range);

// Appends offset + (the position behind each line terminator in text), in order; a CR LF pair
// counts once, behind its LF. `nextIsLineFeed` says whether the unit after `text` is an LF, in
// which case a CR at its very end is the first half of a pair and yields nothing.
// Scans blocks of units at a time; the building block of line indexes.
QUODDLE_EXPORT void appendLineStarts(std::u16string_view text, int64_t offset, bool nextIsLineFeed,
                                     std::vector<int64_t>& starts);

// The contents of each line, terminators dropped, as the platform's line enumeration yields them:
// "a\r\nb\n" gives "a", "b" (no empty line after a final terminator) and "" gives nothing. The
// views point into `text`.
[[nodiscard]] QUODDLE_EXPORT std::vector<std::u16string_view> enumerateLines(
    std::u16string_view text);

[[nodiscard]] inline Range lineRange(std::u16string_view text, Range range) {
    return lineBounds(text, range).range();
}

}  // namespace quod
