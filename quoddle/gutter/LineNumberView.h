// The line-number gutter: the strip beside a text view that numbers its lines, widens as the
// line count needs more digits, and selects whole lines by clicking and dragging in it.
//
// Lifecycle. A gutter is inert until `setUpWithTextStorage`, which holds the text storage, the
// scroll view and the delegate weakly, refreshes the shared look (LineNumberAttributes), observes
// "ThemeChanged", "LineNumberFontChanged", "LineNumberColorsChanged" (from anyone) and
// "FindBarChanged" (only from the delegate, by its most-derived address; not at all without a
// delegate), and asks for a redraw on the next main-loop turn. Only 0.3 seconds later does it
// begin to follow edits and scrolling, and then builds its line index once: edits made in between
// are numbered by that build. Everything runs on the main thread, driven by RunLoop::main().
//
// The index (`lineLocationArray`, see LineLocationArray.h) is built in full once and then kept
// up to date from each edit notification in time proportional to the edit. When an edit changes
// an entry, the gutter applies the width rule and asks for a redraw; an edit that moves no line
// start does neither.
//
// Width rule: with c entries, digits = ceil(log10(c)) in single precision (1 when c is 0), and
// width = digits × digit width + 8. This deliberately gives one digit too few at exact powers of
// ten (c = 1 gives width 8, c = 10 one digit). Unless the bounds already have that width, a width
// above `minimumWidth` is passed to the delegate and becomes the new minimum; a smaller one is
// ignored, so a gutter never gets narrower.
//
// Drawing (`updateLayer`) needs the scroll view, its QuodTextView and its layout, and draws
// nothing without them: the background, a one-point separator on the edge toward the text (the
// right edge, or the left one when laid out right to left), then the numbers of the visible lines
// and of the first line past them, each vertically centred on its line's first layout line. An
// empty last line is numbered at the layout's extra line fragment. Right to left, numbers are
// written for the current locale (Localize::intString). The cost depends on the lines shown, not
// on the document: O(log lines + visible lines).
//
// Mouse: a click selects the whole line under the pointer (terminator included) and remembers it
// as `startSelectionRange`; a drag selects from that line to the line under the pointer, either
// way. A pointer beside the text selects the nearest line; without a text view or layout, or at a
// position that is not a number, nothing happens. Mouse positions are in gutter coordinates.
//
// Missing collaborators (a text storage or scroll view that went away, no document view, no
// layout) make every operation quietly do nothing.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "quoddle/Export.h"
#include "quoddle/base/Geometry.h"
#include "quoddle/base/Range.h"
#include "quoddle/base/Signal.h"
#include "quoddle/gutter/DrawingSurface.h"
#include "quoddle/gutter/LineLocationArray.h"
#include "quoddle/gutter/LineNumberProtocol.h"
#include "quoddle/gutter/ScrollViewGeometry.h"
#include "quoddle/text/TextStorage.h"

namespace quod {

class QUODDLE_EXPORT LineNumberView {
  public:
    LineNumberView();
    ~LineNumberView();
    LineNumberView(const LineNumberView&) = delete;
    LineNumberView& operator=(const LineNumberView&) = delete;

    // --- Stored properties ---

    // The lines the current mouse selection began on; (0, 0) before the first click.
    [[nodiscard]] Range startSelectionRange() const {
        return startSelectionRange_.value_or(Range{});
    }
    [[nodiscard]] const LineLocationArray& lineLocationArray() const { return lineLocationArray_; }
    [[nodiscard]] double minimumWidth() const { return minimumWidth_; }
    [[nodiscard]] std::shared_ptr<TextStorage> textStorage() const { return textStorage_.lock(); }
    [[nodiscard]] std::shared_ptr<ScrollViewGeometry> scrollView() const {
        return scrollView_.lock();
    }
    [[nodiscard]] std::shared_ptr<LineNumberProtocol> delegate() const { return delegate_.lock(); }

    // --- The view ---

    [[nodiscard]] Rect bounds() const { return bounds_; }
    // The host sizes the gutter, typically from the delegate's width request.
    void setBounds(Rect bounds);
    [[nodiscard]] bool isOpaque() const { return true; }
    // y grows downwards: line 1 is at the top.
    [[nodiscard]] bool isFlipped() const { return true; }
    [[nodiscard]] bool isAccessibilityElement() const { return false; }
    [[nodiscard]] bool wantsLayer() const { return wantsLayer_; }
    [[nodiscard]] bool wantsUpdateLayer() const { return true; }
    [[nodiscard]] bool needsDisplay() const { return needsDisplay_; }
    void setNeedsDisplay(bool needsDisplay);
    // Emitted when the gutter comes to need display; the toolkit layer schedules `updateLayer`.
    Signal<LineNumberView> displayNeeded;

    // --- Operations ---

    // The text storage is usually the one a shared QuodTextView owns, held through an aliasing
    // pointer: std::shared_ptr<TextStorage>(view, &view->textStorage()).
    void setUpWithTextStorage(std::weak_ptr<TextStorage> textStorage,
                              std::weak_ptr<ScrollViewGeometry> scrollView,
                              std::weak_ptr<LineNumberProtocol> delegate);

    // Builds the line index from the whole text.
    void updateLineIndexes();
    // Brings the line index up to date after one edit of the text storage.
    void updateLineIndexes(const TextStorageEdit& edit);
    // Asks for the whole gutter to be redrawn.
    void updateLineNumbers();
    // Refreshes the shared look, asks for a redraw and applies the width rule again.
    void updateAttributes();
    void themeChanged() { updateAttributes(); }
    void lineNumberFontChanged() { updateAttributes(); }
    void lineNumberColorsChanged() { updateAttributes(); }

    void updateLayer(DrawingSurface& surface);

    // The width the rule above asks for with `count` index entries.
    [[nodiscard]] static double widthForEntryCount(int64_t count, double digitWidth);

    void mouseDown(Point location);
    void mouseDragged(Point location);

  private:
    struct LinesUnderPointer {
        QuodTextView* textView;
        Range lines;
    };

    void beginObserving();
    void indexChanged();
    void applyWidthRule();
    [[nodiscard]] std::optional<LinesUnderPointer> linesUnderPointer(Point location) const;

    std::optional<Range> startSelectionRange_;
    LineLocationArray lineLocationArray_;
    double minimumWidth_ = 0;
    std::weak_ptr<TextStorage> textStorage_;
    std::weak_ptr<ScrollViewGeometry> scrollView_;
    std::weak_ptr<LineNumberProtocol> delegate_;

    Rect bounds_;
    bool wantsLayer_ = false;
    bool needsDisplay_ = false;
    // Delayed work holds this weakly, so a gutter destroyed before it runs is left alone; a
    // second set-up makes the first one's delayed observation stale.
    std::shared_ptr<LineNumberView*> self_;
    uint64_t setUpCount_ = 0;
    Connection editingObserver_;
    Connection scrollingObserver_;
    Connection themeObserver_;
    Connection fontObserver_;
    Connection colorsObserver_;
    Connection findBarObserver_;
};

}  // namespace quod
