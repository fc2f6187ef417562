#include "quoddle/strings/Search.h"

#include "quoddle/base/Precondition.h"
#include "quoddle/strings/TextBoundaries.h"

namespace quod {
namespace {

// The matching range in units, searching from unit `from`.
std::optional<Range> findUnits(std::u16string_view s, std::u16string_view of, int64_t from) {
    if (of.empty()) {
        return std::nullopt;
    }
    const std::size_t at = s.find(of, static_cast<std::size_t>(from));
    if (at == std::u16string_view::npos) {
        return std::nullopt;
    }
    return Range{static_cast<int64_t>(at), static_cast<int64_t>(of.size())};
}

// The same, searching from the start of character `startPosition`.
std::optional<Range> findFromCharacter(std::u16string_view s, std::u16string_view of,
                                       int64_t startPosition) {
    QUOD_PRECONDITION(startPosition >= 0, "negative start position");
    const std::optional<int64_t> from = offsetOfCharacter(s, startPosition);
    QUOD_PRECONDITION(from.has_value(), "start position beyond the characters of the text");
    return findUnits(s, of, *from);
}

}  // namespace

std::optional<int64_t> index(std::u16string_view s, std::u16string_view of, int64_t startPosition) {
    const std::optional<Range> match = findFromCharacter(s, of, startPosition);
    if (!match) {
        return std::nullopt;
    }
    return characterIndexOfOffset(s, match->location);
}

std::optional<Range> indexRange(std::u16string_view s, std::u16string_view of,
                                int64_t startPosition) {
    const std::optional<Range> match = findFromCharacter(s, of, startPosition);
    if (!match) {
        return std::nullopt;
    }
    const int64_t start = characterIndexOfOffset(s, match->location);
    return Range{start, characterIndexOfOffset(s, match->end()) - start};
}

std::optional<int64_t> utf16Index(std::u16string_view s, std::u16string_view of,
                                  int64_t startPosition) {
    QUOD_PRECONDITION(startPosition >= 0 && startPosition <= static_cast<int64_t>(s.size()),
                      "start position outside the text");
    const std::optional<Range> match = findUnits(s, of, startPosition);
    if (!match) {
        return std::nullopt;
    }
    return match->location;
}

}  // namespace quod
