// Splitting a command line typed by the user into its arguments.
//
// Quotes (double or single) group an argument and are dropped; a backslash before a space keeps
// the space inside the argument; a backslash before a quote makes it a plain quote. Positions are
// characters (grapheme clusters). Some results are odd but long-standing and kept:
//   - runs of spaces are halved once first, so three spaces between words leave an empty
//     argument on the quote-free fast path;
//   - escaped quotes are stood in for by the markers "@@@@" and "%%%%" while splitting, so those
//     markers typed literally come out as quotes;
//   - the scan stops at the character count taken before the markers went in; each escaped quote
//     makes the text two characters longer than that, so as many characters are lost at the end;
//   - an unclosed quote runs to the end of the line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"

namespace quod::Text {

[[nodiscard]] QUODDLE_EXPORT std::vector<std::u16string> separateCommand(
    std::u16string_view command);

}  // namespace quod::Text
