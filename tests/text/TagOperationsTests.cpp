#include <gtest/gtest.h>

#include "quoddle/base/CurrentLocale.h"
#include "quoddle/text/TagOperations.h"

namespace quod {
namespace {

std::u16string closed(std::u16string_view text) {
    QuodTextView view(text);
    view.setSelectedRange({view.length(), 0});
    Text::closeTag(view);
    return view.string().substr(text.size());
}

TEST(TagOperations, ClosesTheInnermostOpenElementAsWritten) {
    EXPECT_EQ(closed(u"<div><p>text</p>"), u"</div>");
    EXPECT_EQ(closed(u"<DiV class=\"x\">a"), u"</DiV>");
    EXPECT_EQ(closed(u"<ul><li>a</li><li>b"), u"</li>");
    EXPECT_EQ(closed(u"<a><b><c/></b>x"), u"</a>");
    // A partly typed closing tag is not recognised: the search starts at the last ">".
    EXPECT_EQ(closed(u"<div><span>x</span></"), u"</div>");
}

TEST(TagOperations, PassesOverTagsThatNeverClose) {
    for (const std::u16string_view passed :
         {u"<br>", u"<BR/>", u"<br />", u"<hr>", u"<hr />", u"<img src=x>", u"<input a>",
          u"<link x>", u"<param x>", u"<frame x>", u"<area x>", u"<base x>", u"<!-- c -->",
          u"<?xml v?>", u"<% x %>"}) {
        EXPECT_EQ(closed(u"<p>" + std::u16string(passed) + u" "), u"</p>")
            << std::u16string(passed).size();
    }
    // The openings are compared against the document, also past the insertion point: at the very
    // end of the text "<?>" is too short for the 4-unit test and counts as an element "<?".
    EXPECT_EQ(closed(u"<p><?>"), u"</?>");
    QuodTextView view(u"<p><?>abc");
    view.setSelectedRange({6, 0});
    Text::closeTag(view);
    EXPECT_EQ(view.string(), u"<p><?></p>abc");
}

TEST(TagOperations, DoesNothingWithoutAnOpenElement) {
    EXPECT_EQ(closed(u""), u"");
    EXPECT_EQ(closed(u"no tags"), u"");
    EXPECT_EQ(closed(u"<p>x</p>"), u"");
    EXPECT_EQ(closed(u"<<<<"), u"");
    QuodTextView view(u"<p>abc");
    view.setSelectedRange({3, 2});  // a real selection
    Text::closeTag(view);
    EXPECT_EQ(view.string(), u"<p>abc");
}

TEST(TagOperations, ClosingWalksBackOnceOverHugeTexts) {
    // A million passed-over tags between the cursor and the open element: the walk stays linear.
    std::u16string breaks;
    for (int i = 0; i < 1'000'000; ++i)
        breaks += u"<br>";
    EXPECT_EQ(closed(u"<root>" + breaks), u"</root>");
    // A megabyte of "<": the last one before ">" is taken for an element with an empty name.
    EXPECT_EQ(closed(std::u16string(1 << 20, u'<') + u">"), u"</>");
}

TEST(TagOperations, NewTagWrapsTheWordUnderTheInsertionPoint) {
    setCurrentLocale(icu::Locale("en_US"));
    QuodTextView view(u"a div b");
    view.setSelectedRange({3, 0});
    Text::newTag(view);
    EXPECT_EQ(view.string(), u"a <div></div> b");
    EXPECT_EQ(view.selectedRange(), (Range{7, 0}));
    view.undo();
    EXPECT_EQ(view.string(), u"a div b");
    EXPECT_EQ(view.selectedRange(), (Range{3, 0}));

    QuodTextView blank(u"x\n\ny");
    blank.setSelectedRange({2, 0});
    int alerts = 0;
    Connection connection = blank.alertRequested.connect([&] { ++alerts; });
    Text::newTag(blank);
    EXPECT_EQ(alerts, 1);
    EXPECT_EQ(blank.string(), u"x\n\ny");
    EXPECT_EQ(blank.selectedRange(), (Range{2, 0}));
}

}  // namespace
}  // namespace quod
