// Between UTF-16 locations and 1-based line numbers, by the line rules of LineFunctions.h.
//
// lineNumber gives the line that holds `location`. A location on a terminator belongs to the line
// the terminator ends; the location just behind a final terminator is on the empty line after it
// ("a\n" at 2 is line 2), and so is the only location of an empty text (line 1). Locations outside
// the text are not errors: past the end counts the lines that have content, before the start
// counts the first line only (both 0 for an empty text). range gives the range of a line,
// terminator included; numbers below 1 give the first line and numbers past the last line give
// the line at the end of the text ("a\n" line 5 -> {2, 0}). Both scan from the start of the text:
// fine for a status bar, not for a loop over a document (TextStorage keeps a line index for
// that).
#pragma once

#include <cstdint>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/base/Range.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT int64_t lineNumber(std::u16string_view s, int64_t location);

[[nodiscard]] QUODDLE_EXPORT Range range(std::u16string_view s, int64_t lineNumber);

}  // namespace quod
