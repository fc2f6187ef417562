// Small steps that the text operations share, in the words their algorithms use.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "quoddle/text/QuodTextView.h"

namespace quod::Text::internal {

// The line of p: the whole line holding position p, terminator included.
[[nodiscard]] inline Range lineOf(const QuodTextView& view, int64_t position) {
    return view.textStorage().lineRangeForRange({position, 0});
}

// The lines of r: from the start of the line of r's start to the end of the line of its last unit.
[[nodiscard]] inline Range linesOf(const QuodTextView& view, Range range) {
    return view.textStorage().lineRangeForRange(range);
}

[[nodiscard]] inline std::u16string textOf(const QuodTextView& view, Range range) {
    return view.textStorage().substringWithRange(range);
}

// "Ask to replace; if allowed, replace and close the change." True when it happened.
inline bool changeText(QuodTextView& view, Range range, std::u16string_view replacement) {
    if (!view.shouldChangeText(range, replacement)) return false;
    view.replaceCharacters(range, replacement);
    view.didChangeText();
    return true;
}

// Positions computed as if a refused change had happened can fall outside the text.
[[nodiscard]] inline int64_t clampToText(const QuodTextView& view, int64_t position) {
    return std::clamp<int64_t>(position, 0, view.length());
}

}  // namespace quod::Text::internal
