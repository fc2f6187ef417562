// The Themes preferences: the four built-in themes in a list. Choosing one applies it as the
// Themes menu does (ThemeMenu::applyTheme, which posts "ThemeChanged"), and the list's selection
// follows "CurrentTheme" whenever "ThemeChanged" is posted, whoever applied the theme.
#pragma once

#include <QListWidget>

#include "quoddle/base/Signal.h"
#include "quoddle/qt/PreferenceTabViewController.h"

namespace quod::demo {

class ThemesPane : public PreferenceTabViewController, public PreferenceTabType {
    Q_OBJECT

  public:
    explicit ThemesPane(QWidget* parent = nullptr);

    [[nodiscard]] QString tabLabel() const override;
    [[nodiscard]] std::optional<QIcon> tabImage() const override;

    [[nodiscard]] QListWidget& themes() { return *themes_; }

  private:
    void selectCurrentTheme();

    QListWidget* themes_;
    Connection themeChanged_;
};

}  // namespace quod::demo
