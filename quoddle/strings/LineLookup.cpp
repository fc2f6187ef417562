#include "quoddle/strings/LineLookup.h"

#include "quoddle/strings/LineFunctions.h"

namespace quod {
namespace {

int64_t lineEnd(std::u16string_view s, int64_t position) {
    return lineBounds(s, {position, 0}).end;
}

}  // namespace

int64_t lineNumber(std::u16string_view s, int64_t location) {
    const auto length = static_cast<int64_t>(s.size());
    int64_t count = 0;
    int64_t position = 0;
    if (length >= 1) {
        int64_t end = 0;
        do {
            end = lineEnd(s, position);
            ++count;
            position = end;
        } while (end <= location && end < length);
    }
    // At the very end, behind a final terminator (or in an empty text), sits one more, empty line.
    const LineBounds last = lineBounds(s, {position, 0});
    if (location == length && last.start == last.end) {
        ++count;
    }
    return count;
}

Range range(std::u16string_view s, int64_t lineNumber) {
    const auto length = static_cast<int64_t>(s.size());
    int64_t position = 0;
    for (int64_t line = 1; line < lineNumber && position < length; ++line) {
        position = lineEnd(s, position);
    }
    return lineRange(s, {position, 0});
}

}  // namespace quod
