#include "quoddle/qt/SegmentedControl.h"

#include <QAbstractButton>
#include <QHBoxLayout>
#include <QToolButton>

namespace quod {

SegmentedControl::SegmentedControl(QWidget* parent)
    : QWidget(parent), layout_(new QHBoxLayout(this)) {
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(0);
    // Not exclusive: an exclusive group cannot show "none selected".
    group_.setExclusive(false);
    connect(&group_, &QButtonGroup::idClicked, this, [this](int segment) {
        setSelectedSegment(segment);
        Q_EMIT segmentChosen(this);
    });
}

void SegmentedControl::addSegment(const QString& label, const QIcon& image) {
    auto* button = new QToolButton(this);
    button->setText(label);
    button->setIcon(image);
    button->setCheckable(true);
    button->setAutoRaise(false);
    button->setToolButtonStyle(image.isNull() ? Qt::ToolButtonTextOnly
                                              : Qt::ToolButtonTextBesideIcon);
    group_.addButton(button, segmentCount());
    layout_->addWidget(button);
}

int SegmentedControl::segmentCount() const {
    return int(group_.buttons().size());
}

QString SegmentedControl::labelForSegment(int segment) const {
    const auto* button = group_.button(segment);
    return button ? button->text() : QString();
}

int SegmentedControl::selectedSegment() const {
    for (auto* button : group_.buttons()) {
        if (button->isChecked()) return group_.id(button);
    }
    return -1;
}

void SegmentedControl::setSelectedSegment(int segment) {
    for (auto* button : group_.buttons())
        button->setChecked(group_.id(button) == segment);
}

}  // namespace quod
