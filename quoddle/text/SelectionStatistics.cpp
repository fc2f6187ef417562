#include "quoddle/text/SelectionStatistics.h"

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/text/internal/SegmentCounting.h"

namespace quod::Text {

SelectionCount selectionCount(std::u16string_view string,
                              const std::vector<Range>& selectionArray) {
    const auto length = static_cast<int64_t>(string.size());
    internal::SegmentCounter counter(currentLocale());
    SelectionCount count;
    for (const Range& range : selectionArray) {
        if (range.length <= 0 || range.location < 0 || range.location > length - range.length) {
            continue;
        }
        counter.reset();
        counter.add(string.substr(range.location, range.length), true);
        const SelectionCount selected = counter.count();
        count.characters = checkedAdd(count.characters, selected.characters);
        count.words = checkedAdd(count.words, selected.words);
    }
    return count;
}

SelectionCounter::SelectionCounter(const icu::Locale& locale)
    : counter_(std::make_unique<internal::SegmentCounter>(locale)) {}

SelectionCounter::~SelectionCounter() = default;
SelectionCounter::SelectionCounter(SelectionCounter&&) noexcept = default;
SelectionCounter& SelectionCounter::operator=(SelectionCounter&&) noexcept = default;

void SelectionCounter::add(std::u16string_view piece) { counter_->add(piece); }

SelectionCount SelectionCounter::count() const { return counter_->count(); }

}  // namespace quod::Text
