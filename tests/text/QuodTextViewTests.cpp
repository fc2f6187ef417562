#include <gtest/gtest.h>

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/text/QuodTextView.h"

namespace quod {
namespace {

std::unique_ptr<QuodTextView> viewWith(std::u16string_view text, Range selection) {
    auto view = std::make_unique<QuodTextView>(text);
    view->setSelectedRange(selection);
    return view;
}

TEST(QuodTextView, SelectionWidensAnInsertionPointToItsLine) {
    EXPECT_EQ(viewWith(u"ab\ncd\n", {4, 0})->selection(), (Range{3, 3}));
    EXPECT_EQ(viewWith(u"ab\ncd\n", {6, 0})->selection(), (Range{6, 0}));  // empty last line
    EXPECT_EQ(viewWith(u"ab\ncd\n", {1, 3})->selection(), (Range{1, 3}));  // kept as it is
    EXPECT_EQ(viewWith(u"", {0, 0})->selection(), (Range{0, 0}));
}

TEST(QuodTextView, CountsLinesOfTheTextAndOfTheSelection) {
    for (auto [text, lines] : {std::pair{u"", 1},
                               {u"x", 1},
                               {u"x\n", 2},
                               {u"x\r\n", 2},
                               {u"x\ny", 2},
                               {u"x\n\n", 3},
                               {u"x\r\r\n", 3}}) {
        EXPECT_EQ(QuodTextView(text).numberOfLines(), lines) << std::u16string(text).size();
    }
    EXPECT_EQ(viewWith(u"a\nb\nc", {2, 2})->numberOfLinesSelected(), 1);  // b LF
    EXPECT_EQ(viewWith(u"a\nb\nc", {2, 3})->numberOfLinesSelected(), 2);  // b LF c
    EXPECT_EQ(viewWith(u"a\nb\nc", {2, 0})->numberOfLinesSelected(), 1);
    EXPECT_EQ(viewWith(u"a\nb\nc", {0, 5})->numberOfLinesSelected(), 3);
}

TEST(QuodTextView, SelectLinesCoversWholeLinesFromTheLineOfLocation) {
    QuodTextView view(u"a\nb\nc");
    view.selectLines(2, 1);
    EXPECT_EQ(view.selectedRange(), (Range{0, 4}));
    view.selectLines(0, 1);
    EXPECT_EQ(view.selectedRange(), (Range{0, 1}));
    view.selectLines(0, 2);
    EXPECT_EQ(view.selectedRange(), (Range{2, 0}));
    view.selectLines(99, 2);  // more lines than remain stops at the end
    EXPECT_EQ(view.selectedRange(), (Range{2, 3}));
}

TEST(QuodTextView, SelectLineNumberSelectsScrollsAndHighlights) {
    QuodTextView view(u"one\ntwo\n");
    std::vector<Range> scrolled, highlighted;
    Connection scrolling =
        view.scrollRangeToVisibleRequested.connect([&](Range r) { scrolled.push_back(r); });
    Connection finding =
        view.findIndicatorRequested.connect([&](Range r) { highlighted.push_back(r); });
    view.selectLineNumber(2);
    EXPECT_EQ(view.selectedRange(), (Range{4, 4}));
    view.selectLineNumber(0);
    EXPECT_EQ(view.selectedRange(), (Range{0, 4}));
    view.selectLineNumber(9);  // past the end: the empty line at the end
    EXPECT_EQ(view.selectedRange(), (Range{8, 0}));
    EXPECT_EQ(scrolled, (std::vector<Range>{{4, 4}, {0, 4}, {8, 0}}));
    EXPECT_EQ(highlighted, scrolled);
}

TEST(QuodTextView, ReplaceWithUndoSelectsTheNewTextInUtf16Units) {
    QuodTextView view(u"hello world");
    view.replaceWithUndo(u"", {5, 6}, true);
    EXPECT_EQ(view.string(), u"hello");
    EXPECT_EQ(view.selectedRange(), (Range{5, 0}));
    view.replaceWithUndo(u"😀", {0, 5}, true);
    EXPECT_EQ(view.selectedRange(), (Range{0, 2}));
    view.setSelectedRange({2, 0});
    view.replaceWithUndo(u"x", {0, 0}, false);  // select false: the selection moves with its text
    EXPECT_EQ(view.selectedRange(), (Range{3, 0}));
}

class Refuser : public QuodTextViewDelegate {
  public:
    bool textViewShouldChangeText(QuodTextView&, Range range, std::u16string_view) override {
        asked.push_back(range);
        return false;
    }
    std::vector<Range> asked;
};

TEST(QuodTextView, RefusedChangesLeaveTextSelectionAndHistoryAlone) {
    QuodTextView view(u"keep me");
    view.setSelectedRange({1, 2});
    int changes = 0;
    Connection connection = view.textDidChange.connect([&] { ++changes; });

    view.setEditable(false);
    view.replaceWithUndo(u"gone", {0, 7}, true);
    view.setEditable(true);
    auto refuser = std::make_shared<Refuser>();
    view.setDelegate(refuser);
    view.replaceWithUndo(u"gone", {0, 4}, true);

    EXPECT_EQ(view.string(), u"keep me");
    EXPECT_EQ(view.selectedRange(), (Range{1, 2}));
    EXPECT_EQ(changes, 0);
    EXPECT_FALSE(view.undoManager().canUndo());
    EXPECT_EQ(refuser->asked, std::vector<Range>{(Range{0, 4})});

    refuser.reset();  // held weakly: a vanished delegate refuses nothing
    view.replaceWithUndo(u"", {0, 5}, false);
    EXPECT_EQ(view.string(), u"me");
}

TEST(QuodTextView, OneCommandIsOneUndoStepRestoringTextAndSelection) {
    QuodTextView view(u"alpha\nbeta\n");
    view.setSelectedRange({6, 0});
    {
        QuodTextView::UndoGroup command(view);
        view.replaceWithUndo(u"\t", {0, 0}, false);
        view.replaceWithUndo(u"\t", {7, 0}, false);
        view.setSelectedRange({0, 13});
    }
    view.replaceWithUndo(u"B", {8, 1}, true);  // a second step
    EXPECT_EQ(view.string(), u"\talpha\n\tBeta\n");

    view.undo();
    EXPECT_EQ(view.string(), u"\talpha\n\tbeta\n");
    EXPECT_EQ(view.selectedRange(), (Range{0, 13}));
    view.undo();
    EXPECT_EQ(view.string(), u"alpha\nbeta\n");
    EXPECT_EQ(view.selectedRange(), (Range{6, 0}));
    EXPECT_FALSE(view.undoManager().canUndo());
    view.redo();
    EXPECT_EQ(view.string(), u"\talpha\n\tbeta\n");
    EXPECT_EQ(view.selectedRange(), (Range{0, 13}));
    view.redo();
    EXPECT_EQ(view.selectedRange(), (Range{8, 1}));
    // A new change after an undo drops what could have been redone.
    view.undo();
    view.replaceWithUndo(u"", {0, 1}, false);
    EXPECT_FALSE(view.undoManager().canRedo());
}

TEST(QuodTextView, TheRawProtocolRecordsOneStepPerChange) {
    QuodTextView view(u"abc");
    for (char16_t typed : std::u16string(u"xyz")) {
        const Range at{view.selectedRange().location, 0};
        ASSERT_TRUE(view.shouldChangeText(at, std::u16string(1, typed)));
        view.replaceCharacters(at, std::u16string(1, typed));
        view.didChangeText();
    }
    EXPECT_EQ(view.string(), u"xyzabc");
    EXPECT_EQ(view.selectedRange(), (Range{3, 0}));  // the insertion point follows the typing
    EXPECT_EQ(view.undoManager().undoStepCount(), 3);
    view.undo();
    EXPECT_EQ(view.string(), u"xyabc");
    EXPECT_EQ(view.selectedRange(), (Range{2, 0}));
}

TEST(QuodTextView, WidensByCharacterWordAndParagraph) {
    setCurrentLocale(icu::Locale("en_US"));
    // "e" + combining acute is one character; "x.y" is one word in en_US.
    QuodTextView view(u"cafe\u0301 x.y, fin\u2028next\nlast\n\nend");
    const auto widen = [&](Range range, SelectionGranularity granularity) {
        return view.selectionRangeForProposedRange(range, granularity);
    };
    using enum SelectionGranularity;
    EXPECT_EQ(widen({4, 1}, selectByCharacter), (Range{3, 2}));
    EXPECT_EQ(widen({4, 0}, selectByCharacter), (Range{3, 0}));
    EXPECT_EQ(widen({0, 2}, selectByCharacter), (Range{0, 2}));
    EXPECT_EQ(widen({1, 0}, selectByWord), (Range{0, 5}));
    EXPECT_EQ(widen({5, 0}, selectByWord), (Range{5, 1}));  // the space after the word
    EXPECT_EQ(widen({7, 1}, selectByWord), (Range{6, 3}));  // x.y
    EXPECT_EQ(widen({2, 6}, selectByWord), (Range{0, 9}));
    EXPECT_EQ(widen({14, 0}, selectByWord), (Range{11, 3}));      // end of line: the word before
    EXPECT_EQ(widen({25, 0}, selectByWord), (Range{25, 0}));      // empty line: nothing
    EXPECT_EQ(widen({1, 0}, selectByParagraph), (Range{0, 20}));  // U+2028 ends no paragraph
    EXPECT_EQ(widen({21, 2}, selectByParagraph), (Range{20, 5}));

    view.setSelectedRange({7, 0});
    view.selectWord();
    EXPECT_EQ(view.selectedRange(), (Range{6, 3}));
    view.selectParagraph();
    EXPECT_EQ(view.selectedRange(), (Range{0, 20}));
    view.selectAll();
    EXPECT_EQ(view.selectedRange(), (Range{0, view.length()}));
}

TEST(QuodTextView, WideningInsideALeadingSurrogatePairStartsAtTheText) {
    QuodTextView view(u"\U0001F600<br>\n\U0001F600x");
    using enum SelectionGranularity;
    EXPECT_EQ(view.selectionRangeForProposedRange({1, 0}, selectByCharacter), (Range{0, 0}));
    EXPECT_EQ(view.selectionRangeForProposedRange({1, 1}, selectByCharacter), (Range{0, 2}));
    EXPECT_EQ(view.selectionRangeForProposedRange({1, 0}, selectByWord), (Range{0, 2}));
    EXPECT_EQ(view.selectionRangeForProposedRange({8, 0}, selectByWord), (Range{7, 2}));
}

TEST(QuodTextView, AlertsAreSignalled) {
    QuodTextView view;
    int alerts = 0;
    Connection connection = view.alertRequested.connect([&] { ++alerts; });
    view.beep();
    EXPECT_EQ(alerts, 1);
    EXPECT_TRUE(view.isOpaque());
}

TEST(QuodTextViewDeathTest, ProgrammingErrorsStop) {
    QuodTextView view(u"abc");
    EXPECT_DEATH(view.selectLines(-1, 0), "negative line count");
    EXPECT_DEATH(view.setSelectedRange({2, 2}), "outside the text");
    EXPECT_DEATH(view.replaceWithUndo(u"x", {4, 0}, false), "outside the text");
    EXPECT_DEATH(
        (void)view.selectionRangeForProposedRange({0, 9}, SelectionGranularity::selectByWord),
        "outside the text");
}

}  // namespace
}  // namespace quod
