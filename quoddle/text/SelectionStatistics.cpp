#include "quoddle/text/SelectionStatistics.h"

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/strings/TextBoundaries.h"

namespace quod::Text {

SelectionCount selectionCount(std::u16string_view string,
                              const std::vector<Range>& selectionArray) {
    const auto length = static_cast<int64_t>(string.size());
    const icu::Locale locale = currentLocale();
    SelectionCount count;
    for (const Range& range : selectionArray) {
        if (range.length <= 0 || range.location < 0 || range.location > length - range.length) {
            continue;
        }
        const std::u16string_view selected = string.substr(range.location, range.length);
        count.characters = checkedAdd(count.characters, characterCount(selected));
        count.words = checkedAdd(count.words, std::ssize(wordRanges(selected, locale)));
    }
    return count;
}

}  // namespace quod::Text
