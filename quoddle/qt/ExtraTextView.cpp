#include "quoddle/qt/ExtraTextView.h"

#include "quoddle/preferences/Color.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/qt/QtPlatform.h"

namespace quod {

ExtraTextView::ExtraTextView(std::shared_ptr<QuodTextView> view, QWidget* parent)
    : TextViewWidget(std::move(view), parent) {
    textView().setEditable(false);
    connect(&QtPlatform::install(), &QtPlatform::appearanceChanged, this,
            &ExtraTextView::viewDidChangeEffectiveAppearance);
    viewDidChangeEffectiveAppearance();
}

void ExtraTextView::viewDidChangeEffectiveAppearance() {
    setBackgroundColor(toQColor(Color::textBackgroundColor()));
    setTextColor(toQColor(Color::textColor()));
}

}  // namespace quod
