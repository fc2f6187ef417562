#include "quoddle/qt/CountTableCellView.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include "quoddle/runtime/Localize.h"

namespace quod {

CountTableCellView::CountTableCellView(Badge badge, QWidget* parent)
    : QWidget(parent), textField_(new QLabel(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(2, 0, 2, 0);
    layout->addWidget(textField_, 1);
    if (badge == Badge::count) {
        countButton_ = new QPushButton(this);
        countButton_->setFlat(true);
        countButton_->setFocusPolicy(Qt::NoFocus);  // a label that looks like a button
        countButton_->hide();
        layout->addWidget(countButton_);
    }
    awakeFromNib();
}

void CountTableCellView::awakeFromNib() {
    if (countButton_ == nullptr) return;
    const QString count = QString::fromStdString(Localize::count());
    countButton_->setAccessibleName(count);
    countButton_->setToolTip(count);
}

void CountTableCellView::updateCount(std::int64_t count) {
    if (countButton_ == nullptr) return;
    if (count == 0) {
        countButton_->hide();
        return;
    }
    countButton_->setText(QString::number(count));
    countButton_->show();
}

}  // namespace quod
