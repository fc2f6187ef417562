// The gutter at its public interface: a real text view and text storage, the monospaced layout,
// the main run loop for its delayed start, and the recording surface for what it draws.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "GutterTestSupport.h"
#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/runtime/NotificationCenter.h"

namespace quod::testing {
namespace {

constexpr int64_t marker = LineLocationArray::emptyLastLine;

using LineIndex = GutterTest;

TEST_F(LineIndex, HoldsEveryLineStartAndMarksAnEmptyLastLine) {
    const struct {
        std::u16string text;
        std::vector<int64_t> locations;
    } cases[] = {
        {u"", {marker}},
        {u"a", {0}},
        {u"a\n", {0, marker}},
        {u"a\r\nb", {0, 3}},
        {u"\n\n\r\n", {0, 1, 2, marker}},
        {u"\r\r\n\u0085\u2028\u2029x", {0, 1, 3, 4, 5, 6}},
        {u"a\u000Bb\u000Cc", {0}},  // VT and FF end no line
    };
    for (const auto& [text, locations] : cases) {
        LineLocationArray array;
        EXPECT_TRUE(array.empty());
        EXPECT_TRUE(array.rebuild(TextStorage(text)));
        EXPECT_EQ(array.toVector(), locations);
        EXPECT_TRUE(array == locations);
        EXPECT_FALSE(array.rebuild(TextStorage(text))) << "an unchanged text changes nothing";
    }
}

TEST_F(LineIndex, IsEmptyUntilObservationBeginsThenNumbersEditsMadeMeanwhile) {
    setUpGutter(u"a");
    textView->textStorage().replaceCharactersInRange({1, 0}, u"\nb\r\nc\n");
    EXPECT_TRUE(gutter.lineLocationArray().empty());
    waitForObservation();
    EXPECT_EQ(gutter.lineLocationArray().toVector(), (std::vector<int64_t>{0, 2, 5, marker}));
    textView->textStorage().replaceCharactersInRange({0, 2}, u"");
    EXPECT_EQ(gutter.lineLocationArray().toVector(), (std::vector<int64_t>{0, 3, marker}));
}

TEST_F(LineIndex, RedrawsOnlyWhenAnEntryChanges) {
    setUpGutter(u"ab\ncd");
    waitForObservation();
    gutter.setNeedsDisplay(false);
    int requests = 0;
    const Connection counter = gutter.displayNeeded.connect([&] { ++requests; });
    textView->textStorage().replaceCharactersInRange({5, 0}, u"e");  // typing on the last line
    EXPECT_FALSE(gutter.needsDisplay());
    textView->textStorage().replaceCharactersInRange({0, 0}, u"x");  // line 2 moves
    textView->textStorage().replaceCharactersInRange({0, 0}, u"y");
    EXPECT_TRUE(gutter.needsDisplay());
    EXPECT_EQ(requests, 1) << "asked once until drawn";
    EXPECT_EQ(gutter.lineLocationArray().toVector(), (std::vector<int64_t>{0, 5}));
}

TEST_F(LineIndex, FiveMillionLinesAreIndexedNumberedAndDrawnAtTheEnd) {
    setUpGutter(std::u16string(5'000'000, u'\n'));
    waitForObservation();
    const LineLocationArray& array = gutter.lineLocationArray();
    ASSERT_EQ(array.size(), 5'000'001);
    EXPECT_EQ(array[4'999'999], 4'999'999);
    EXPECT_EQ(array[5'000'000], marker);
    EXPECT_EQ(gutter.bounds().width(), 7 * 7 + 8.0);
    scrollView->scrollTo(5'000'001 * lineHeight - 10 * lineHeight);
    const std::vector<std::string> numbers = drawnNumbers();
    ASSERT_FALSE(numbers.empty());
    EXPECT_EQ(numbers.front(), "4999992");
    EXPECT_EQ(numbers.back(), "5000001");
}

using WidthRule = GutterTest;

TEST_F(WidthRule, CountsDigitsInSinglePrecisionOneShortAtPowersOfTen) {
    EXPECT_EQ(LineNumberView::widthForEntryCount(0, 7), 15.0);
    EXPECT_EQ(LineNumberView::widthForEntryCount(1, 7), 8.0);  // the empty text
    EXPECT_EQ(LineNumberView::widthForEntryCount(9, 7), 15.0);
    EXPECT_EQ(LineNumberView::widthForEntryCount(10, 7), 15.0);
    EXPECT_EQ(LineNumberView::widthForEntryCount(11, 7), 22.0);
    EXPECT_EQ(LineNumberView::widthForEntryCount(100, 7), 22.0);
    EXPECT_EQ(LineNumberView::widthForEntryCount(101, 7), 29.0);
}

TEST_F(WidthRule, GrowsForElevenLinesButNotForNineOrTen) {
    for (const int lines : {9, 10, 11}) {
        delegate = std::make_shared<WidthDelegate>();
        LineNumberView fresh;
        textView = std::make_shared<QuodTextView>(numberedText(lines));
        scrollView = std::make_shared<TestScrollView>(textView, 140);
        fresh.setUpWithTextStorage(storage(), scrollView, delegate);
        waitForObservation();
        // Set-up asks for one digit before any line is known.
        const std::vector<double> expected =
            lines == 11 ? std::vector<double>{15, 22} : std::vector<double>{15};
        EXPECT_EQ(delegate->widths, expected) << lines << " lines";
        EXPECT_EQ(fresh.minimumWidth(), expected.back());
    }
}

TEST_F(WidthRule, NeverNarrowsWhenLinesGoAndGrowsWithTheFont) {
    setUpGutter(numberedText(120));
    waitForObservation();
    EXPECT_EQ(gutter.bounds().width(), 29.0);
    textView->textStorage().replaceCharactersInRange({0, textView->length()}, u"one line");
    EXPECT_EQ(gutter.lineLocationArray().size(), 1);
    EXPECT_EQ(gutter.bounds().width(), 29.0);
    EXPECT_EQ(delegate->widths, (std::vector<double>{15, 29}));

    // Courier 14 measures 7.7, rounded up to 8: one digit is now 8 + 8 wide, still narrower.
    Defaults::lineNumberFont.set(*Font::withName("Courier", 14));
    Notifications().post(NotificationName::lineNumberFontChanged());
    EXPECT_EQ(delegate->widths.size(), 2u);
    textView->textStorage().replaceCharactersInRange({0, 0}, numberedText(200) + u"\n");
    EXPECT_EQ(delegate->widths.back(), 3 * 8 + 8.0);
}

using Drawing = GutterTest;

TEST_F(Drawing, EmptyTextIsOneNumberOnTheExtraLineBesideBackgroundAndSeparator) {
    setUpGutter(u"");
    waitForObservation();
    EXPECT_EQ(gutter.lineLocationArray().toVector(), std::vector<int64_t>{marker});
    gutter.updateLayer(surface);
    const auto& commands = surface.commands();
    ASSERT_EQ(commands.size(), 3u);
    const auto& fill = std::get<RecordingSurface::Fill>(commands[0]);
    EXPECT_EQ(fill.rect, gutter.bounds());
    EXPECT_EQ(fill.color, Color::forKey(Defaults::Key::Color::lineNumberBackground));
    const auto& separator = std::get<RecordingSurface::Line>(commands[1]);
    EXPECT_EQ(separator.from, (Point{15 - 0.5, 0}));
    EXPECT_EQ(separator.to, (Point{15 - 0.5, 140}));
    EXPECT_EQ(separator.lineWidth, 1.0);
    const auto& number = std::get<TextRun>(commands[2]);
    EXPECT_EQ(number.text, "1");
    EXPECT_EQ(number.frame, (Rect{{1, 4}, {10, 12}}));
    EXPECT_EQ(number.alignment, TextAlignment::right);
    EXPECT_EQ(number.font.fontName(), "Menlo-Regular");
    EXPECT_EQ(number.fontSize, 11);
    EXPECT_EQ(number.color, Color::darkGray());
    EXPECT_EQ(number.contentsScale, 2.0);
}

TEST_F(Drawing, TrailingTerminatorNumbersTheEmptyLastLine) {
    setUpGutter(u"a\nb\r\n");
    waitForObservation();
    EXPECT_EQ(gutter.lineLocationArray().toVector(), (std::vector<int64_t>{0, 2, marker}));
    gutter.updateLayer(surface);
    const std::vector<TextRun> runs = surface.texts();
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[2].text, "3");
    EXPECT_EQ(runs[2].frame.minY(), 2 * lineHeight + 4);
}

TEST_F(Drawing, OnlyVisibleLinesAndTheFirstOnePastThem) {
    setUpGutter(numberedText(100));
    waitForObservation();
    scrollView->scrollTo(20 * lineHeight);
    const std::vector<std::string> numbers = drawnNumbers();
    std::vector<std::string> expected;
    for (int line = 21; line <= 31; ++line)
        expected.push_back(std::to_string(line));
    EXPECT_EQ(numbers, expected);
    EXPECT_EQ(surface.texts().front().frame.minY(), 4);

    // A gutter taller than the visible text (a scroller below it) looks one line further up.
    gutter.setBounds({{0, 0}, {gutter.bounds().width(), 11 * lineHeight}});
    const std::vector<std::string> taller = drawnNumbers();
    EXPECT_EQ(taller.front(), "20");
    EXPECT_EQ(taller.back(), "31");
    EXPECT_EQ(surface.texts().front().frame.minY(), 4);
}

TEST_F(Drawing, NumbersOutsideTheDamagedRegionAreSkippedAndScaleDoubles) {
    setUpGutter(numberedText(10));
    waitForObservation();
    RecordingSurface sharp(2.0);
    sharp.setDirtyRect(Rect{{0, 20}, {30, 10}});
    gutter.updateLayer(sharp);
    const std::vector<TextRun> runs = sharp.texts();
    ASSERT_EQ(runs.size(), 1u);  // "2" spans y 18 to 30
    EXPECT_EQ(runs[0].text, "2");
    EXPECT_EQ(runs[0].contentsScale, 4.0);
    EXPECT_EQ(sharp.commands().size(), 3u);
}

TEST_F(Drawing, NothingWithoutDocumentViewLayoutOrTextStorage) {
    setUpGutter(u"a\nb");
    waitForObservation();
    scrollView->showsDocumentView = false;
    gutter.updateLayer(surface);
    EXPECT_TRUE(surface.commands().empty());
    scrollView->showsDocumentView = true;
    scrollView->hasLayout = false;
    gutter.updateLayer(surface);
    EXPECT_TRUE(surface.commands().empty());

    scrollView->hasLayout = true;
    textView.reset();  // the text view takes its text storage along
    gutter.updateLineIndexes();
    EXPECT_EQ(gutter.lineLocationArray().toVector(), (std::vector<int64_t>{0, 2}));
    gutter.updateLayer(surface);
    gutter.mouseDown({5, 5});
    EXPECT_TRUE(surface.commands().empty());
}

using Observation = GutterTest;

TEST_F(Observation, ScrollingRedrawsOnlyOnceObservationBegan) {
    setUpGutter(numberedText(40));
    RunLoop::main().runOnce(std::chrono::milliseconds(0));
    gutter.setNeedsDisplay(false);
    scrollView->scrollTo(lineHeight);
    EXPECT_FALSE(gutter.needsDisplay());
    waitForObservation();
    gutter.setNeedsDisplay(false);
    scrollView->scrollTo(2 * lineHeight);
    EXPECT_TRUE(gutter.needsDisplay());
}

TEST_F(Observation, FindBarChangedCountsOnlyFromTheDelegate) {
    setUpGutter(u"a");
    waitForObservation();
    gutter.setNeedsDisplay(false);
    const HostWindow other;
    Notifications().post(NotificationName::findBarChanged(), &other);
    Notifications().post(NotificationName::findBarChanged());
    EXPECT_FALSE(gutter.needsDisplay());
    Notifications().post(NotificationName::findBarChanged(), delegate.get());
    EXPECT_TRUE(gutter.needsDisplay());
}

TEST_F(Observation, ThemeAndColourChangesRefreshTheColours) {
    setUpGutter(u"a");
    waitForObservation();
    store->setObject("LineNumberTextColour", PlistArray{1.0, 0.0, 0.0, 1.0});
    store->setObject("LineNumberBackgroundColour", PlistArray{0.0, 0.0, 1.0, 1.0});
    gutter.updateLayer(surface);
    EXPECT_EQ(surface.texts().front().color, Color::darkGray());
    Notifications().post(NotificationName::themeChanged());
    gutter.updateLayer(surface);
    EXPECT_EQ(surface.texts().front().color, Color::withRed(1, 0, 0, 1));
    EXPECT_EQ(std::get<RecordingSurface::Fill>(surface.commands().front()).color,
              Color::withRed(0, 0, 1, 1));
    store->setObject("LineNumberTextColour", PlistArray{0.0, 1.0, 0.0, 1.0});
    Notifications().post(NotificationName::lineNumberColorsChanged());
    gutter.updateLayer(surface);
    EXPECT_EQ(surface.texts().front().color, Color::withRed(0, 1, 0, 1));
}

TEST_F(Observation, GoneCollaboratorsAndAGutterGoneFirstAreQuiet) {
    {
        LineNumberView shortLived;
        textView = std::make_shared<QuodTextView>(u"a\nb");
        scrollView = std::make_shared<TestScrollView>(textView, 140);
        shortLived.setUpWithTextStorage(storage(), scrollView, delegate);
    }
    setUpGutter(u"a\nb");
    textView.reset();
    scrollView.reset();
    delegate.reset();
    waitForObservation();
    EXPECT_TRUE(gutter.lineLocationArray().empty());
    gutter.updateLayer(surface);
    EXPECT_TRUE(surface.commands().empty());
    Notifications().post(NotificationName::themeChanged());
    gutter.mouseDown({5, 5});
}

using MouseSelection = GutterTest;

TEST_F(MouseSelection, ClickSelectsTheWholeLineUnderThePointer) {
    setUpGutter(u"one\ntwo\r\nthree\n");
    waitForObservation();
    gutter.mouseDown({3, 1 * lineHeight + 5});
    EXPECT_EQ(textView->selectedRange(), (Range{4, 5}));
    EXPECT_EQ(gutter.startSelectionRange(), (Range{4, 5}));
    scrollView->scrollTo(2 * lineHeight);
    gutter.mouseDown({3, 5});
    EXPECT_EQ(textView->selectedRange(), (Range{9, 6}));
}

TEST_F(MouseSelection, DraggingUpOrDownSelectsEveryLineBetween) {
    setUpGutter(numberedText(10));
    waitForObservation();
    // Before any click a drag starts at the top.
    EXPECT_EQ(gutter.startSelectionRange(), (Range{0, 0}));
    gutter.mouseDragged({3, 1 * lineHeight + 5});
    EXPECT_EQ(textView->selectedRange(), (Range{0, 14}));

    gutter.mouseDown({3, 4 * lineHeight + 5});
    gutter.mouseDragged({3, 1 * lineHeight + 5});
    EXPECT_EQ(textView->selectedRange(), (Range{7, 4 * 7}));  // lines 2 to 5
    gutter.mouseDragged({3, 7 * lineHeight + 5});
    EXPECT_EQ(textView->selectedRange(), (Range{4 * 7, 4 * 7}));  // lines 5 to 8
}

TEST_F(MouseSelection, OutsideTheTextSelectsTheNearestLineOrNothing) {
    setUpGutter(u"one\ntwo");
    waitForObservation();
    gutter.mouseDown({3, 900});
    EXPECT_EQ(textView->selectedRange(), (Range{4, 3}));
    gutter.mouseDown({3, -900});
    EXPECT_EQ(textView->selectedRange(), (Range{0, 4}));
    gutter.mouseDown({3, std::nan("")});
    EXPECT_EQ(textView->selectedRange(), (Range{0, 4}));

    // The lines the drag started on vanished: the selection stays inside the text.
    gutter.mouseDown({3, 5 + lineHeight});
    textView->replaceCharacters({0, 7}, u"x");
    gutter.mouseDragged({3, 5});
    EXPECT_EQ(textView->selectedRange(), (Range{0, 1}));
}

}  // namespace
}  // namespace quod::testing
