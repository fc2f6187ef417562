// A TextViewWidget's layout, as the core's TextLayout: what the gutter asks about lines.
//
// The widget lays every line of its document out as one line of the font's height, without
// wrapping, at document y = line × lineHeight; its text starts `textInsetX` to the right of the
// viewport's edge and has no top margin. That is exactly the core's MonospacedTextLayout, so each
// query is answered by one made from the widget's document and line height of the moment: the
// answers follow edits, a new font and a new document without being told. Coordinates are the
// text container's (viewport coordinates plus the scroll position, less the inset), and the text
// container inset is (textInsetX, 0).
//
// The widget is watched, not owned: once it is destroyed every query answers as for an empty
// layout (zero rectangles, the range (0, 0)). Queries cost O(log lines). Main thread only.
#pragma once

#include <QPointer>

#include "quoddle/gutter/MonospacedTextLayout.h"
#include "quoddle/gutter/TextLayout.h"

namespace quod {

class TextViewWidget;

class TextViewLayout : public TextLayout {
  public:
    explicit TextViewLayout(TextViewWidget& widget);

    [[nodiscard]] Rect lineFragmentRectForCharacter(int64_t index) const override;
    [[nodiscard]] Rect extraLineFragmentRect() const override;
    [[nodiscard]] Range characterRangeForBoundingRect(Rect rect) const override;
    [[nodiscard]] Size textContainerInset() const override;

  private:
    [[nodiscard]] MonospacedTextLayout current() const;

    QPointer<TextViewWidget> widget_;
};

}  // namespace quod
