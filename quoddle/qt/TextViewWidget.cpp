#include "quoddle/qt/TextViewWidget.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QStyleHints>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

#include "quoddle/qt/StringConversion.h"

namespace quod {
namespace {

// Keeps the scroll bars' int range safe for documents of tens of millions of lines.
int clampToInt(qreal value) {
    return static_cast<int>(std::clamp<qreal>(value, 0, std::numeric_limits<int>::max()));
}

}  // namespace

TextViewWidget::TextViewWidget(std::shared_ptr<QuodTextView> view, QWidget* parent)
    : QAbstractScrollArea(parent), view_(std::move(view)) {
    setAttribute(Qt::WA_InputMethodEnabled);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setCursor(Qt::IBeamCursor);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    setFont(fixed);
    tripleClickTimer_.setSingleShot(true);
    findIndicatorTimer_.setSingleShot(true);
    connect(&findIndicatorTimer_, &QTimer::timeout, this, [this] {
        findIndicator_ = {0, 0};
        viewport()->update();
    });
    fontChanged();
    connectToView();
}

TextViewWidget::~TextViewWidget() = default;

void TextViewWidget::setTextView(std::shared_ptr<QuodTextView> view) {
    connections_.clear();
    view_ = std::move(view);
    widestLine_ = 0;
    clearLayouts();
    connectToView();
    verticalScrollBar()->setValue(0);
    horizontalScrollBar()->setValue(0);
    viewport()->update();
    Q_EMIT textViewChanged();
    Q_EMIT visibleAreaChanged();
}

void TextViewWidget::connectToView() {
    const Range selection = view_->selectedRange();
    anchor_ = selection.location;
    caret_ = selection.location + selection.length;
    connections_.push_back(view_->textStorage().didProcessEditing.connect(
        [this](const TextStorageEdit&) { clearLayouts(); }));
    connections_.push_back(view_->textDidChange.connect([this] {
        updateScrollBars();
        viewport()->update();
        notifyAccessibility();
        Q_EMIT textChanged();
    }));
    connections_.push_back(
        view_->selectionDidChange.connect([this](Range range) { selectionChangedInCore(range); }));
    connections_.push_back(view_->scrollRangeToVisibleRequested.connect(
        [this](Range range) { ensurePositionVisible(range.location); }));
    connections_.push_back(
        view_->findIndicatorRequested.connect([this](Range range) { showFindIndicator(range); }));
    connections_.push_back(view_->alertRequested.connect([] { QApplication::beep(); }));
    updateScrollBars();
}

void TextViewWidget::setTextColor(const QColor& color) {
    textColor_ = color;
    ownTextColor_ = true;
    viewport()->update();
}

void TextViewWidget::setBackgroundColor(const QColor& color) {
    backgroundColor_ = color;
    ownBackgroundColor_ = true;
    viewport()->update();
}

QColor TextViewWidget::textColor() const {
    return ownTextColor_ ? textColor_ : palette().color(QPalette::Text);
}

QColor TextViewWidget::backgroundColor() const {
    return ownBackgroundColor_ ? backgroundColor_ : palette().color(QPalette::Base);
}

void TextViewWidget::setTabWidth(int columns) {
    tabColumns_ = std::max(1, columns);
    clearLayouts();
    viewport()->update();
}

void TextViewWidget::fontChanged() {
    const QFontMetricsF metrics(font());
    lineHeight_ = std::ceil(metrics.height());
    ascent_ = metrics.ascent();
    widestLine_ = 0;
    clearLayouts();
    updateScrollBars();
    viewport()->update();
    Q_EMIT visibleAreaChanged();
}

void TextViewWidget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange) fontChanged();
    if (event->type() == QEvent::PaletteChange) viewport()->update();
    QAbstractScrollArea::changeEvent(event);
}

void TextViewWidget::clearLayouts() {
    layouts_.clear();
}

// --- Geometry ---

void TextViewWidget::updateScrollBars() {
    const qreal contentHeight = lineHeight_ * static_cast<qreal>(view_->textStorage().lineCount());
    const int pageHeight = viewport()->height();
    verticalScrollBar()->setPageStep(pageHeight);
    verticalScrollBar()->setSingleStep(static_cast<int>(lineHeight_));
    verticalScrollBar()->setRange(0, clampToInt(contentHeight - pageHeight + lineHeight_ / 2));
    const int pageWidth = viewport()->width();
    horizontalScrollBar()->setPageStep(pageWidth);
    horizontalScrollBar()->setSingleStep(static_cast<int>(lineHeight_));
    horizontalScrollBar()->setRange(0, clampToInt(widestLine_ + 2 * textInset_ - pageWidth));
}

qreal TextViewWidget::scrollOffsetY() const {
    return verticalScrollBar()->value();
}

int64_t TextViewWidget::firstVisibleLine() const {
    const auto line = static_cast<int64_t>(scrollOffsetY() / lineHeight_);
    return std::clamp<int64_t>(line, 0, view_->textStorage().lineCount() - 1);
}

int64_t TextViewWidget::visibleLineCount() const {
    return static_cast<int64_t>(std::ceil(viewport()->height() / lineHeight_)) + 1;
}

QRectF TextViewWidget::lineRect(int64_t line) const {
    const qreal y = static_cast<qreal>(line) * lineHeight_ - scrollOffsetY();
    return {0, y, static_cast<qreal>(viewport()->width()), lineHeight_};
}

QString TextViewWidget::lineText(int64_t line) const {
    const TextStorage& storage = view_->textStorage();
    const int64_t start = storage.startOfLine(line);
    const int64_t length = std::min(lineContentsEnd(line) - start, longLineLimit);
    return toQString(storage.substringWithRange({start, length}));
}

int64_t TextViewWidget::lineContentsEnd(int64_t line) const {
    int64_t contentsEnd = 0;
    const TextStorage& storage = view_->textStorage();
    storage.getLineStart(nullptr, nullptr, &contentsEnd, {storage.startOfLine(line), 0});
    return contentsEnd;
}

QTextLayout& TextViewWidget::layoutOfLine(int64_t line) const {
    const int64_t caretLine = view_->textStorage().lineIndexOfPosition(caret_);
    const bool withPreedit = !preedit_.isEmpty() && line == caretLine;
    auto found = layouts_.find(line);
    if (found != layouts_.end() && !withPreedit) return *found->second;
    if (layouts_.size() > 1024) layouts_.clear();  // a screenful or two is all that pays off

    auto layout = std::make_unique<QTextLayout>(lineText(line), font());
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    option.setTabStopDistance(QFontMetricsF(font()).horizontalAdvance(QLatin1Char(' ')) *
                              tabColumns_);
    layout->setTextOption(option);
    layout->setCacheEnabled(true);
    if (withPreedit) {
        const int64_t offset = caret_ - view_->textStorage().startOfLine(line);
        layout->setPreeditArea(static_cast<int>(std::min(offset, longLineLimit)), preedit_);
    }
    layout->beginLayout();
    QTextLine textLine = layout->createLine();
    if (textLine.isValid()) textLine.setPosition({0, 0});
    layout->endLayout();
    const qreal width = textLine.isValid() ? textLine.naturalTextWidth() : 0;
    if (width > widestLine_) {
        const_cast<TextViewWidget*>(this)->widestLine_ = width;
        QMetaObject::invokeMethod(const_cast<TextViewWidget*>(this),
                                  &TextViewWidget::updateScrollBars, Qt::QueuedConnection);
    }
    QTextLayout& result = *layout;
    layouts_[line] = std::move(layout);
    return result;
}

int64_t TextViewWidget::positionAt(QPointF point) const {
    const TextStorage& storage = view_->textStorage();
    const qreal documentY = point.y() + scrollOffsetY();
    const int64_t line = std::clamp<int64_t>(
        static_cast<int64_t>(std::floor(documentY / lineHeight_)), 0, storage.lineCount() - 1);
    const qreal x = point.x() + horizontalScrollBar()->value() - textInset_;
    const QTextLine textLine = layoutOfLine(line).lineAt(0);
    const int offset = textLine.isValid() ? textLine.xToCursor(x) : 0;
    return std::min(storage.startOfLine(line) + offset, lineContentsEnd(line));
}

QRectF TextViewWidget::caretRect() const {
    const TextStorage& storage = view_->textStorage();
    const int64_t line = storage.lineIndexOfPosition(caret_);
    const int64_t offset = std::min(caret_ - storage.startOfLine(line), longLineLimit);
    const QTextLine textLine = layoutOfLine(line).lineAt(0);
    const qreal x = textLine.isValid() ? textLine.cursorToX(static_cast<int>(offset)) : 0;
    const QRectF rect = lineRect(line);
    return {x + textInset_ - horizontalScrollBar()->value(), rect.y(), 1, lineHeight_};
}

void TextViewWidget::ensurePositionVisible(int64_t position) {
    position = std::clamp<int64_t>(position, 0, view_->length());
    const int64_t line = view_->textStorage().lineIndexOfPosition(position);
    const qreal top = static_cast<qreal>(line) * lineHeight_;
    QScrollBar* vertical = verticalScrollBar();
    if (top < vertical->value()) {
        vertical->setValue(clampToInt(top));
    } else if (top + lineHeight_ > vertical->value() + viewport()->height()) {
        vertical->setValue(clampToInt(top + lineHeight_ - viewport()->height()));
    }
    const int64_t offset =
        std::min(position - view_->textStorage().startOfLine(line), longLineLimit);
    const QTextLine textLine = layoutOfLine(line).lineAt(0);
    const qreal x = (textLine.isValid() ? textLine.cursorToX(static_cast<int>(offset)) : 0);
    QScrollBar* horizontal = horizontalScrollBar();
    const qreal margin = 2 * textInset_;
    if (x < horizontal->value()) {
        horizontal->setValue(clampToInt(x - margin));
    } else if (x + margin > horizontal->value() + viewport()->width()) {
        horizontal->setValue(clampToInt(x + margin - viewport()->width()));
    }
}

void TextViewWidget::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
    Q_EMIT visibleAreaChanged();
}

void TextViewWidget::scrollContentsBy(int, int) {
    viewport()->update();
    Q_EMIT visibleAreaChanged();
}

// --- Painting ---

void TextViewWidget::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.fillRect(event->rect(), backgroundColor());
    const TextStorage& storage = view_->textStorage();
    const Range selection = view_->selectedRange();
    const qreal scrollX = horizontalScrollBar()->value();
    const int64_t first = firstVisibleLine();
    const int64_t last = std::min(storage.lineCount() - 1, first + visibleLineCount());
    const int64_t caretLine = storage.lineIndexOfPosition(caret_);
    const QColor highlight =
        palette().color(hasFocus() ? QPalette::Active : QPalette::Inactive, QPalette::Highlight);
    const QColor highlightedText = palette().color(QPalette::HighlightedText);
    painter.setPen(textColor());

    for (int64_t line = first; line <= last; ++line) {
        const QRectF rect = lineRect(line);
        if (!rect.intersects(event->rect())) continue;
        QTextLayout& layout = layoutOfLine(line);
        const int64_t start = storage.startOfLine(line);
        const QPointF origin(textInset_ - scrollX, rect.y());

        QList<QTextLayout::FormatRange> formats;
        const auto addRange = [&](Range range, const QColor& background, const QColor& text) {
            const int64_t from = std::max(range.location, start) - start;
            const int64_t to =
                std::min(range.location + range.length, start + int64_t{layout.text().size()}) -
                start;
            if (range.length == 0 || to <= from) return;
            QTextLayout::FormatRange format;
            format.start = static_cast<int>(from);
            format.length = static_cast<int>(to - from);
            format.format.setBackground(background);
            if (text.isValid()) format.format.setForeground(text);
            formats.append(format);
        };
        addRange(findIndicator_, QColor(255, 221, 0), QColor(Qt::black));
        addRange(selection, highlight, highlightedText);
        layout.draw(&painter, origin, formats);

        // A selection that runs over the line end shows it as selected, up to the right edge.
        const int64_t lineEnd = start + static_cast<int64_t>(layout.text().size());
        if (selection.length > 0 && selection.location <= lineEnd &&
            selection.location + selection.length > lineEnd && line < storage.lineCount() - 1) {
            const QTextLine textLine = layout.lineAt(0);
            const qreal x = origin.x() + (textLine.isValid() ? textLine.naturalTextWidth() : 0);
            painter.fillRect(QRectF(x, rect.y(), lineHeight_ / 2, lineHeight_), highlight);
        }
        if (line == caretLine && caretShown_ && hasFocus() && selection.length == 0) {
            const int64_t offset = std::min(caret_ - start, longLineLimit);
            const int cursor = static_cast<int>(offset) + (preedit_.isEmpty() ? 0 : preeditCursor_);
            painter.setPen(textColor());
            layout.drawCursor(&painter, origin, cursor, 1);
        }
    }
}

// --- Selection ---

void TextViewWidget::setAnchorAndCaret(int64_t anchor, int64_t caret) {
    anchor_ = anchor;
    caret_ = caret;
    const Range range{std::min(anchor, caret), std::abs(caret - anchor)};
    changingSelection_ = true;
    view_->setSelectedRange(range);
    changingSelection_ = false;
    restartCaretBlink();
    viewport()->update();
    Q_EMIT selectionChanged();
}

void TextViewWidget::moveCaret(int64_t position, bool extend) {
    position = std::clamp<int64_t>(position, 0, view_->length());
    setAnchorAndCaret(extend ? anchor_ : position, position);
    ensurePositionVisible(position);
}

void TextViewWidget::selectionChangedInCore(Range range) {
    if (changingSelection_) return;
    // A command or an undo chose the selection: its start is the anchor.
    anchor_ = range.location;
    caret_ = range.location + range.length;
    desiredX_ = -1;
    viewport()->update();
    Q_EMIT selectionChanged();
}

int64_t TextViewWidget::nextCursorPosition(int64_t position, bool byWord) const {
    const TextStorage& storage = view_->textStorage();
    const int64_t line = storage.lineIndexOfPosition(position);
    const int64_t start = storage.startOfLine(line);
    const int64_t contentsEnd = lineContentsEnd(line);
    if (position >= contentsEnd) {
        // Over the terminator (CR LF is one step) to the next line's start.
        return line + 1 < storage.lineCount() ? storage.startOfLine(line + 1) : position;
    }
    const QTextLayout& layout = layoutOfLine(line);
    const int next =
        layout.nextCursorPosition(static_cast<int>(position - start),
                                  byWord ? QTextLayout::SkipWords : QTextLayout::SkipCharacters);
    return std::min(start + next, contentsEnd);
}

int64_t TextViewWidget::previousCursorPosition(int64_t position, bool byWord) const {
    const TextStorage& storage = view_->textStorage();
    const int64_t line = storage.lineIndexOfPosition(position);
    const int64_t start = storage.startOfLine(line);
    if (position <= start) return line > 0 ? lineContentsEnd(line - 1) : 0;
    const QTextLayout& layout = layoutOfLine(line);
    const int64_t offset = std::min(position - start, longLineLimit);
    return start + layout.previousCursorPosition(
                       static_cast<int>(offset),
                       byWord ? QTextLayout::SkipWords : QTextLayout::SkipCharacters);
}

int64_t TextViewWidget::positionOnNeighbourLine(int64_t position, int64_t lineDelta) {
    const TextStorage& storage = view_->textStorage();
    const int64_t line = storage.lineIndexOfPosition(position);
    if (desiredX_ < 0) {
        const QTextLine textLine = layoutOfLine(line).lineAt(0);
        const int64_t offset = std::min(position - storage.startOfLine(line), longLineLimit);
        desiredX_ = textLine.isValid() ? textLine.cursorToX(static_cast<int>(offset)) : 0;
    }
    const int64_t target = line + lineDelta;
    if (target < 0) return 0;
    if (target >= storage.lineCount()) return view_->length();
    const QTextLine textLine = layoutOfLine(target).lineAt(0);
    const int offset = textLine.isValid() ? textLine.xToCursor(desiredX_) : 0;
    return std::min(storage.startOfLine(target) + offset, lineContentsEnd(target));
}

Range TextViewWidget::rangeForGranularity(int64_t position, Granularity granularity) const {
    switch (granularity) {
        case Granularity::word:
            return view_->selectionRangeForProposedRange({position, 0},
                                                         SelectionGranularity::selectByWord);
        case Granularity::paragraph:
            return view_->selectionRangeForProposedRange({position, 0},
                                                         SelectionGranularity::selectByParagraph);
        case Granularity::character:
            break;
    }
    return {position, 0};
}

void TextViewWidget::extendSelectionByMouse(int64_t position) {
    const Range under = rangeForGranularity(position, mouseGranularity_);
    const Range& start = mouseAnchorRange_;
    if (under.location < start.location) {
        setAnchorAndCaret(start.location + start.length, under.location);
    } else {
        setAnchorAndCaret(start.location, under.location + under.length);
    }
    ensurePositionVisible(caret_);
}

// --- Editing ---

void TextViewWidget::insertText(const QString& text) {
    if (!view_->isEditable()) return;
    const std::u16string units = toU16String(text);
    view_->replaceWithUndo(units, view_->selectedRange(), false);
    desiredX_ = -1;
    ensurePositionVisible(caret_);
}

void TextViewWidget::deleteBackward() {
    Range range = view_->selectedRange();
    if (range.length == 0) {
        if (range.location == 0) return;
        // Backspace takes one unit of a cluster built from several code points only where the
        // platform does: here, whole clusters, except that a line end (CR LF too) goes as one.
        const int64_t previous = previousCursorPosition(range.location, false);
        const TextStorage& storage = view_->textStorage();
        const int64_t line = storage.lineIndexOfPosition(range.location);
        const int64_t from =
            range.location == storage.startOfLine(line) ? lineContentsEnd(line - 1) : previous;
        range = {from, range.location - from};
    }
    if (view_->isEditable()) view_->replaceWithUndo(u"", range, false);
    desiredX_ = -1;
    ensurePositionVisible(caret_);
}

void TextViewWidget::deleteForward() {
    Range range = view_->selectedRange();
    if (range.length == 0) {
        const int64_t next = nextCursorPosition(range.location, false);
        if (next == range.location) return;
        range = {range.location, next - range.location};
    }
    if (view_->isEditable()) view_->replaceWithUndo(u"", range, false);
    desiredX_ = -1;
    ensurePositionVisible(caret_);
}

void TextViewWidget::copy() const {
    const Range range = view_->selectedRange();
    if (range.length == 0) return;
    QGuiApplication::clipboard()->setText(
        toQString(view_->textStorage().substringWithRange(range)));
}

void TextViewWidget::cut() {
    if (view_->selectedRange().length == 0) return;
    copy();
    if (view_->isEditable()) view_->replaceWithUndo(u"", view_->selectedRange(), false);
}

void TextViewWidget::paste() {
    const QString text = QGuiApplication::clipboard()->text();
    if (!text.isEmpty()) insertText(text);
}

bool TextViewWidget::handleStandardKey(QKeyEvent* event) {
    using Key = QKeySequence::StandardKey;
    struct Move {
        Key move;
        Key select;
        std::function<int64_t(TextViewWidget&)> target;
        bool keepsColumn;
    };
    const auto page = [](TextViewWidget& self) {
        return std::max<int64_t>(1, self.visibleLineCount() - 2);
    };
    static const std::vector<Move> moves = {
        {Key::MoveToNextChar, Key::SelectNextChar,
         [](TextViewWidget& self) { return self.nextCursorPosition(self.caret(), false); }, false},
        {Key::MoveToPreviousChar, Key::SelectPreviousChar,
         [](TextViewWidget& self) { return self.previousCursorPosition(self.caret(), false); },
         false},
        {Key::MoveToNextWord, Key::SelectNextWord,
         [](TextViewWidget& self) { return self.nextCursorPosition(self.caret(), true); }, false},
        {Key::MoveToPreviousWord, Key::SelectPreviousWord,
         [](TextViewWidget& self) { return self.previousCursorPosition(self.caret(), true); },
         false},
        {Key::MoveToNextLine, Key::SelectNextLine,
         [](TextViewWidget& self) { return self.positionOnNeighbourLine(self.caret(), 1); }, true},
        {Key::MoveToPreviousLine, Key::SelectPreviousLine,
         [](TextViewWidget& self) { return self.positionOnNeighbourLine(self.caret(), -1); }, true},
        {Key::MoveToNextPage, Key::SelectNextPage,
         [page](TextViewWidget& self) {
             return self.positionOnNeighbourLine(self.caret(), page(self));
         },
         true},
        {Key::MoveToPreviousPage, Key::SelectPreviousPage,
         [page](TextViewWidget& self) {
             return self.positionOnNeighbourLine(self.caret(), -page(self));
         },
         true},
        {Key::MoveToStartOfLine, Key::SelectStartOfLine,
         [](TextViewWidget& self) {
             const TextStorage& storage = self.view_->textStorage();
             return storage.startOfLine(storage.lineIndexOfPosition(self.caret()));
         },
         false},
        {Key::MoveToEndOfLine, Key::SelectEndOfLine,
         [](TextViewWidget& self) {
             return self.lineContentsEnd(
                 self.view_->textStorage().lineIndexOfPosition(self.caret()));
         },
         false},
        {Key::MoveToStartOfDocument, Key::SelectStartOfDocument,
         [](TextViewWidget&) { return int64_t{0}; }, false},
        {Key::MoveToEndOfDocument, Key::SelectEndOfDocument,
         [](TextViewWidget& self) { return self.view_->length(); }, false},
    };
    for (const Move& move : moves) {
        const bool extend = event->matches(move.select);
        if (!extend && !event->matches(move.move)) continue;
        if (!move.keepsColumn) desiredX_ = -1;
        const Range selection = view_->selectedRange();
        // A plain Left or Right collapses a selection to its edge rather than moving past it.
        if (!extend && selection.length > 0 &&
            (move.move == Key::MoveToPreviousChar || move.move == Key::MoveToNextChar)) {
            moveCaret(move.move == Key::MoveToPreviousChar ? selection.location
                                                           : selection.location + selection.length,
                      false);
            return true;
        }
        moveCaret(move.target(*this), extend);
        return true;
    }
    if (event->matches(Key::Undo)) {
        view_->undo();
    } else if (event->matches(Key::Redo)) {
        view_->redo();
    } else if (event->matches(Key::Copy)) {
        copy();
    } else if (event->matches(Key::Cut)) {
        cut();
    } else if (event->matches(Key::Paste)) {
        paste();
    } else if (event->matches(Key::SelectAll)) {
        view_->selectAll();
    } else if (event->matches(Key::Delete)) {
        deleteForward();
    } else if (event->matches(Key::DeleteStartOfWord)) {
        if (view_->selectedRange().length == 0)
            moveCaret(previousCursorPosition(caret_, true), true);
        deleteBackward();
    } else if (event->matches(Key::DeleteEndOfWord)) {
        if (view_->selectedRange().length == 0) moveCaret(nextCursorPosition(caret_, true), true);
        deleteForward();
    } else {
        return false;
    }
    return true;
}

void TextViewWidget::keyPressEvent(QKeyEvent* event) {
    restartCaretBlink();
    if (handleStandardKey(event)) return;
    switch (event->key()) {
        case Qt::Key_Backspace:
            deleteBackward();
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            insertText(QStringLiteral("\n"));
            return;
        case Qt::Key_Tab:
            if (event->modifiers() == Qt::NoModifier) {
                insertText(QStringLiteral("\t"));
                return;
            }
            break;
        default:
            break;
    }
    const QString text = event->text();
    const bool printable = !text.isEmpty() && std::none_of(text.begin(), text.end(), [](QChar c) {
        return c.category() == QChar::Other_Control;
    });
    if (printable && !(event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier))) {
        insertText(text);
        return;
    }
    QAbstractScrollArea::keyPressEvent(event);
}

bool TextViewWidget::event(QEvent* event) {
    // Claims the keys the editor handles before window shortcuts see them.
    if (event->type() == QEvent::ShortcutOverride) {
        auto* key = static_cast<QKeyEvent*>(event);
        const bool plainText = !key->text().isEmpty() &&
                               !(key->modifiers() & (Qt::ControlModifier | Qt::MetaModifier));
        if (plainText || key->matches(QKeySequence::Copy) || key->matches(QKeySequence::Paste) ||
            key->matches(QKeySequence::Cut) || key->matches(QKeySequence::Undo) ||
            key->matches(QKeySequence::Redo) || key->matches(QKeySequence::SelectAll)) {
            event->accept();
            return true;
        }
    }
    return QAbstractScrollArea::event(event);
}

bool TextViewWidget::focusNextPrevChild(bool) {
    return false;
}  // Tab is text here

// --- Mouse ---

void TextViewWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return QAbstractScrollArea::mousePressEvent(event);
    const int64_t position = positionAt(event->position());
    desiredX_ = -1;
    mouseSelecting_ = true;
    if (tripleClickTimer_.isActive() && (event->position() - doubleClickPoint_).manhattanLength() <
                                            QApplication::startDragDistance()) {
        mouseGranularity_ = Granularity::paragraph;
        mouseAnchorRange_ = rangeForGranularity(position, mouseGranularity_);
        setAnchorAndCaret(mouseAnchorRange_.location,
                          mouseAnchorRange_.location + mouseAnchorRange_.length);
        return;
    }
    mouseGranularity_ = Granularity::character;
    if (event->modifiers() & Qt::ShiftModifier) {
        mouseAnchorRange_ = {anchor_, 0};
        moveCaret(position, true);
    } else {
        mouseAnchorRange_ = {position, 0};
        moveCaret(position, false);
    }
}

void TextViewWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return QAbstractScrollArea::mouseDoubleClickEvent(event);
    mouseGranularity_ = Granularity::word;
    mouseSelecting_ = true;
    mouseAnchorRange_ = rangeForGranularity(positionAt(event->position()), mouseGranularity_);
    setAnchorAndCaret(mouseAnchorRange_.location,
                      mouseAnchorRange_.location + mouseAnchorRange_.length);
    doubleClickPoint_ = event->position();
    tripleClickTimer_.start(QApplication::doubleClickInterval());
}

void TextViewWidget::mouseMoveEvent(QMouseEvent* event) {
    if (!mouseSelecting_ || !(event->buttons() & Qt::LeftButton)) return;
    extendSelectionByMouse(positionAt(event->position()));
}

void TextViewWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return QAbstractScrollArea::mouseReleaseEvent(event);
    mouseSelecting_ = false;
    event->accept();
}

// --- Input methods ---

void TextViewWidget::inputMethodEvent(QInputMethodEvent* event) {
    if (!event->commitString().isEmpty() || event->replacementLength() > 0) {
        if (event->replacementLength() > 0) {
            const int64_t from =
                std::clamp<int64_t>(caret_ + event->replacementStart(), 0, view_->length());
            const int64_t to =
                std::clamp<int64_t>(from + event->replacementLength(), 0, view_->length());
            setAnchorAndCaret(from, to);
        }
        insertText(event->commitString());
    }
    preedit_ = event->preeditString();
    preeditCursor_ = static_cast<int>(preedit_.size());
    for (const QInputMethodEvent::Attribute& attribute : event->attributes()) {
        if (attribute.type == QInputMethodEvent::Cursor) preeditCursor_ = attribute.start;
    }
    layouts_.erase(view_->textStorage().lineIndexOfPosition(caret_));
    viewport()->update();
    event->accept();
}

QVariant TextViewWidget::inputMethodQuery(Qt::InputMethodQuery query) const {
    const TextStorage& storage = view_->textStorage();
    const int64_t line = storage.lineIndexOfPosition(caret_);
    const int64_t start = storage.startOfLine(line);
    switch (query) {
        case Qt::ImEnabled:
            return view_->isEditable();
        case Qt::ImCursorRectangle:
            return caretRect().toAlignedRect();
        case Qt::ImFont:
            return font();
        case Qt::ImCursorPosition:
            return static_cast<int>(std::min(caret_ - start, longLineLimit));
        case Qt::ImAnchorPosition:
            return static_cast<int>(std::clamp<int64_t>(anchor_ - start, 0, longLineLimit));
        case Qt::ImSurroundingText:
            return lineText(line);
        case Qt::ImCurrentSelection: {
            const Range selection = view_->selectedRange();
            return toQString(storage.substringWithRange(
                {selection.location, std::min(selection.length, longLineLimit)}));
        }
        case Qt::ImHints:
            return static_cast<int>(Qt::ImhMultiLine);
        default:
            return QAbstractScrollArea::inputMethodQuery(query);
    }
}

// --- Caret blinking, focus, find indicator ---

void TextViewWidget::restartCaretBlink() {
    caretShown_ = true;
    const int interval = QGuiApplication::styleHints()->cursorFlashTime() / 2;
    if (interval > 0 && hasFocus()) {
        caretBlink_.start(interval, this);
    } else {
        caretBlink_.stop();
    }
}

void TextViewWidget::timerEvent(QTimerEvent* event) {
    if (event->timerId() != caretBlink_.timerId()) return QAbstractScrollArea::timerEvent(event);
    caretShown_ = !caretShown_;
    viewport()->update(caretRect().toAlignedRect().adjusted(-2, 0, 2, 0));
}

void TextViewWidget::focusInEvent(QFocusEvent* event) {
    restartCaretBlink();
    viewport()->update();
    QAbstractScrollArea::focusInEvent(event);
}

void TextViewWidget::focusOutEvent(QFocusEvent* event) {
    caretBlink_.stop();
    viewport()->update();
    QAbstractScrollArea::focusOutEvent(event);
}

void TextViewWidget::showFindIndicator(Range range) {
    findIndicator_ = range;
    ensurePositionVisible(range.location);
    viewport()->update();
    findIndicatorTimer_.start(1000);
}

void TextViewWidget::notifyAccessibility() {
    if (!QAccessible::isActive()) return;  // building events costs; nobody would read them
    QAccessibleEvent changed(this, QAccessible::ValueChanged);
    QAccessible::updateAccessibility(&changed);
}

}  // namespace quod
