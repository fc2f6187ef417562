#include "quoddle/gutter/LineNumberView.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "quoddle/gutter/LineNumberAttributes.h"
#include "quoddle/interface/NotificationName.h"
#include "quoddle/interface/UserInterfaceLayoutDirection.h"
#include "quoddle/runtime/Delay.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/NotificationCenter.h"

namespace quod {
namespace {

// A range that a layout answered, moved inside the text: a layout may answer beyond its end
// while the text and its layout disagree for a moment.
Range clampedToText(Range range, int64_t textLength) {
    const int64_t location = std::clamp<int64_t>(range.location, 0, textLength);
    return {location, std::clamp<int64_t>(range.length, 0, textLength - location)};
}

}  // namespace

LineNumberView::LineNumberView() : self_(std::make_shared<LineNumberView*>(this)) {}

LineNumberView::~LineNumberView() = default;

void LineNumberView::setBounds(Rect bounds) {
    if (bounds == bounds_) return;
    bounds_ = bounds;
    setNeedsDisplay(true);
}

void LineNumberView::setNeedsDisplay(bool needsDisplay) {
    const bool became = needsDisplay && !needsDisplay_;
    needsDisplay_ = needsDisplay;
    if (became) displayNeeded.emit();
}

void LineNumberView::setUpWithTextStorage(std::weak_ptr<TextStorage> textStorage,
                                          std::weak_ptr<ScrollViewGeometry> scrollView,
                                          std::weak_ptr<LineNumberProtocol> delegate) {
    textStorage_ = std::move(textStorage);
    scrollView_ = std::move(scrollView);
    delegate_ = std::move(delegate);
    editingObserver_.disconnect();
    scrollingObserver_.disconnect();

    const std::weak_ptr<LineNumberView*> weakSelf = self_;
    const uint64_t setUp = ++setUpCount_;
    Delay(0.3, [weakSelf, setUp] {
        const auto self = weakSelf.lock();
        if (self && (*self)->setUpCount_ == setUp) (*self)->beginObserving();
    });

    NotificationCenter& center = Notifications();
    const auto observe = [&](const NotificationName& name, const void* sender, auto action) {
        return center.addObserver(name.rawValue(), sender,
                                  [this, action](const Notification&) { (this->*action)(); });
    };
    themeObserver_ =
        observe(NotificationName::themeChanged(), nullptr, &LineNumberView::themeChanged);
    fontObserver_ = observe(NotificationName::lineNumberFontChanged(), nullptr,
                            &LineNumberView::lineNumberFontChanged);
    colorsObserver_ = observe(NotificationName::lineNumberColorsChanged(), nullptr,
                              &LineNumberView::lineNumberColorsChanged);
    // A null sender would mean "from anyone", so without a delegate there is nothing to observe.
    findBarObserver_.disconnect();
    if (const auto owner = delegate_.lock()) {
        findBarObserver_ =
            observe(NotificationName::findBarChanged(), dynamic_cast<const void*>(owner.get()),
                    &LineNumberView::updateLineNumbers);
    }

    updateAttributes();
    wantsLayer_ = true;
    Delay(0, [weakSelf] {
        if (const auto self = weakSelf.lock()) (*self)->setNeedsDisplay(true);
    });
}

void LineNumberView::beginObserving() {
    if (const auto storage = textStorage_.lock()) {
        editingObserver_ = storage->didProcessEditing.connect(
            [this](const TextStorageEdit& edit) { updateLineIndexes(edit); });
    }
    if (const auto scroll = scrollView_.lock()) {
        scroll->setPostsBoundsChangedNotifications(true);
        scrollingObserver_ =
            scroll->contentViewBoundsDidChange.connect([this] { updateLineNumbers(); });
    }
    updateLineIndexes();
}

void LineNumberView::updateLineIndexes() {
    const auto storage = textStorage_.lock();
    if (storage && lineLocationArray_.rebuild(*storage)) indexChanged();
}

void LineNumberView::updateLineIndexes(const TextStorageEdit& edit) {
    const auto storage = textStorage_.lock();
    if (storage && lineLocationArray_.apply(*storage, edit)) indexChanged();
}

void LineNumberView::indexChanged() {
    applyWidthRule();
    setNeedsDisplay(true);
}

void LineNumberView::updateLineNumbers() {
    setNeedsDisplay(true);
}

void LineNumberView::updateAttributes() {
    LineNumberAttributes::refresh();
    setNeedsDisplay(true);
    applyWidthRule();
}

double LineNumberView::widthForEntryCount(int64_t count, double digitWidth) {
    // Single precision on purpose: the width must match what users have always seen.
    const float digits = count == 0 ? 1.0f : std::ceil(std::log10(static_cast<float>(count)));
    return static_cast<double>(digits) * digitWidth + 8.0;
}

void LineNumberView::applyWidthRule() {
    const double width =
        widthForEntryCount(lineLocationArray_.size(), LineNumberAttributes::shared().digitWidth);
    if (bounds_.width() == width || width <= minimumWidth_) return;
    // Recorded first, so that a delegate that resizes and thereby re-enters asks only once.
    minimumWidth_ = width;
    if (const auto owner = delegate_.lock()) owner->lineNumberViewNeedsWidth(*this, width);
}

void LineNumberView::updateLayer(DrawingSurface& surface) {
    needsDisplay_ = false;
    const auto scroll = scrollView_.lock();
    if (!scroll) return;
    TextLayout* const layout = scroll->textLayout();
    if (scroll->documentView() == nullptr || layout == nullptr) return;
    const LineNumberAttributes& attributes = LineNumberAttributes::shared();
    const bool rtl = Interface::rtl();

    surface.clear();
    const double scale = surface.rasterizationScale();
    surface.fillRect(bounds_, attributes.backgroundColor);
    const double separatorX = rtl ? bounds_.minX() + 0.5 : bounds_.maxX() - 0.5;
    surface.strokeLine({separatorX, bounds_.minY()}, {separatorX, bounds_.maxY()}, 1.0,
                       attributes.separatorColor);

    // Under a horizontal scroller or a header the gutter is taller than the visible text: look
    // that much further up so that a partly hidden top line is still numbered.
    const double extra = bounds_.height() - scroll->documentVisibleRect().height();
    Rect visible = scroll->contentViewVisibleRect();
    if (extra != 0) {
        visible.origin.y -= extra;
        visible.size.height += extra;
    }
    const Range characters = layout->characterRangeForBoundingRect(visible);
    const int64_t visibleEnd = characters.end();
    const double offset =
        extra + (layout->textContainerInset().height - scroll->contentViewBounds().minY() - 1.0);

    for (int64_t index = lineLocationArray_.firstIndexAtOrAfter(characters.location);
         index < lineLocationArray_.size(); ++index) {
        const int64_t location = lineLocationArray_[index];
        const Rect line = location == LineLocationArray::emptyLastLine
                              ? layout->extraLineFragmentRect()
                              : layout->lineFragmentRectForCharacter(location);
        const double y =
            std::ceil(line.minY() + (line.height() - attributes.digitHeight) * 0.5 + offset);
        const Rect frame{{attributes.numberInset, y},
                         {bounds_.width() - 5.0, attributes.digitHeight}};
        if (surface.needsToDrawRect(frame)) {
            const int64_t number = index + 1;
            surface.drawText({rtl ? Localize::intString(number) : std::to_string(number), frame,
                              attributes.font, attributes.fontSize, attributes.textColor,
                              attributes.alignment, 2 * scale});
        }
        if (location >= visibleEnd) break;
    }
}

std::optional<LineNumberView::LinesUnderPointer> LineNumberView::linesUnderPointer(
    Point location) const {
    const auto scroll = scrollView_.lock();
    if (!scroll || !std::isfinite(location.y)) return std::nullopt;
    QuodTextView* const textView = scroll->documentView();
    TextLayout* const layout = scroll->textLayout();
    if (textView == nullptr || layout == nullptr) return std::nullopt;
    const double y = location.y + scroll->visibleRect().minY() + scroll->contentViewBounds().minY();
    const Range characters = layout->characterRangeForBoundingRect({{2.0, y}, {2.0, 2.0}});
    if (characters.location == NotFound) return std::nullopt;
    const TextStorage& text = textView->textStorage();
    return LinesUnderPointer{textView,
                             text.lineRangeForRange(clampedToText(characters, text.length()))};
}

void LineNumberView::mouseDown(Point location) {
    const auto hit = linesUnderPointer(location);
    if (!hit) return;
    hit->textView->setSelectedRange(hit->lines);
    startSelectionRange_ = hit->lines;
}

void LineNumberView::mouseDragged(Point location) {
    const auto hit = linesUnderPointer(location);
    if (!hit) return;
    const Range start = startSelectionRange();
    const Range under = hit->lines;
    const Range selection = under.location < start.location
                                ? Range{under.location, start.end() - under.location}
                                : Range{start.location, under.end() - start.location};
    // The starting lines may have shrunk away since the click.
    hit->textView->setSelectedRange(clampedToText(selection, hit->textView->length()));
}

}  // namespace quod
