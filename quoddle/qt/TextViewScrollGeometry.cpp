#include "quoddle/qt/TextViewScrollGeometry.h"

#include <QScrollBar>

#include "quoddle/qt/TextViewWidget.h"

namespace quod {

TextViewScrollGeometry::TextViewScrollGeometry(TextViewWidget& widget)
    : widget_(&widget), layout_(widget) {
    visibleAreaObserver_ = QObject::connect(&widget, &TextViewWidget::visibleAreaChanged,
                                            [this] { contentViewBoundsChanged(); });
}

TextViewScrollGeometry::~TextViewScrollGeometry() {
    QObject::disconnect(visibleAreaObserver_);
}

Rect TextViewScrollGeometry::visibleRect() const {
    if (widget_.isNull()) return {};
    return {{0, 0},
            {static_cast<double>(widget_->width()), static_cast<double>(widget_->height())}};
}

Rect TextViewScrollGeometry::visibleDocumentArea() const {
    if (widget_.isNull()) return {};
    const QWidget* viewport = widget_->viewport();
    return {
        {static_cast<double>(widget_->horizontalScrollBar()->value()), widget_->scrollOffsetY()},
        {static_cast<double>(viewport->width()), static_cast<double>(viewport->height())}};
}

QuodTextView* TextViewScrollGeometry::documentView() const {
    return widget_.isNull() ? nullptr : widget_->sharedTextView().get();
}

TextLayout* TextViewScrollGeometry::textLayout() const {
    return widget_.isNull() ? nullptr : &layout_;
}

}  // namespace quod
