#include "quoddle/base/GeometryText.h"

#include <array>
#include <charconv>
#include <cstddef>

namespace quod {
namespace {

// "%.17g" through to_chars, which never looks at the locale.
void appendNumber(std::string& out, double value) {
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::general, 17);
    out.append(buffer.data(), result.ptr);
}

bool startsNumberScan(char c) {
    return (c >= '0' && c <= '9') || c == ' ' || c == '-';
}

// The scanner that the stored form was always read with: move to the next character that may
// begin a number (spaces included, so that the reader skips them itself), then read one.
// Returns false when the text has no more numbers; `position` then is at the end.
bool scanNumber(std::string_view text, std::size_t& position, double& value) {
    while (position < text.size()) {
        while (position < text.size() && !startsNumberScan(text[position]))
            ++position;
        while (position < text.size() && text[position] == ' ')
            ++position;
        if (position >= text.size()) return false;
        const char* first = text.data() + position;
        const char* last = text.data() + text.size();
        // from_chars takes no "+" and no leading spaces, like the old scanner after its skip.
        const auto result = std::from_chars(first, last, value, std::chars_format::general);
        if (result.ec == std::errc()) {
            position = static_cast<std::size_t>(result.ptr - text.data());
            return true;
        }
        if (result.ec == std::errc::result_out_of_range) {
            // Out of range numbers are still numbers: skip them and read them as 0.
            position = static_cast<std::size_t>(result.ptr - text.data());
            value = 0;
            return true;
        }
        ++position;  // a lone "-" or a "-" before something else: not a number
    }
    return false;
}

}  // namespace

std::string stringFromRect(const Rect& rect) {
    std::string out = "{{";
    appendNumber(out, rect.origin.x);
    out += ", ";
    appendNumber(out, rect.origin.y);
    out += "}, {";
    appendNumber(out, rect.size.width);
    out += ", ";
    appendNumber(out, rect.size.height);
    out += "}}";
    return out;
}

Rect rectFromString(std::string_view text) {
    std::array<double, 4> numbers{};
    std::size_t position = 0;
    for (double& number : numbers) {
        if (!scanNumber(text, position, number)) break;
    }
    return Rect{{numbers[0], numbers[1]}, {numbers[2], numbers[3]}};
}

}  // namespace quod
