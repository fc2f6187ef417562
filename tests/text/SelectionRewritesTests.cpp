#include <gtest/gtest.h>

#include <memory>

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/strings/LineEnding.h"
#include "quoddle/text/SelectionRewrites.h"

namespace quod {
namespace {

struct Scenario {
    std::u16string text;
    Range selection;
};

template <typename Operation>
Scenario after(const Scenario& before, Operation operation) {
    QuodTextView view(before.text);
    view.setSelectedRange(before.selection);
    operation(view);
    const Scenario result{view.string(), view.selectedRange()};
    if (result.text != before.text) {  // one undo step back to the start
        view.undo();
        EXPECT_EQ(view.string(), before.text);
        EXPECT_EQ(view.selectedRange(), before.selection);
        EXPECT_FALSE(view.undoManager().canUndo());
    }
    return result;
}

void expectScenario(const Scenario& actual, const Scenario& expected) {
    EXPECT_EQ(actual.text, expected.text);
    EXPECT_EQ(actual.selection, expected.selection);
}

TEST(SelectionRewrites, CommentModeFollowsTheFirstLine) {
    const auto toggle = [](QuodTextView& view) { Text::commentOrUncomment(view, u"//"); };
    // Uncomment: the first occurrence goes wherever it stands, trailing comments included.
    expectScenario(after({u"  // a\nb(); // c\n", {0, 9}}, toggle), {u"   a\nb();  c\n", {0, 13}});
    // Comment: the first line has no token, so every line gets one at column 0.
    expectScenario(after({u"x\n// y\n\nz", {0, 9}}, toggle), {u"//x\n//// y\n//\n//z", {0, 17}});
    // A line without the token is left alone in uncomment mode.
    expectScenario(after({u"//a\nb", {0, 5}}, toggle), {u"a\nb", {0, 3}});
    expectScenario(after({u"\t//x", {4, 0}}, toggle), {u"\tx", {0, 2}});
}

TEST(SelectionRewrites, CaseChangesKeepTheOldSelectionLength) {
    setCurrentLocale(icu::Locale("en_US"));
    expectScenario(after({u"straße", {4, 1}}, Text::uppercase), {u"straSSe", {4, 1}});
    expectScenario(after({u"Hello World\nnext", {3, 0}}, Text::lowercase),
                   {u"hello world\nnext", {0, 12}});
    expectScenario(after({u"hELLO wORLD u.s.a. 1st", {0, 22}}, Text::capitalize),
                   {u"Hello World U.S.A. 1st", {0, 22}});
    setCurrentLocale(icu::Locale("tr_TR"));
    expectScenario(after({u"iı", {0, 2}}, Text::uppercase), {u"İI", {0, 2}});
    setCurrentLocale(icu::Locale("en_US"));
}

TEST(SelectionRewrites, TransformsTheSelectionOrTheWholeDocument) {
    const auto fromXMLHex = [](QuodTextView& view) {
        Text::transform(StringTransform::Kind::fromXMLHex, view);
    };
    expectScenario(after({u"&#x41; &#x42;", {0, 0}}, fromXMLHex), {u"A B", {0, 3}});
    expectScenario(after({u"&#x41; &#x42;", {7, 6}}, fromXMLHex), {u"&#x41; B", {7, 1}});
    // Nothing to change: no undo step, selection untouched.
    expectScenario(after({u"plain", {1, 2}}, fromXMLHex), {u"plain", {1, 2}});
}

TEST(SelectionRewrites, StringRewritesReplaceTheRawSelection) {
    const auto toWindows = [](QuodTextView& view) {
        Text::rewriteSelection(view, [](std::u16string_view text) {
            return Text::convert(text, LineEnding::windows);
        });
    };
    expectScenario(after({u"a\nb\rc\nd", {0, 5}}, toWindows), {u"a\r\nb\r\nc\nd", {0, 7}});
    // An insertion point is an empty selection here, not its line.
    expectScenario(after({u"a\nb", {1, 0}}, toWindows), {u"a\nb", {1, 0}});
    QuodTextView unchanged(u"a\r\nb");
    unchanged.selectAll();
    toWindows(unchanged);
    EXPECT_FALSE(unchanged.undoManager().canUndo());
}

TEST(SelectionRewrites, XmlEscapingNeverEscapesTwice) {
    EXPECT_EQ(Text::prepareStringForXML(u"a &amp; b < c"), u"a &amp; b &lt; c");
    EXPECT_EQ(Text::prepareStringForXML(u"<x a=\"1\">'&lt;'</x>"),
              u"&lt;x a=\"1\"&gt;'&amp;lt;'&lt;/x&gt;");
    expectScenario(after({u"a<b\nc", {1, 0}}, Text::prepareForXML), {u"a&lt;b\nc", {0, 0}});
}

TEST(SelectionRewrites, SnippetsPlaceSelectionAndCursorInUtf16Units) {
    QuodTextView view(u"😀 x");
    view.setSelectedRange({3, 1});
    EXPECT_EQ(Text::prepareSnippet(u"(%%s)", view), (Text::PreparedSnippet{u"(x)", 0}));
    EXPECT_EQ(Text::prepareSnippet(u"😀%%c%%s%%c", view), (Text::PreparedSnippet{u"😀x", 2}));

    expectScenario(
        after({u"😀 x", {3, 1}}, [](QuodTextView& v) { Text::insertSnippet(u"(%%s)", v); }),
        {u"😀 (x)", {3, 3}});
    // With a cursor marker the selection starts there and runs on for the snippet's length,
    // clamped to the end of the text.
    expectScenario(after({u"0123456789xyz", {10, 0}},
                         [](QuodTextView& v) { Text::insertSnippet(u"a%%cb", v); }),
                   {u"0123456789abxyz", {11, 2}});
    expectScenario(
        after({u"0123456789", {10, 0}}, [](QuodTextView& v) { Text::insertSnippet(u"a%%cb", v); }),
        {u"0123456789ab", {11, 1}});
}

}  // namespace
}  // namespace quod
