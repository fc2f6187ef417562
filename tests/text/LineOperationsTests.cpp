#include <gtest/gtest.h>

#include <memory>

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/text/LineOperations.h"

namespace quod {
namespace {

// A view with its selection, and the result of one operation as text plus selection.
struct Scenario {
    std::u16string text;
    Range selection;
};

std::unique_ptr<QuodTextView> viewFor(const Scenario& scenario) {
    auto view = std::make_unique<QuodTextView>(scenario.text);
    view->setSelectedRange(scenario.selection);
    return view;
}

template <typename Operation>
Scenario after(const Scenario& before, Operation operation) {
    auto view = viewFor(before);
    operation(*view);
    const Scenario result{view->string(), view->selectedRange()};
    // Whatever it did is one undo step that restores text and selection.
    if (result.text != before.text) {
        view->undo();
        EXPECT_EQ(view->string(), before.text);
        EXPECT_EQ(view->selectedRange(), before.selection);
        EXPECT_FALSE(view->undoManager().canUndo());
    }
    return result;
}

void expectScenario(const Scenario& actual, const Scenario& expected) {
    EXPECT_EQ(actual.text, expected.text);
    EXPECT_EQ(actual.selection, expected.selection);
}

TEST(LineOperations, ShiftLeftRemovesOneUnitPerLineAndStopsAtTheEnd) {
    const auto shiftLeft = [](QuodTextView& view) { Text::shiftLeft(view, true); };
    expectScenario(after({u"\t\tx\ny", {0, 5}}, shiftLeft), {u"\tx\ny", {0, 4}});
    expectScenario(after({u"    a\n  b\n", {0, 9}}, shiftLeft), {u"   a\n b\n", {0, 8}});
    // An insertion point stands for its line.
    expectScenario(after({u"a\n b\nc", {3, 0}}, shiftLeft), {u"a\nb\nc", {2, 2}});
    // Without select the selection is left where the change put it.
    const Scenario quiet =
        after({u" a\n b", {0, 5}}, [](QuodTextView& view) { Text::shiftLeft(view, false); });
    EXPECT_EQ(quiet.text, u"a\nb");
}

TEST(LineOperations, ShiftRightIndentsEveryCountedLine) {
    const auto indent = [](QuodTextView& view) { Text::shiftRight(view, u"\t"); };
    // Two lines plus an insertion point at the start of a third: the third is not counted.
    expectScenario(after({u"a\nb\nc", {0, 4}}, indent), {u"\ta\n\tb\nc", {0, 6}});
    // Empty lines are indented too.
    expectScenario(after({u"a\n\nb", {0, 4}}, indent), {u"\ta\n\t\n\tb", {0, 7}});
    expectScenario(after({u"", {0, 0}}, [](QuodTextView& view) { Text::shiftRight(view, u"  "); }),
                   {u"  ", {0, 2}});
}

TEST(LineOperations, SpacesAndTabsConvertAnywhereInTheSelectedLines) {
    const auto toTab = [](QuodTextView& view) { Text::spacesToTab(view, u"    "); };
    expectScenario(after({u"         x", {0, 0}}, toTab), {u"\t\t x", {0, 0}});
    expectScenario(after({u"a    b\n    c\nd    ", {2, 6}}, toTab), {u"a\tb\n\tc\nd    ", {2, 0}});
    const auto toSpaces = [](QuodTextView& view) { Text::tabToSpaces(view, u"  "); };
    // An insertion point stands for its line, so the selection ends at the line start.
    expectScenario(after({u"\ta\tb\n\t", {1, 0}}, toSpaces), {u"  a  b\n\t", {0, 0}});
    // The insertion point stays inside a text that got shorter.
    expectScenario(after({u"        x", {8, 1}}, toTab), {u"\t\tx", {3, 0}});
}

TEST(LineOperations, RemoveNeedlessWhitespaceReachesOneLineFurther) {
    const auto trim = [](QuodTextView& view) { Text::removeNeedlessWhitespace(view); };
    // The line under the insertion point and the whitespace-only line below it are cleaned.
    expectScenario(after({u"a  \n \t\nb  ", {1, 0}}, trim), {u"a\n\nb  ", {0, 0}});
    // Non-breaking and other Zs spaces count as whitespace, U+200B too.
    expectScenario(after({u"\u00A0\u3000\u200B\nx", {0, 0}}, trim), {u"\nx", {0, 0}});
    expectScenario(after({u"x \r\ny \r\nz ", {0, 9}}, trim), {u"x\r\ny\r\nz", {0, 0}});
    // A selection ending at a line start also cleans that line.
    expectScenario(after({u"a \nb \nc ", {0, 3}}, trim), {u"a\nb\nc ", {0, 0}});
}

TEST(LineOperations, RemoveLineEndingsJoinsTheLineWithTheNext) {
    const auto join = [](QuodTextView& view) { Text::removeLineEndingsInSelection(view); };
    expectScenario(after({u"a\r\nb\nc", {1, 0}}, join), {u"ab\nc", {0, 0}});
    expectScenario(after({u"a\nb\u2028c\rd", {0, 7}}, join), {u"ab\u2028cd", {0, 0}});
}

TEST(LineOperations, SortOrdersLinesInPlaceOfTheRawSelection) {
    setCurrentLocale(icu::Locale("en_US"));
    const auto sortUp = [](QuodTextView& view) { Text::sort(view, false); };
    const auto sortDown = [](QuodTextView& view) { Text::sort(view, true); };
    expectScenario(after({u"item10\nitem9\nItem1", {0, 0}}, sortUp),
                   {u"Item1\nitem9\nitem10", {0, 18}});
    expectScenario(after({u"item10\nitem9\nItem1", {0, 0}}, sortDown),
                   {u"item10\nitem9\nItem1", {0, 18}});
    // The final terminator goes, other terminators become LF.
    expectScenario(after({u"b\r\na\n", {0, 0}}, sortUp), {u"a\nb", {0, 3}});
    // A partial selection: the whole touched lines replace only the selected units.
    expectScenario(after({u"zz\nbb\naa\n", {1, 4}}, sortUp), {u"zbb\nzz\naa\n", {1, 5}});
    // Ending at a line start takes in that line (selectLine's result does).
    expectScenario(after({u"c\nb\na", {0, 2}}, sortUp), {u"b\ncb\na", {0, 3}});
}

TEST(LineOperations, UniqueKeepsFirstOccurrencesOfCanonicallyEqualLines) {
    const auto unique = [](QuodTextView& view) { Text::unique(view); };
    expectScenario(after({u"a\nb\na\nc\nb", {0, 0}}, unique), {u"a\nb\nc", {0, 5}});
    expectScenario(after({u"\u00E9\ne\u0301\nE\u0301\n", {0, 0}}, unique),
                   {u"\u00E9\nE\u0301", {0, 4}});
    expectScenario(after({u"", {0, 0}}, unique), {u"", {0, 0}});
}

TEST(LineOperations, MovesAreAsymmetricAndBeepAtTheEdges) {
    const auto moveUp = [](QuodTextView& view) { Text::moveUp(view); };
    const auto moveDown = [](QuodTextView& view) { Text::moveDown(view); };
    expectScenario(after({u"a\nb", {0, 0}}, moveDown), {u"b\na\n", {1, 0}});
    expectScenario(after({u"a\nb", {2, 1}}, moveUp), {u"ba\n", {0, 1}});
    expectScenario(after({u"one\ntwo\nthree\n", {5, 1}}, moveUp), {u"two\none\nthree\n", {1, 1}});
    expectScenario(after({u"one\ntwo\nthree\n", {1, 1}}, moveDown), {u"two\none\nthree\n", {5, 1}});

    for (const auto& [scenario, move] : {std::pair{Scenario{u"a\nb", {1, 0}}, +moveUp},
                                         std::pair{Scenario{u"a\nb", {2, 0}}, +moveDown},
                                         std::pair{Scenario{u"a\n", {0, 0}}, +moveDown}}) {
        auto view = viewFor(scenario);
        int alerts = 0;
        Connection connection = view->alertRequested.connect([&] { ++alerts; });
        move(*view);
        EXPECT_EQ(alerts, 1);
        EXPECT_EQ(view->string(), scenario.text);
        EXPECT_FALSE(view->undoManager().canUndo());
    }
}

TEST(LineOperations, DuplicateAndSelectLine) {
    const auto duplicate = [](QuodTextView& view) { Text::duplicateLine(view); };
    expectScenario(after({u"x", {0, 0}}, duplicate), {u"x\nx", {1, 2}});
    expectScenario(after({u"a\r\nb", {0, 1}}, duplicate), {u"a\r\na\r\nb", {3, 3}});
    expectScenario(after({u"a\nb\nc", {1, 2}}, [](QuodTextView& view) { Text::selectLine(view); }),
                   {u"a\nb\nc", {0, 4}});
}

TEST(LineOperations, SelectMoreWidensWordParagraphEverything) {
    setCurrentLocale(icu::Locale("en_US"));
    QuodTextView view(u"one two\nthree\n");
    view.setSelectedRange({5, 0});
    Text::selectMore(view);
    EXPECT_EQ(view.selectedRange(), (Range{4, 3}));
    Text::selectMore(view);
    EXPECT_EQ(view.selectedRange(), (Range{0, 8}));
    Text::selectMore(view);
    EXPECT_EQ(view.selectedRange(), (Range{0, 14}));
    view.setSelectedRange({5, 1});  // part of a word: the word
    Text::selectMore(view);
    EXPECT_EQ(view.selectedRange(), (Range{4, 3}));
}

class RefuseAll : public QuodTextViewDelegate {
  public:
    bool textViewShouldChangeText(QuodTextView&, Range, std::u16string_view) override {
        return false;
    }
};

TEST(LineOperations, RefusedChangesFollowThePositionArithmetic) {
    // shiftLeft retries the refused line instead of moving on: nothing changes, nothing crashes.
    auto view = viewFor({u" a\n b\n c", {0, 8}});
    auto refuser = std::make_shared<RefuseAll>();
    view->setDelegate(refuser);
    Text::shiftLeft(*view, true);
    EXPECT_EQ(view->string(), u" a\n b\n c");
    EXPECT_EQ(view->selectedRange(), (Range{0, 8}));
    // shiftRight moves on as if the indent were there; its positions stay inside the text.
    Text::shiftRight(*view, u"\t\t\t\t");
    EXPECT_EQ(view->string(), u" a\n b\n c");
    EXPECT_FALSE(view->undoManager().canUndo());
}

}  // namespace
}  // namespace quod
