// The Themes menu: the four built-in themes of Theme::all, one checkable item each.
//
// Choosing a theme applies it the host's way: every entry of the theme dictionary is stored under
// its key in the standard preferences store (colours as four-number arrays, fonts as font
// strings), "CurrentTheme" gets the theme's number, "HasManuallyChangedTheme" becomes true, and
// "ThemeChanged" is posted. Views repaint from the preferences when they hear it, so a theme
// stored by anyone else (another window, another process followed by a post) shows the same way.
// The check mark follows "CurrentTheme" whenever "ThemeChanged" is posted.
//
// Until the user chooses a theme, one is in effect all the same: `registerDefaultTheme` puts the
// entries of `defaultTheme()` and its number in the standard store's registration domain (read
// after the user's own settings, never written anywhere). So the gutter's numbers, the text and
// the colours are the theme's from the first window on, exactly as they are once that theme is
// chosen, and nothing reaches the user's settings until the user picks one.
#pragma once

#include <QActionGroup>
#include <QMenuBar>
#include <QObject>

#include "quoddle/base/Signal.h"
#include "quoddle/preferences/Theme.h"

namespace quod::demo {

class ThemeMenu : public QObject {
    Q_OBJECT

  public:
    explicit ThemeMenu(QMenuBar& bar);

    static void applyTheme(Theme::City city);

    // Oslo (the dark theme) on a dark desktop (ThemePalette::desktopIsDark), else Stockholm.
    [[nodiscard]] static Theme::City defaultTheme();
    // Registers defaultTheme() in the current standard store; call it after choosing the store
    // and before the first window.
    static void registerDefaultTheme();

    // "Stockholm", "Copenhagen", "Oslo", "Helsinki".
    [[nodiscard]] static QString themeName(Theme::City city);

  private:
    void checkCurrentTheme();

    QActionGroup* group_;
    Connection themeChanged_;
};

}  // namespace quod::demo
