#include "quoddle/qt/EditorPane.h"

#include <QBoxLayout>
#include <algorithm>
#include <utility>

#include "quoddle/qt/GutterWidget.h"
#include "quoddle/qt/TextViewWidget.h"

namespace quod {

EditorPane::EditorPane(std::shared_ptr<QuodTextView> view, QWidget* parent)
    : QWidget(parent),
      textView_(new TextViewWidget(std::move(view), this)),
      gutter_(new GutterWidget(*textView_, this)),
      corner_(new QWidget(this)) {
    textView_->setFrameShape(QFrame::NoFrame);
    corner_->setFixedHeight(0);

    auto* column = new QVBoxLayout;
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(gutter_, 1);
    column->addWidget(corner_);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addLayout(column);
    row->addWidget(textView_, 1);

    // The corner takes whatever the text view has below its viewport (the horizontal scroll bar).
    connect(textView_, &TextViewWidget::visibleAreaChanged, this, [this] {
        corner_->setFixedHeight(std::max(0, textView_->height() - textView_->viewport()->height()));
    });
}

}  // namespace quod
