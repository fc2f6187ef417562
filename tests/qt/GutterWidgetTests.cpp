#include <QApplication>
#include <QFontMetricsF>
#include <QImage>
#include <QMouseEvent>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QWindow>
#include <cmath>

#include "quoddle/gutter/LineNumberAttributes.h"
#include "quoddle/gutter/RecordingSurface.h"
#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/qt/EditorPane.h"
#include "quoddle/qt/GutterWidget.h"
#include "quoddle/qt/MainLoopBridge.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/qt/TextViewWidget.h"
#include "quoddle/runtime/NotificationCenter.h"

using namespace quod;

namespace {

// `count` lines "line N", each with a terminator when `terminated`, else all but the last.
std::u16string numberedText(int count, bool terminated = false) {
    std::u16string text;
    for (int line = 1; line <= count; ++line) {
        text += u"line " + QString::number(line).toStdU16String();
        if (terminated || line < count) text += u'\n';
    }
    return text;
}

// A shown editor pane over a new document, with the gutter's line index built.
struct Pane {
    std::shared_ptr<QuodTextView> view;
    EditorPane pane;

    explicit Pane(std::u16string_view text, QSize size = {500, 300})
        : view(std::make_shared<QuodTextView>(text)), pane(view) {
        pane.resize(size);
        pane.show();
        QApplication::setActiveWindow(&pane);
        QVERIFY(QTest::qWaitForWindowExposed(&pane));
        // The core starts following the text 0.3 s after set-up, on the bridged main loop.
        QTRY_VERIFY(!gutter().lineNumberView().lineLocationArray().empty());
    }

    GutterWidget& gutter() { return pane.gutter(); }
    TextViewWidget& text() { return pane.textView(); }

    // The middle of a line's row in the gutter.
    QPoint gutterPointOfLine(int64_t line) {
        const QPointF inViewport(0, text().lineRect(line).center().y());
        const QPoint inPane = text().viewport()->mapTo(&pane, inViewport.toPoint());
        return {gutter().width() / 2, gutter().mapFrom(&pane, inPane).y()};
    }

    Range linesRange(int64_t first, int64_t last) {
        const TextStorage& storage = view->textStorage();
        return {storage.startOfLine(first),
                storage.rangeOfLine(last).end() - storage.startOfLine(first)};
    }

    void press(QPoint point) { QTest::mousePress(&gutter(), Qt::LeftButton, {}, point); }
    void drag(QPoint point) {
        QMouseEvent move(QEvent::MouseMove, point, gutter().mapToGlobal(point), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&gutter(), &move);
    }
    void release(QPoint point) { QTest::mouseRelease(&gutter(), Qt::LeftButton, {}, point); }

    // What the screen shows of the gutter: only what scheduled repaints put there.
    QImage shownGutter() {
        QWidget& window = *gutter().window();
        const QPoint origin = gutter().mapTo(&window, QPoint(0, 0));
        return window.windowHandle()
            ->screen()
            ->grabWindow(window.winId(), origin.x(), origin.y(), gutter().width(),
                         gutter().height())
            .toImage();
    }
};

// How many pixels of the gutter, the separator's column aside, are (or are not) `color`.
int pixelsOfColor(const QImage& image, QColor color, bool equal = true) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x + 1 < image.width(); ++x)
            count += (image.pixelColor(x, y) == color) == equal ? 1 : 0;
    }
    return count;
}

void storeColor(Defaults::Key::Color key, QColor color) {
    UserDefaults::standard()->setObject(
        key.rawValue(), PlistArray{color.redF(), color.greenF(), color.blueF(), 1.0});
}

}  // namespace

class GutterWidgetTests : public QObject {
    Q_OBJECT

    MainLoopBridge bridge_;

  private Q_SLOTS:
    void initTestCase() { UserDefaults::setStandard(UserDefaults::inMemory()); }

    void clickingAndDraggingSelectsWholeLines() {
        Pane p(numberedText(60, true));
        p.press(p.gutterPointOfLine(4));
        QCOMPARE(p.view->selectedRange(), p.linesRange(4, 4));
        QVERIFY(p.text().hasFocus());
        p.drag(p.gutterPointOfLine(1));  // upwards: from line 2 down to the clicked line 5
        QCOMPARE(p.view->selectedRange(), p.linesRange(1, 4));
        p.release(p.gutterPointOfLine(1));

        p.press(p.gutterPointOfLine(4));
        p.drag(p.gutterPointOfLine(6));
        p.drag(p.gutterPointOfLine(7));  // downwards: line 5 to line 8
        QCOMPARE(p.view->selectedRange(), p.linesRange(4, 7));
        p.release(p.gutterPointOfLine(7));

        // Scrolled, the gutter still numbers and selects the lines beside it.
        p.text().verticalScrollBar()->setValue(static_cast<int>(30 * p.text().lineHeight()));
        const int64_t top = p.text().firstVisibleLine();
        QCOMPARE(top, int64_t{30});
        p.press(p.gutterPointOfLine(top + 2));
        QCOMPARE(p.view->selectedRange(), p.linesRange(top + 2, top + 2));
        // Dragging below the text selects through the empty last line.
        p.drag({p.gutter().width() / 2, p.gutter().height() + 500});
        QCOMPARE(p.view->selectedRange(),
                 (Range{p.view->textStorage().startOfLine(top + 2),
                        p.view->length() - p.view->textStorage().startOfLine(top + 2)}));
    }

    void widensAtEachNewDigitAndNeverNarrows() {
        Pane p(numberedText(9));
        // The core measured the line-number font with Qt: "0" rounded up.
        const double digit = LineNumberAttributes::shared().digitWidth;
        QCOMPARE(digit, std::ceil(QFontMetricsF(toQFont(Defaults::lineNumberFont.get()))
                                      .horizontalAdvance(QStringLiteral("0"))));
        const auto widthFor = [digit](int digits) { return static_cast<int>(digits * digit + 8); };
        QCOMPARE(p.gutter().width(), widthFor(1));

        int lines = 9;
        // One digit too few at exact powers of ten, as the width rule has always had it.
        for (const auto& [count, digits] :
             {std::pair{10, 1}, {11, 2}, {100, 2}, {101, 3}, {1000, 3}, {1001, 4}}) {
            std::u16string added;
            for (; lines < count; ++lines)
                added += u"\nline";
            p.view->replaceWithUndo(added, {p.view->length(), 0}, false);
            QCOMPARE(p.gutter().lineNumberView().lineLocationArray().size(), int64_t{count});
            QCOMPARE(p.gutter().width(), widthFor(digits));
        }
        QTRY_COMPARE(p.text().x(), p.gutter().width());  // the text moved over

        p.view->replaceWithUndo(u"", {20, p.view->length() - 20}, false);
        QCOMPARE(p.gutter().lineNumberView().lineLocationArray().size(), int64_t{3});
        QCOMPARE(p.gutter().width(), widthFor(4));

        // Another document in the text view: the gutter numbers it, and stays as wide.
        auto other = std::make_shared<QuodTextView>(numberedText(5));
        p.text().setTextView(other);
        QTRY_COMPARE(p.gutter().lineNumberView().lineLocationArray().size(), int64_t{5});
        p.press(p.gutterPointOfLine(3));
        QCOMPARE(other->selectedRange(), (Range{21, 7}));  // "line 4\n"
        QCOMPARE(p.gutter().width(), widthFor(4));
    }

    void numbersSitBesideTheirLinesWhereverTheTextIsScrolled() {
        // A long first line brings the horizontal scroll bar, which the gutter must not count.
        Pane p(std::u16string(400, u'x') + u'\n' + numberedText(199, true));
        QVERIFY(p.text().horizontalScrollBar()->isVisible());
        const double lineHeight = p.text().lineHeight();
        const double digitHeight = LineNumberAttributes::shared().digitHeight;
        for (const int scroll :
             {0, static_cast<int>(57.5 * lineHeight), p.text().verticalScrollBar()->maximum()}) {
            p.text().verticalScrollBar()->setValue(scroll);
            RecordingSurface surface;
            p.gutter().lineNumberView().updateLayer(surface);
            const std::vector<TextRun> runs = surface.texts();
            QVERIFY(!runs.empty());
            const int64_t first = p.text().firstVisibleLine();
            QCOMPARE(runs.front().text, std::to_string(first + 1));
            for (std::size_t i = 0; i < runs.size(); ++i) {
                const int64_t line = first + static_cast<int64_t>(i);
                QCOMPARE(runs[i].text, std::to_string(line + 1));
                // Centred on the line's row of the viewport, one point up, as the core places it.
                const QRectF row = p.text().lineRect(line);
                QCOMPARE(runs[i].frame.minY(),
                         std::ceil(row.y() + (row.height() - digitHeight) * 0.5 - 1.0));
            }
            // The first line past the visible ones is numbered too (or the empty last line).
            const int64_t last = std::min<int64_t>(
                static_cast<int64_t>(
                    std::ceil((scroll + p.text().viewport()->height()) / lineHeight)),
                200);
            QCOMPARE(runs.back().text, std::to_string(last + 1));
        }
    }

    void themeFontAndColourNotificationsRepaintInTheNewLook() {
        Pane p(numberedText(3));
        const QColor background(0x30, 0x60, 0xa0);
        storeColor(Defaults::Key::Color::lineNumberBackground, background);
        Notifications().post(NotificationName::themeChanged());
        // Low in the gutter, below the three numbers: only background.
        const QPoint empty(2, p.gutter().height() - 3);
        QTRY_COMPARE(p.shownGutter().pixelColor(empty), background);
        QCOMPARE(p.gutter().grab().toImage().pixelColor(empty), background);

        const int smallNumbers = pixelsOfColor(p.shownGutter(), background, false);
        QVERIFY(smallNumbers > 0);

        const QColor ink(0x00, 0xc0, 0x00);
        QCOMPARE(pixelsOfColor(p.shownGutter(), ink), 0);
        storeColor(Defaults::Key::Color::lineNumberText, ink);
        Notifications().post(NotificationName::lineNumberColorsChanged());
        QTRY_VERIFY(pixelsOfColor(p.shownGutter(), ink) > 0);

        const int narrow = p.gutter().width();
        UserDefaults::standard()->setObject(Defaults::Key::Font::lineNumber.rawValue(),
                                            std::string("DejaVuSansMono-Bold@@@@24.00"));
        Notifications().post(NotificationName::lineNumberFontChanged());
        QVERIFY(p.gutter().width() > narrow);  // wider digits
        QTRY_COMPARE(p.text().x(), p.gutter().width());
        QTRY_VERIFY(pixelsOfColor(p.shownGutter(), background, false) > 2 * smallNumbers);
        QVERIFY(pixelsOfColor(p.shownGutter(), ink) > 0);
        UserDefaults::standard()->removeObject(Defaults::Key::Font::lineNumber.rawValue());
        Notifications().post(NotificationName::lineNumberFontChanged());
    }

    void aGutterOutlivingItsTextViewDrawsNothingAndSelectsNothing() {
        auto view = std::make_shared<QuodTextView>(numberedText(4));
        auto* text = new TextViewWidget(view);
        GutterWidget gutter(*text);
        gutter.resize(30, 100);
        delete text;
        RecordingSurface surface;
        gutter.lineNumberView().updateLayer(surface);
        QVERIFY(surface.commands().empty());
        QTest::mousePress(&gutter, Qt::LeftButton, {}, QPoint(5, 5));
        QCOMPARE(view->selectedRange(), (Range{0, 0}));
        QVERIFY(!gutter.grab().isNull());
    }
};

QTEST_MAIN(GutterWidgetTests)
#include "GutterWidgetTests.moc"
