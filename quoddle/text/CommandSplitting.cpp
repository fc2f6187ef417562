#include "quoddle/text/CommandSplitting.h"

#include <algorithm>
#include <cstdint>
#include <optional>

#include "quoddle/strings/StringEditing.h"
#include "quoddle/strings/TextBoundaries.h"

namespace quod::Text {
namespace {

constexpr std::u16string_view doubleQuote = u"\"";
constexpr std::u16string_view singleQuote = u"'";
constexpr std::u16string_view space = u" ";

// The platform's components(separatedBy: " "): every space splits, so neighbours give "".
std::vector<std::u16string> splitAtSpaces(std::u16string_view text) {
    std::vector<std::u16string> parts;
    std::size_t start = 0;
    for (std::size_t at = text.find(u' '); at != std::u16string_view::npos;
         at = text.find(u' ', start)) {
        parts.emplace_back(text.substr(start, at - start));
        start = at + 1;
    }
    parts.emplace_back(text.substr(start));
    return parts;
}

// The text seen as characters (grapheme clusters), with searches that answer character offsets.
class Characters {
  public:
    explicit Characters(std::u16string_view text)
        : text_(text), boundaries_(characterBoundaries(text)) {}

    [[nodiscard]] std::u16string_view at(int64_t index) const { return slice(index, index + 1); }

    [[nodiscard]] std::u16string_view slice(int64_t from, int64_t to) const {
        return text_.substr(boundaries_[from], boundaries_[to] - boundaries_[from]);
    }

    // The first literal occurrence of `target` at or after character `from`; a match that starts
    // inside a character counts from that character. An empty target is never found.
    [[nodiscard]] std::optional<int64_t> find(std::u16string_view target, int64_t from) const {
        if (target.empty()) return std::nullopt;
        const std::size_t unit = text_.find(target, static_cast<std::size_t>(boundaries_[from]));
        if (unit == std::u16string_view::npos) return std::nullopt;
        const auto ends = std::upper_bound(boundaries_.begin() + 1, boundaries_.end(),
                                           static_cast<int64_t>(unit));
        return ends - (boundaries_.begin() + 1);
    }

  private:
    std::u16string_view text_;
    std::vector<int64_t> boundaries_;
};

std::u16string cleanArgument(std::u16string_view argument) {
    std::u16string cleaned = replacingOccurrences(argument, u"\\ ", u" ");
    cleaned = replacingOccurrences(cleaned, u"@@@@", doubleQuote);
    cleaned = replacingOccurrences(cleaned, u"%%%%", singleQuote);
    return trim(cleaned, true, StringEdge::both);
}

}  // namespace

std::vector<std::u16string> separateCommand(std::u16string_view command) {
    std::u16string line = trim(command, true, StringEdge::both);
    line = replacingOccurrences(line, u"  ", u" ");
    line = replacingOccurrences(line, u"\u00A0", u" ");
    if (line.find_first_of(u"\"'\\") == std::u16string::npos) return splitAtSpaces(line);

    // Counted before the markers make the text longer; the scan below never looks further.
    const int64_t count = characterCount(line);
    if (count == 0) return {u""};
    line = replacingOccurrences(line, u"\\\"", u"@@@@");
    line = replacingOccurrences(line, u"\\'", u"%%%%");
    const Characters characters(line);

    std::vector<std::u16string> arguments;
    int64_t i = 0;
    std::optional<int64_t> start;
    std::u16string_view delimiter;
    while (i < count) {
        if (!start) start = i;
        const std::u16string_view character = characters.at(i);
        if (character == doubleQuote || character == singleQuote) {
            start = *start + 1;  // the quote is not part of the argument
            ++i;
            delimiter = character == doubleQuote ? doubleQuote : singleQuote;
        } else if (character == space) {
            if (delimiter == doubleQuote || delimiter == singleQuote) {
                // The space right after a closing quote separates; it starts nothing.
                ++i;
                delimiter = {};
                start.reset();
                continue;
            }
        } else {
            delimiter = space;
        }
        const std::optional<int64_t> found = characters.find(delimiter, i);
        const int64_t end = found.value_or(count);
        if (delimiter == space && found && end >= 2 && characters.at(end - 1) == u"\\") {
            i = end + 1;  // an escaped space: the argument goes on
            continue;
        }
        if (*start < end) arguments.push_back(cleanArgument(characters.slice(*start, end)));
        i = end + 1;
        start.reset();
    }
    return arguments;
}

}  // namespace quod::Text
