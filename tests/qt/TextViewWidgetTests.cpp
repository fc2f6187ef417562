#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QScrollBar>
#include <QTest>

#include "quoddle/qt/StringConversion.h"
#include "quoddle/qt/TextViewWidget.h"

using quod::QuodTextView;
using quod::Range;
using quod::TextViewWidget;

namespace {

// A shown, focused widget of a fixed size over a new document.
struct Fixture {
    std::shared_ptr<QuodTextView> view;
    TextViewWidget widget;

    explicit Fixture(std::u16string_view text)
        : view(std::make_shared<QuodTextView>(text)), widget(view) {
        widget.resize(400, 300);
        widget.show();
        widget.setFocus();
        QApplication::setActiveWindow(&widget);
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
    }

    QPoint pointOf(int64_t position) {
        const int64_t line = view->textStorage().lineIndexOfPosition(position);
        const Range selection = view->selectedRange();
        view->setSelectedRange({position, 0});
        const QRectF caret = widget.caretRect();
        view->setSelectedRange(selection);
        return QPointF(caret.x() + 0.5, widget.lineRect(line).center().y()).toPoint();
    }
};

}  // namespace

class TextViewWidgetTests : public QObject {
    Q_OBJECT

  private Q_SLOTS:
    void typingAndUndoMatchTheCoreOperations() {
        Fixture f(u"");
        QTest::keyClicks(&f.widget, "ab");
        QTest::keyClick(&f.widget, Qt::Key_Return);
        QTest::keyClicks(&f.widget, "c");
        QKeyEvent accented(QEvent::KeyPress, Qt::Key_Eacute, Qt::NoModifier, QString(QChar(0xE9)));
        QApplication::sendEvent(&f.widget, &accented);
        QTest::keyClick(&f.widget, Qt::Key_Tab);

        // The same edits made directly on a core view, one replaceWithUndo each.
        QuodTextView reference;
        for (const char16_t* piece : {u"a", u"b", u"\n", u"c", u"\u00e9", u"\t"})
            reference.replaceWithUndo(piece, reference.selectedRange(), false);
        QCOMPARE(quod::toQString(f.view->string()), quod::toQString(reference.string()));
        QCOMPARE(f.view->selectedRange(), reference.selectedRange());

        for (int step = 0; step < 3; ++step) {
            QTest::keyClick(&f.widget, Qt::Key_Z, Qt::ControlModifier);
            reference.undo();
            QCOMPARE(quod::toQString(f.view->string()), quod::toQString(reference.string()));
            QCOMPARE(f.view->selectedRange(), reference.selectedRange());
        }
        QTest::keyClick(&f.widget, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        reference.redo();
        QCOMPARE(quod::toQString(f.view->string()), quod::toQString(reference.string()));
        QVERIFY(f.view->undoManager().canUndo());
    }

    void typingReplacesTheSelectionAndARefusedChangeLeavesTheText() {
        Fixture f(u"hello world");
        f.view->setSelectedRange({6, 5});
        QTest::keyClicks(&f.widget, "there");
        QCOMPARE(quod::toQString(f.view->string()), QStringLiteral("hello there"));
        QCOMPARE(f.view->selectedRange(), (Range{11, 0}));
        f.view->setEditable(false);
        QTest::keyClicks(&f.widget, "!");
        QTest::keyClick(&f.widget, Qt::Key_Backspace);
        QCOMPARE(quod::toQString(f.view->string()), QStringLiteral("hello there"));
    }

    void backspaceAndDeleteTakeWholeClustersAndWholeLineEnds() {
        Fixture f(u"ae\u0301\r\nb");
        f.view->setSelectedRange({5, 0});  // after CR LF
        QTest::keyClick(&f.widget, Qt::Key_Backspace);
        QCOMPARE(quod::toQString(f.view->string()), quod::toQString(u"ae\u0301b"));
        QTest::keyClick(&f.widget, Qt::Key_Backspace);
        QCOMPARE(quod::toQString(f.view->string()), QStringLiteral("ab"));
        QTest::keyClick(&f.widget, Qt::Key_Delete);
        QCOMPARE(quod::toQString(f.view->string()), QStringLiteral("a"));
        QTest::keyClick(&f.widget, Qt::Key_Delete);  // at the end: nothing, no undo step
        QCOMPARE(quod::toQString(f.view->string()), QStringLiteral("a"));
        QCOMPARE(f.view->undoManager().undoStepCount(), 3);
    }

    void keyboardSelectionExtendsFromTheAnchor() {
        Fixture f(u"one two\r\nthree\nfour");
        f.view->setSelectedRange({4, 0});
        QTest::keyClick(&f.widget, Qt::Key_Right, Qt::ShiftModifier);
        QTest::keyClick(&f.widget, Qt::Key_End, Qt::ShiftModifier);
        QCOMPARE(f.view->selectedRange(), (Range{4, 3}));
        QTest::keyClick(&f.widget, Qt::Key_Right, Qt::ShiftModifier);  // CR LF is one step
        QCOMPARE(f.view->selectedRange(), (Range{4, 5}));
        QTest::keyClick(&f.widget, Qt::Key_Left, Qt::ShiftModifier);
        QTest::keyClick(&f.widget, Qt::Key_Home, Qt::ShiftModifier);  // caret passes the anchor
        QCOMPARE(f.view->selectedRange(), (Range{0, 4}));
        QTest::keyClick(&f.widget, Qt::Key_Right);  // collapses to the selection's end
        QCOMPARE(f.view->selectedRange(), (Range{4, 0}));
        QTest::keyClick(&f.widget, Qt::Key_Down);
        QTest::keyClick(&f.widget, Qt::Key_Down);
        QCOMPARE(f.view->selectedRange(), (Range{19, 0}));          // "four" is shorter: its end
        QTest::keyClick(&f.widget, Qt::Key_Up, Qt::ShiftModifier);  // the column is remembered
        QCOMPARE(f.view->selectedRange(), (Range{13, 6}));
        QTest::keyClick(&f.widget, Qt::Key_End, Qt::ControlModifier | Qt::ShiftModifier);
        QTest::keyClick(&f.widget, Qt::Key_Home, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(f.view->selectedRange(), (Range{0, 19}));  // the anchor stayed at 19
        QTest::keyClick(&f.widget, Qt::Key_Right, Qt::ControlModifier);
        QVERIFY(f.view->selectedRange().location > 0);
        QVERIFY(f.view->selectedRange().location <= 4);
    }

    void mouseClickDoubleClickAndDragSelect() {
        Fixture f(u"alpha beta\ngamma delta\nepsilon\n");
        QTest::mouseClick(f.widget.viewport(), Qt::LeftButton, {}, f.pointOf(13));
        QCOMPARE(f.view->selectedRange(), (Range{13, 0}));
        QTest::mouseDClick(f.widget.viewport(), Qt::LeftButton, {}, f.pointOf(7));
        QCOMPARE(f.view->selectedRange(), (Range{6, 4}));  // "beta"

        const QPoint from = f.pointOf(2);
        const QPoint to = f.pointOf(25);
        QTest::mousePress(f.widget.viewport(), Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, f.widget.viewport()->mapToGlobal(to), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(f.widget.viewport(), &move);
        QTest::mouseRelease(f.widget.viewport(), Qt::LeftButton, {}, to);
        QCOMPARE(f.view->selectedRange(), (Range{2, 23}));

        // Far below the text: the end of the last line, never an invalid position.
        QTest::mouseClick(f.widget.viewport(), Qt::LeftButton, {}, QPoint(390, 290));
        QCOMPARE(f.view->selectedRange(), (Range{31, 0}));
        QTest::mouseClick(f.widget.viewport(), Qt::LeftButton, Qt::ShiftModifier, f.pointOf(20));
        QCOMPARE(f.view->selectedRange(), (Range{20, 11}));
    }

    void tripleClickSelectsTheParagraph() {
        Fixture f(u"alpha beta\ngamma delta\n");
        const QPoint point = f.pointOf(14);
        QTest::mouseDClick(f.widget.viewport(), Qt::LeftButton, {}, point);
        QTest::mousePress(f.widget.viewport(), Qt::LeftButton, {}, point);
        QTest::mouseRelease(f.widget.viewport(), Qt::LeftButton, {}, point);
        QCOMPARE(f.view->selectedRange(), (Range{11, 12}));
    }

    void clipboardRoundTrip() {
        Fixture f(u"copy me");
        f.view->setSelectedRange({0, 4});
        QTest::keyClick(&f.widget, Qt::Key_X, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("copy"));
        QCOMPARE(quod::toQString(f.view->string()), QStringLiteral(" me"));
        QTest::keyClick(&f.widget, Qt::Key_End);
        QTest::keyClick(&f.widget, Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(quod::toQString(f.view->string()), QStringLiteral(" mecopy"));
        QTest::keyClick(&f.widget, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(f.view->selectedRange(), (Range{0, 7}));
    }

    void inputMethodCommitsThroughTheCore() {
        Fixture f(u"ab");
        f.view->setSelectedRange({1, 0});
        QInputMethodEvent preedit(QStringLiteral("e"), {});
        QApplication::sendEvent(&f.widget, &preedit);
        QCOMPARE(quod::toQString(f.view->string()), QStringLiteral("ab"));  // not yet committed
        QInputMethodEvent commit;
        commit.setCommitString(QString::fromUtf8("\u00e9"));
        QApplication::sendEvent(&f.widget, &commit);
        QCOMPARE(quod::toQString(f.view->string()), QString::fromUtf8("a\u00e9b"));
        QCOMPARE(f.view->selectedRange(), (Range{2, 0}));
        QCOMPARE(static_cast<QWidget&>(f.widget).inputMethodQuery(Qt::ImCursorPosition).toInt(), 2);
    }

    void coreRequestsScrollAndHighlight() {
        std::u16string text;
        for (int i = 0; i < 5000; ++i)
            text += u"line\n";
        Fixture f(text);
        f.view->selectLineNumber(4000);
        QVERIFY(f.widget.firstVisibleLine() <= 3999);
        QVERIFY(f.widget.firstVisibleLine() + f.widget.visibleLineCount() >= 3999);
        QCOMPARE(f.widget.findIndicatorRange().location, int64_t{3999 * 5});
        QTRY_COMPARE_WITH_TIMEOUT(f.widget.findIndicatorRange().length, int64_t{0}, 3000);

        // Editing far down does not move the view back to the top.
        const int scrolled = f.widget.verticalScrollBar()->value();
        QTest::keyClicks(&f.widget, "x");
        QCOMPARE(f.widget.verticalScrollBar()->value(), scrolled);
    }
};

QTEST_MAIN(TextViewWidgetTests)
#include "TextViewWidgetTests.moc"
