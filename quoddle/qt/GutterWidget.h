// The line-number gutter beside a TextViewWidget: a thin widget around the core's LineNumberView.
//
// The core decides everything (line index, width, what to draw, which lines a click selects); the
// widget gives it real surroundings:
//   - geometry: the text view as the scroll view (TextViewScrollGeometry) and its layout
//     (TextViewLayout); the gutter's y = 0 is the text viewport's top edge, so place it level with
//     the viewport and as tall as it (EditorPane does);
//   - width: when the core asks for more room the widget takes it (setFixedWidth, rounded up) and
//     tells the core its new bounds; it never asks to get narrower;
//   - drawing: each `displayNeeded` of the core schedules a repaint, and each paint event runs the
//     core's drawing plan on a QPainterSurface;
//   - mouse: presses and drags of the left button go to the core, in gutter coordinates, and the
//     text view gets the focus, so what was selected can be copied at once;
//   - looks: the core follows "ThemeChanged", "LineNumberFontChanged" and
//     "LineNumberColorsChanged" itself and asks for a repaint. A new application palette alone
//     changes nothing here: once set up, every colour of the gutter is a theme colour or fixed,
//     none a system colour, so a host that picks themes by appearance posts "ThemeChanged".
// Making a gutter installs QtPlatform (fonts, metrics, colours). The core starts following edits
// and scrolling 0.3 seconds after set-up, on RunLoop::main(), so the application must drive that
// loop (MainLoopBridge). When the text view shows another document the gutter sets itself up for
// it again. Main thread only; the gutter may outlive the text view, and then draws nothing.
#pragma once

#include <QPointer>
#include <QWidget>
#include <memory>

#include "quoddle/Export.h"
#include "quoddle/base/Signal.h"
#include "quoddle/gutter/LineNumberView.h"

namespace quod {

class TextViewWidget;
class TextViewScrollGeometry;

class QUODDLE_EXPORT GutterWidget : public QWidget {
    Q_OBJECT

  public:
    explicit GutterWidget(TextViewWidget& textView, QWidget* parent = nullptr);
    ~GutterWidget() override;

    [[nodiscard]] LineNumberView& lineNumberView() { return lineNumberView_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

  private:
    void setUp();
    void widen(double width);

    QPointer<TextViewWidget> textView_;
    std::shared_ptr<TextViewScrollGeometry> scrollGeometry_;
    // The core holds its delegate weakly, and a widget belongs to its Qt parent: a small shared
    // object stands in for the widget.
    std::shared_ptr<LineNumberProtocol> delegate_;
    LineNumberView lineNumberView_;
    Connection displayObserver_;
};

}  // namespace quod
