#include "demo/EditorArea.h"

#include "quoddle/preferences/Defaults.h"

namespace quod::demo {

QColor toQColor(const Color& color) {
    // Only a pattern has no RGB form; it then draws as the key's fallback would, opaque black.
    const auto rgb = color.usingColorSpace(ColorSpace::sRGB);
    if (!rgb) return Qt::black;
    return QColor::fromRgbF(
        static_cast<float>(rgb->redComponent()), static_cast<float>(rgb->greenComponent()),
        static_cast<float>(rgb->blueComponent()), static_cast<float>(rgb->alphaComponent()));
}

int tabWidthPreference() {
    const int64_t width = Defaults::tabWidth.get();
    return width > 0 && width <= 64 ? static_cast<int>(width) : 4;
}

EditorArea::EditorArea(std::shared_ptr<QuodTextView> view, QWidget* parent)
    : QWidget(parent),
      layout_(new QHBoxLayout(this)),
      textView_(new TextViewWidget(std::move(view), this)) {
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(0);
    layout_->addWidget(textView_, 1);
    setFocusProxy(textView_);
    applyThemeColors();
    applyTabWidth();
}

void EditorArea::setTextView(std::shared_ptr<QuodTextView> view) {
    textView_->setTextView(std::move(view));
}

void EditorArea::setGutter(QWidget* gutter) {
    delete gutter_;
    gutter_ = gutter;
    if (gutter_ != nullptr) layout_->insertWidget(0, gutter_);
}

void EditorArea::applyThemeColors() {
    textView_->setTextColor(toQColor(Color::forKey(Defaults::Key::Color::text)));
    textView_->setBackgroundColor(toQColor(Color::forKey(Defaults::Key::Color::background)));
}

void EditorArea::applyTabWidth() {
    textView_->setTabWidth(tabWidthPreference());
}

}  // namespace quod::demo
