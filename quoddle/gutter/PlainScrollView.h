// A scroll view without a toolkit: a QuodTextView laid out by a MonospacedTextLayout, seen through
// a viewport of a given size at a given scroll position.
//
// For hosts that draw text themselves (a terminal, a headless renderer) and for tests and
// benchmarks. The clip view's bounds, the document's visible rectangle and the clip view's
// visible rectangle are all the viewport at the scroll position; the scroll view's own visible
// rectangle is the viewport at the origin. The text view is held weakly: once it is gone there is
// no document view, and the layout answers as for an empty text.
#pragma once

#include <memory>

#include "quoddle/Export.h"
#include "quoddle/gutter/MonospacedTextLayout.h"
#include "quoddle/gutter/ScrollViewGeometry.h"

namespace quod {

class QUODDLE_EXPORT PlainScrollView : public ScrollViewGeometry {
  public:
    PlainScrollView(const std::shared_ptr<QuodTextView>& textView,
                    MonospacedTextLayout::Metrics metrics, Size viewportSize);

    [[nodiscard]] Rect visibleRect() const override { return {{0, 0}, viewportSize_}; }
    [[nodiscard]] Rect documentVisibleRect() const override { return viewport(); }
    [[nodiscard]] Rect contentViewBounds() const override { return viewport(); }
    [[nodiscard]] Rect contentViewVisibleRect() const override { return viewport(); }
    [[nodiscard]] QuodTextView* documentView() const override { return textView_.lock().get(); }
    [[nodiscard]] TextLayout* textLayout() const override { return &layout_; }

    // Both announce the new bounds (when bounds-changed notifications are on).
    void scrollTo(Point origin);
    void setViewportSize(Size size);

  private:
    [[nodiscard]] Rect viewport() const { return {scrollPosition_, viewportSize_}; }

    std::weak_ptr<QuodTextView> textView_;
    // Queries of the platform's layout lay text out as needed; this one has nothing to cache.
    mutable MonospacedTextLayout layout_;
    Size viewportSize_;
    Point scrollPosition_;
};

}  // namespace quod
