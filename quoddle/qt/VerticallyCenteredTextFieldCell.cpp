#include "quoddle/qt/VerticallyCenteredTextFieldCell.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QStyle>

#include "quoddle/interface/ViewRules.h"
#include "quoddle/qt/QtConversions.h"

namespace quod {

VerticallyCenteredTextFieldCell::VerticallyCenteredTextFieldCell(QObject* parent)
    : QStyledItemDelegate(parent) {}

QRectF VerticallyCenteredTextFieldCell::titleRect(const QRectF& bounds,
                                                  const QStyleOptionViewItem& option) const {
    const QFontMetricsF metrics(option.font);
    const auto extraLines = static_cast<double>(option.text.count(QLatin1Char('\n')));
    const double naturalHeight = metrics.height() + extraLines * metrics.lineSpacing();
    return toQRectF(Interface::centeredTitleRect(toRect(bounds), naturalHeight));
}

void VerticallyCenteredTextFieldCell::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                            const QModelIndex& index) const {
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    const QWidget* widget = item.widget;
    const QStyle* style = widget != nullptr ? widget->style() : QApplication::style();
    const QString text = item.text;
    const QRectF textArea = style->subElementRect(QStyle::SE_ItemViewItemText, &item, widget);

    // Everything but the text as the style draws it; the text goes where this cell wants it.
    item.text.clear();
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, widget);
    if (text.isEmpty()) return;
    item.text = text;

    const QRectF title = titleRect(textArea, item);
    const QPalette::ColorGroup group = !(item.state & QStyle::State_Enabled) ? QPalette::Disabled
                                       : (item.state & QStyle::State_Active) ? QPalette::Active
                                                                             : QPalette::Inactive;
    const QPalette::ColorRole role =
        (item.state & QStyle::State_Selected) ? QPalette::HighlightedText : QPalette::Text;
    const QString shown =
        text.contains(QLatin1Char('\n'))
            ? text
            : QFontMetricsF(item.font).elidedText(text, item.textElideMode, title.width());
    painter->save();
    painter->setFont(item.font);
    painter->setPen(item.palette.color(group, role));
    const Qt::Alignment horizontal = item.displayAlignment & Qt::AlignHorizontal_Mask;
    painter->drawText(title, static_cast<int>(horizontal | Qt::AlignTop | Qt::TextDontClip), shown);
    painter->restore();
}

}  // namespace quod
