// An item delegate that draws each item's text vertically centred in its text area, whatever the
// row height, instead of at the top.
//
// `titleRect(bounds, option)` is Interface::centeredTitleRect (ViewRules.h) of `bounds` with the
// text's natural height in `option.font`: one line's height plus a line spacing for each further
// line of `option.text`. Text taller than the bounds starts above them by half the excess and is
// not clipped to the row, so it overflows evenly at the top and bottom; that is intended.
// `paint` draws the item as the style does (background, selection, icon, focus) and the text in
// that rectangle, keeping the item's horizontal alignment and eliding a single line that is too
// wide.
#pragma once

#include <QRectF>
#include <QStyledItemDelegate>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT VerticallyCenteredTextFieldCell : public QStyledItemDelegate {
    Q_OBJECT

  public:
    explicit VerticallyCenteredTextFieldCell(QObject* parent = nullptr);

    [[nodiscard]] QRectF titleRect(const QRectF& bounds, const QStyleOptionViewItem& option) const;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};

}  // namespace quod
