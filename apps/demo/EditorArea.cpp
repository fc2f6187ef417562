#include "demo/EditorArea.h"

#include "quoddle/preferences/Color.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/qt/QtConversions.h"

namespace quod::demo {

int tabWidthPreference() {
    const int64_t width = Defaults::tabWidth.get();
    return width > 0 && width <= 64 ? static_cast<int>(width) : 4;
}

EditorArea::EditorArea(std::shared_ptr<QuodTextView> view, QWidget* parent)
    : EditorPane(std::move(view), parent) {
    setFocusProxy(&textView());
    applyThemeColors();
    applyTextFont();
    applyTabWidth();
}

void EditorArea::setTextView(std::shared_ptr<QuodTextView> view) {
    textView().setTextView(std::move(view));
}

void EditorArea::applyThemeColors() {
    // An invalid colour (a pattern, which Qt cannot draw without its image) leaves the old one.
    const QColor text = toQColor(Color::forKey(Defaults::Key::Color::text));
    const QColor background = toQColor(Color::forKey(Defaults::Key::Color::background));
    if (text.isValid()) textView().setTextColor(text);
    if (background.isValid()) textView().setBackgroundColor(background);
}

void EditorArea::applyTabWidth() {
    textView().setTabWidth(tabWidthPreference());
}

void EditorArea::applyTextFont() {
    if (!UserDefaults::standard()->objectForKey(Defaults::textFont.key())) return;
    textView().setFont(toQFont(Defaults::textFont.get()));
}

}  // namespace quod::demo
