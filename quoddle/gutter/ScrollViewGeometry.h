// What the gutter needs to know about the scroll view beside it: where the text is scrolled to,
// which text view it shows, and when the scroll position changes.
//
// The toolkit layer implements this over its real scroll view. All rectangles are in the
// platform's terms, flipped (y downwards):
//   - `visibleRect`: the scroll view's own visible part, in its own coordinates;
//   - `documentVisibleRect`: the part of the text view that shows, in the text view's coordinates;
//   - `contentViewBounds`: the clip view's bounds, whose origin is the scroll position;
//   - `contentViewVisibleRect`: the clip view's visible part, in its own coordinates.
// `documentView` is the text view shown, or null when there is none or it is not a
// `QuodTextView`; `textLayout` is its layout, or null when it has no layout or text container.
// Both pointers are valid until the next change of the scroll view's contents.
//
// Scrolling is announced through `contentViewBoundsDidChange`, but only after someone turned
// bounds-changed notifications on, as the platform's clip view does: implementations call
// `contentViewBoundsChanged()` whenever the bounds change and it decides. Observers hold this
// object weakly (std::weak_ptr), so the scroll view may go away first.
#pragma once

#include "quoddle/Export.h"
#include "quoddle/base/Geometry.h"
#include "quoddle/base/Signal.h"
#include "quoddle/gutter/TextLayout.h"
#include "quoddle/text/QuodTextView.h"

namespace quod {

class QUODDLE_EXPORT ScrollViewGeometry {
  public:
    virtual ~ScrollViewGeometry() = default;

    [[nodiscard]] virtual Rect visibleRect() const = 0;
    [[nodiscard]] virtual Rect documentVisibleRect() const = 0;
    [[nodiscard]] virtual Rect contentViewBounds() const = 0;
    [[nodiscard]] virtual Rect contentViewVisibleRect() const = 0;
    [[nodiscard]] virtual QuodTextView* documentView() const = 0;
    [[nodiscard]] virtual TextLayout* textLayout() const = 0;

    [[nodiscard]] bool postsBoundsChangedNotifications() const { return postsBoundsChanged_; }
    void setPostsBoundsChangedNotifications(bool posts) { postsBoundsChanged_ = posts; }

    Signal<ScrollViewGeometry> contentViewBoundsDidChange;

  protected:
    void contentViewBoundsChanged() {
        if (postsBoundsChanged_) contentViewBoundsDidChange.emit();
    }

  private:
    bool postsBoundsChanged_ = false;
};

}  // namespace quod
