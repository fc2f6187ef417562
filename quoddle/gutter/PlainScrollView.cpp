#include "quoddle/gutter/PlainScrollView.h"

namespace quod {

PlainScrollView::PlainScrollView(const std::shared_ptr<QuodTextView>& textView,
                                 MonospacedTextLayout::Metrics metrics, Size viewportSize)
    : textView_(textView),
      layout_(std::shared_ptr<const TextStorage>(textView, &textView->textStorage()), metrics),
      viewportSize_(viewportSize) {}

void PlainScrollView::scrollTo(Point origin) {
    if (origin == scrollPosition_) return;
    scrollPosition_ = origin;
    contentViewBoundsChanged();
}

void PlainScrollView::setViewportSize(Size size) {
    if (size == viewportSize_) return;
    viewportSize_ = size;
    contentViewBoundsChanged();
}

}  // namespace quod
