// A gutter beside a real QuodTextView in a scroll view of fixed size, laid out in 14-point lines
// with a top inset of 4, drawn on a recording surface. Fonts measure 0.55 em wide and 1 point
// more than their size high, so the fallback Menlo 11 gives digits 7 wide and 12 high: with a line
// height of 14, the number of 0-based line k sits at y = 14k + 4 - scroll position.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "quoddle/gutter/FontMetrics.h"
#include "quoddle/gutter/LineNumberView.h"
#include "quoddle/gutter/PlainScrollView.h"
#include "quoddle/gutter/RecordingSurface.h"
#include "quoddle/runtime/RunLoop.h"
#include "tests/preferences/PreferencesTestSupport.h"

namespace quod::testing {

class ProportionalMetrics : public FontMetrics {
  public:
    Size sizeOfString(std::string_view text, const Font& font) const override {
        return {0.55 * font.pointSize() * static_cast<double>(text.size()), font.pointSize() + 1};
    }
};

inline constexpr double lineHeight = 14;
inline constexpr double insetHeight = 4;
inline constexpr double textWidth = 500;

// A plain scroll view whose document view or layout a test can take away.
class TestScrollView : public PlainScrollView {
  public:
    TestScrollView(const std::shared_ptr<QuodTextView>& textView, double visibleHeight)
        : PlainScrollView(textView,
                          {.lineHeight = lineHeight, .textContainerInset = {0, insetHeight}},
                          {textWidth, visibleHeight}) {}

    QuodTextView* documentView() const override {
        return showsDocumentView ? PlainScrollView::documentView() : nullptr;
    }
    TextLayout* textLayout() const override {
        return hasLayout ? PlainScrollView::textLayout() : nullptr;
    }
    void scrollTo(double y) { PlainScrollView::scrollTo({0, y}); }

    bool showsDocumentView = true;
    bool hasLayout = true;
};

// Something else first, so that the delegate's address differs from its LineNumberProtocol part.
struct HostWindow {
    virtual ~HostWindow() = default;
    int tag = 0;
};

struct WidthDelegate : HostWindow, LineNumberProtocol {
    void lineNumberViewNeedsWidth(LineNumberView& view, double width) override {
        widths.push_back(width);
        Rect bounds = view.bounds();
        bounds.size.width = width;
        view.setBounds(bounds);
    }
    std::vector<double> widths;
};

// `count` lines "line N" of 6 units, the last one without a terminator: line N starts at 7(N-1).
inline std::u16string numberedText(int count) {
    std::u16string text;
    for (int line = 1; line <= count; ++line) {
        text += u"line ";
        text += static_cast<char16_t>(u'0' + line % 10);
        if (line < count) text += u'\n';
    }
    return text;
}

class GutterTest : public PreferencesTest {
  protected:
    void SetUp() override {
        PreferencesTest::SetUp();
        FontMetrics::install(std::make_shared<ProportionalMetrics>());
    }

    // Sets the gutter up beside `text`; the gutter is exactly as tall as the visible text.
    void setUpGutter(std::u16string_view text, double visibleHeight = 10 * lineHeight) {
        textView = std::make_shared<QuodTextView>(text);
        scrollView = std::make_shared<TestScrollView>(textView, visibleHeight);
        gutter.setBounds({{0, 0}, {0, visibleHeight}});
        gutter.setUpWithTextStorage(storage(), scrollView, delegate);
    }

    // Runs the main loop past the gutter's 0.3-second start of observation.
    static void waitForObservation() {
        RunLoop::main().runUntil([] { return false; }, std::chrono::milliseconds(350));
    }

    std::shared_ptr<TextStorage> storage() const { return {textView, &textView->textStorage()}; }

    // Draws a frame and answers the numbers drawn.
    std::vector<std::string> drawnNumbers() {
        gutter.updateLayer(surface);
        std::vector<std::string> numbers;
        for (const TextRun& run : surface.texts())
            numbers.push_back(run.text);
        return numbers;
    }

    std::shared_ptr<QuodTextView> textView;
    std::shared_ptr<TestScrollView> scrollView;
    std::shared_ptr<WidthDelegate> delegate = std::make_shared<WidthDelegate>();
    LineNumberView gutter;
    RecordingSurface surface;
};

}  // namespace quod::testing
