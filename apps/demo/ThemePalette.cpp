#include "demo/ThemePalette.h"

#include <QApplication>

#include "quoddle/preferences/Color.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/qt/QtConversions.h"

namespace quod::demo::ThemePalette {
namespace {

bool isDark(const QColor& color) {
    return color.lightnessF() < 0.5;
}

QColor themeColor(Defaults::Key::Color key) {
    return toQColor(Color::forKey(key));
}

}  // namespace

const QPalette& desktopPalette() {
    static const QPalette palette = QApplication::palette();
    return palette;
}

bool desktopIsDark() {
    return isDark(desktopPalette().color(QPalette::Window));
}

QPalette forStoredTheme() {
    using Key = Defaults::Key::Color;
    const QColor background = themeColor(Key::background);
    const QColor text = themeColor(Key::text);
    const QColor frame = themeColor(Key::lineNumberBackground);
    const QColor selection = themeColor(Key::selectedText);
    const QColor faint = themeColor(Key::lineNumberText);
    for (const QColor& color : {background, text, frame, selection, faint}) {
        if (!color.isValid()) return desktopPalette();
    }
    if (isDark(background) == desktopIsDark()) return desktopPalette();

    // Qt derives the shades of bevels and frames (light, mid, dark, shadow) from these two.
    QPalette palette(frame, frame);
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        palette.setColor(group, QPalette::WindowText, text);
        palette.setColor(group, QPalette::ButtonText, text);
        palette.setColor(group, QPalette::Text, text);
        palette.setColor(group, QPalette::BrightText, text);
        palette.setColor(group, QPalette::Base, background);
        palette.setColor(group, QPalette::AlternateBase, frame);
        palette.setColor(group, QPalette::Highlight, selection);
        palette.setColor(group, QPalette::HighlightedText, text);
        palette.setColor(group, QPalette::ToolTipBase, frame);
        palette.setColor(group, QPalette::ToolTipText, text);
        palette.setColor(group, QPalette::PlaceholderText, faint);
    }
    palette.setColor(QPalette::Disabled, QPalette::Base, background);
    for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text}) {
        palette.setColor(QPalette::Disabled, role, faint);
    }
    return palette;
}

void apply() {
    const QPalette wanted = forStoredTheme();
    if (wanted != QApplication::palette()) QApplication::setPalette(wanted);
}

}  // namespace quod::demo::ThemePalette
