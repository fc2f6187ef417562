// A Qt widget that shows and edits a core QuodTextView.
//
// The core view stays the single source of text, selection and undo: every key, click, paste and
// input-method commit becomes a selection change or a `replaceWithUndo` on it, so its change
// protocol, undo grouping and observers see exactly what a `Text` command would. The widget only
// keeps what the core has no notion of: which end of the selection moves (the anchor), the column
// that Up and Down aim for, an input method's uncommitted text, and laid-out lines.
//
// Lines never wrap and all have the height of the font, so the line at a y position and the y of
// a line are arithmetic, and the core's line index turns lines into positions in O(log lines).
// Only visible lines are laid out (QTextLayout, one per line) and kept in a small cache that every
// edit clears; nothing walks the text, so a 100 MB document opens and scrolls like a small one.
// Lines longer than `longLineLimit` units are shown cut there: laying out megabytes of one line
// would stall every repaint, and such lines are data, not prose.
//
// The core's alert, scroll and find-indicator signals become QApplication::beep(), scrolling and a
// brief highlight. Accessibility events are sent only while an assistive client is listening.
#pragma once

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QColor>
#include <QTimer>
#include <cstdint>
#include <memory>
#include <unordered_map>

#include "quoddle/Export.h"
#include "quoddle/base/Signal.h"
#include "quoddle/text/QuodTextView.h"

class QTextLayout;

namespace quod {

class QUODDLE_EXPORT TextViewWidget : public QAbstractScrollArea {
    Q_OBJECT

  public:
    static constexpr int64_t longLineLimit = 20'000;

    explicit TextViewWidget(std::shared_ptr<QuodTextView> view, QWidget* parent = nullptr);
    ~TextViewWidget() override;

    [[nodiscard]] QuodTextView& textView() { return *view_; }
    [[nodiscard]] const std::shared_ptr<QuodTextView>& sharedTextView() const { return view_; }
    // Shows another document (the widget forgets the old one's layout and scroll position).
    void setTextView(std::shared_ptr<QuodTextView> view);

    // Colours of the text area; the palette's base, text and highlight colours until set.
    void setTextColor(const QColor& color);
    void setBackgroundColor(const QColor& color);
    [[nodiscard]] QColor textColor() const;
    [[nodiscard]] QColor backgroundColor() const;

    // Tab stops every `columns` spaces of the font.
    void setTabWidth(int columns);
    [[nodiscard]] int tabWidth() const { return tabColumns_; }

    // --- Geometry, in viewport coordinates (the gutter and tests use these) ---
    [[nodiscard]] qreal lineHeight() const { return lineHeight_; }
    [[nodiscard]] qreal textInsetX() const { return textInset_; }
    // The rectangle of a line (0-based) in viewport coordinates; lines may lie outside the
    // viewport.
    [[nodiscard]] QRectF lineRect(int64_t line) const;
    // The nearest text position to a viewport point (outside the text: its first or last line).
    [[nodiscard]] int64_t positionAt(QPointF viewportPoint) const;
    [[nodiscard]] QRectF caretRect() const;
    // The first line that shows in the viewport, and how many lines fit it (the last may be cut).
    [[nodiscard]] int64_t firstVisibleLine() const;
    [[nodiscard]] int64_t visibleLineCount() const;
    // The document y of the viewport's top edge (the content view's bounds origin).
    [[nodiscard]] qreal scrollOffsetY() const;

    // Scrolls just enough to show the line and column of a position.
    void ensurePositionVisible(int64_t position);
    // The range briefly highlighted by the core's find indicator (empty when none).
    [[nodiscard]] Range findIndicatorRange() const { return findIndicator_; }

  Q_SIGNALS:
    // The visible part of the document moved or resized: a gutter beside it redraws.
    void visibleAreaChanged();
    // `setTextView` put another document in the widget (visibleAreaChanged follows).
    void textViewChanged();
    // The text changed (after the core's textDidChange).
    void textChanged();
    void selectionChanged();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool focusNextPrevChild(bool next) override;

  private:
    enum class Granularity { character, word, paragraph };

    void connectToView();
    void fontChanged();
    void updateScrollBars();
    void clearLayouts();
    QTextLayout& layoutOfLine(int64_t line) const;
    QString lineText(int64_t line) const;
    int64_t lineContentsEnd(int64_t line) const;

    // Selection handling: the anchor stays, the caret moves.
    [[nodiscard]] int64_t caret() const { return caret_; }
    void moveCaret(int64_t position, bool extend);
    void setAnchorAndCaret(int64_t anchor, int64_t caret);
    void selectionChangedInCore(Range range);
    int64_t nextCursorPosition(int64_t position, bool byWord) const;
    int64_t previousCursorPosition(int64_t position, bool byWord) const;
    int64_t positionOnNeighbourLine(int64_t position, int64_t lineDelta);
    Range rangeForGranularity(int64_t position, Granularity granularity) const;
    void extendSelectionByMouse(int64_t position);

    // Edits, all through the core.
    void insertText(const QString& text);
    void deleteBackward();
    void deleteForward();
    void copy() const;
    void cut();
    void paste();
    bool handleStandardKey(QKeyEvent* event);

    void restartCaretBlink();
    void showFindIndicator(Range range);
    void notifyAccessibility();

    std::shared_ptr<QuodTextView> view_;
    std::vector<Connection> connections_;

    qreal lineHeight_ = 16;
    qreal ascent_ = 12;
    qreal textInset_ = 4;
    qreal widestLine_ = 0;
    int tabColumns_ = 4;
    QColor textColor_;
    QColor backgroundColor_;
    bool ownTextColor_ = false;
    bool ownBackgroundColor_ = false;

    mutable std::unordered_map<int64_t, std::unique_ptr<QTextLayout>> layouts_;

    int64_t anchor_ = 0;
    int64_t caret_ = 0;
    qreal desiredX_ = -1;  // the column Up and Down aim for; negative when unset
    bool changingSelection_ = false;

    Granularity mouseGranularity_ = Granularity::character;
    Range mouseAnchorRange_{0, 0};
    bool mouseSelecting_ = false;
    QTimer tripleClickTimer_;
    QPointF doubleClickPoint_;

    QString preedit_;
    int preeditCursor_ = 0;

    QBasicTimer caretBlink_;
    bool caretShown_ = true;

    Range findIndicator_{0, 0};
    QTimer findIndicatorTimer_;
};

}  // namespace quod
