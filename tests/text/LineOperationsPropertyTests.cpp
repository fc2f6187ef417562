// Random line operations on random texts and selections, on editable and read-only views and with
// a delegate that refuses every other change: nothing crashes, the selection stays inside the
// text, and each call is at most one undo step that restores the text and selection exactly.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "quoddle/text/LineOperations.h"

namespace quod {
namespace {

const std::u16string pieces[] = {
    u"a",      u"Z",  u"9",       u" ",      u"\t",
    u"\n",     u"\r", u"\r\n",    u"\u2028", u"\u0085",
    u"\u00A0", u"😀",  u"e\u0301", u"\u00E9", std::u16string(1, char16_t(0xD800))};

class RefuseEveryOther : public QuodTextViewDelegate {
  public:
    bool textViewShouldChangeText(QuodTextView&, Range, std::u16string_view) override {
        return (++asked % 2) == 0;
    }
    int asked = 0;
};

using Operation = std::function<void(QuodTextView&)>;

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all{
        [](QuodTextView& v) { Text::shiftLeft(v, true); },
        [](QuodTextView& v) { Text::shiftLeft(v, false); },
        [](QuodTextView& v) { Text::shiftRight(v, u"\t"); },
        [](QuodTextView& v) { Text::shiftRight(v, u"    "); },
        [](QuodTextView& v) { Text::spacesToTab(v, u"  "); },
        [](QuodTextView& v) { Text::tabToSpaces(v, u"   "); },
        [](QuodTextView& v) { Text::removeNeedlessWhitespace(v); },
        [](QuodTextView& v) { Text::removeLineEndingsInSelection(v); },
        [](QuodTextView& v) { Text::sort(v, false); },
        [](QuodTextView& v) { Text::sort(v, true); },
        [](QuodTextView& v) { Text::unique(v); },
        [](QuodTextView& v) { Text::moveUp(v); },
        [](QuodTextView& v) { Text::moveDown(v); },
        [](QuodTextView& v) { Text::duplicateLine(v); },
        [](QuodTextView& v) { Text::selectLine(v); },
        [](QuodTextView& v) { Text::selectMore(v); },
    };
    return all;
}

RC_GTEST_PROP(LineOperationsProperty, NeverCrashStayInsideAndUndoExactly, ()) {
    const auto pieceIndexes = *rc::gen::container<std::vector<std::size_t>>(
        rc::gen::inRange<std::size_t>(0, std::size(pieces)));
    std::u16string text;
    for (std::size_t index : pieceIndexes)
        text += pieces[index];
    QuodTextView view(text);
    const auto length = static_cast<int64_t>(text.size());
    const int64_t location = *rc::gen::inRange<int64_t>(0, length + 1);
    const int64_t selected = *rc::gen::inRange<int64_t>(0, length - location + 1);
    view.setSelectedRange({location, selected});

    const int mode = *rc::gen::inRange(0, 3);  // editable, read-only, refusing every other change
    auto delegate = std::make_shared<RefuseEveryOther>();
    if (mode == 1) view.setEditable(false);
    if (mode == 2) view.setDelegate(delegate);

    const auto steps = *rc::gen::container<std::vector<std::size_t>>(
        rc::gen::inRange<std::size_t>(0, operations().size()));
    for (std::size_t step : steps) {
        const std::u16string before = view.string();
        const Range selectionBefore = view.selectedRange();
        const int64_t undoSteps = view.undoManager().undoStepCount();

        operations()[step](view);

        const std::u16string after = view.string();
        const Range selectionAfter = view.selectedRange();
        RC_ASSERT(selectionAfter.isInside(view.length()));
        const int64_t added = view.undoManager().undoStepCount() - undoSteps;
        RC_ASSERT(added == 0 || added == 1);
        if (added == 0) {
            RC_ASSERT(after == before);
            continue;
        }
        view.undo();
        RC_ASSERT(view.string() == before);
        RC_ASSERT(view.selectedRange() == selectionBefore);
        view.redo();
        RC_ASSERT(view.string() == after);
        RC_ASSERT(view.selectedRange() == selectionAfter);
    }
}

}  // namespace
}  // namespace quod
