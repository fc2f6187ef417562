#include "quoddle/strings/Words.h"

#include "quoddle/strings/TextBoundaries.h"

namespace quod {

std::vector<std::u16string> words(std::u16string_view s, const icu::Locale& locale) {
    const std::vector<Range> ranges = wordRanges(s, locale);
    std::vector<std::u16string> result;
    result.reserve(ranges.size());
    for (const Range& range : ranges) {
        result.emplace_back(s.substr(static_cast<std::size_t>(range.location),
                                     static_cast<std::size_t>(range.length)));
    }
    return result;
}

int64_t wordCount(std::u16string_view s, const icu::Locale& locale) {
    return static_cast<int64_t>(wordRanges(s, locale).size());
}

}  // namespace quod
