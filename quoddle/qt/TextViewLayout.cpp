#include "quoddle/qt/TextViewLayout.h"

#include "quoddle/qt/TextViewWidget.h"

namespace quod {

TextViewLayout::TextViewLayout(TextViewWidget& widget) : widget_(&widget) {}

MonospacedTextLayout TextViewLayout::current() const {
    if (widget_.isNull()) return MonospacedTextLayout({}, {});
    const std::shared_ptr<QuodTextView>& view = widget_->sharedTextView();
    return MonospacedTextLayout(
        std::shared_ptr<const TextStorage>(view, &view->textStorage()),
        {.lineHeight = widget_->lineHeight(), .textContainerInset = textContainerInset()});
}

Rect TextViewLayout::lineFragmentRectForCharacter(int64_t index) const {
    return current().lineFragmentRectForCharacter(index);
}

Rect TextViewLayout::extraLineFragmentRect() const {
    return current().extraLineFragmentRect();
}

Range TextViewLayout::characterRangeForBoundingRect(Rect rect) const {
    return current().characterRangeForBoundingRect(rect);
}

Size TextViewLayout::textContainerInset() const {
    return widget_.isNull() ? Size{} : Size{widget_->textInsetX(), 0};
}

}  // namespace quod
