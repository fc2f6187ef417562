// A TextViewWidget as the scroll view beside a line-number gutter (the core's ScrollViewGeometry).
//
// The widget is its own scroll view, clip view and document view at once, so:
//   - `visibleRect` is the widget's own rectangle at the origin;
//   - `documentVisibleRect`, `contentViewBounds` and `contentViewVisibleRect` are all the viewport
//     at the scroll position, in document coordinates (viewport coordinates plus the scroll
//     position): their origin is what the scroll bars say, their size the viewport's;
//   - `documentView` is the widget's QuodTextView and `textLayout` a TextViewLayout over it.
// Every move or resize of the visible area (the widget's `visibleAreaChanged`, which scrolling,
// resizing, a new font and a new document emit) is announced as a change of the content view's
// bounds, once someone turned those notifications on.
//
// The widget is watched, not owned: once it is gone there is no document view and no layout, and
// the rectangles are empty. Shared with the gutter, which holds it weakly. Main thread only.
#pragma once

#include <QMetaObject>
#include <QPointer>

#include "quoddle/gutter/ScrollViewGeometry.h"
#include "quoddle/qt/TextViewLayout.h"

namespace quod {

class TextViewWidget;

class TextViewScrollGeometry : public ScrollViewGeometry {
  public:
    explicit TextViewScrollGeometry(TextViewWidget& widget);
    ~TextViewScrollGeometry() override;
    TextViewScrollGeometry(const TextViewScrollGeometry&) = delete;
    TextViewScrollGeometry& operator=(const TextViewScrollGeometry&) = delete;

    [[nodiscard]] Rect visibleRect() const override;
    [[nodiscard]] Rect documentVisibleRect() const override { return visibleDocumentArea(); }
    [[nodiscard]] Rect contentViewBounds() const override { return visibleDocumentArea(); }
    [[nodiscard]] Rect contentViewVisibleRect() const override { return visibleDocumentArea(); }
    [[nodiscard]] QuodTextView* documentView() const override;
    [[nodiscard]] TextLayout* textLayout() const override;

  private:
    [[nodiscard]] Rect visibleDocumentArea() const;

    QPointer<TextViewWidget> widget_;
    // The platform's layout lays out lazily behind const queries; this one keeps nothing.
    mutable TextViewLayout layout_;
    QMetaObject::Connection visibleAreaObserver_;
};

}  // namespace quod
