#include "demo/ThemeMenu.h"

#include <QMenu>

#include "demo/ThemePalette.h"
#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/NotificationCenter.h"

namespace quod::demo {

ThemeMenu::ThemeMenu(QMenuBar& bar) : QObject(&bar), group_(new QActionGroup(this)) {
    QMenu* menu = bar.addMenu(QString::fromStdString(Localize::themes()));
    for (int64_t index = 0; index < static_cast<int64_t>(Theme::all().size()); ++index) {
        const Theme::City city = *Theme::cityFromRawValue(index);
        QAction* action = menu->addAction(themeName(city));
        action->setObjectName(QString("theme.%1").arg(index));
        action->setCheckable(true);
        action->setData(QVariant::fromValue(index));
        group_->addAction(action);
        connect(action, &QAction::triggered, this, [city] { applyTheme(city); });
    }
    checkCurrentTheme();
    themeChanged_ =
        Notifications().addObserver(NotificationName::themeChanged().rawValue(), nullptr,
                                    [this](const Notification&) { checkCurrentTheme(); });
}

void ThemeMenu::applyTheme(Theme::City city) {
    const auto& theme = Theme::all().at(static_cast<std::size_t>(city));
    UserDefaults::standard()->setObjects(theme);
    Defaults::currentTheme.set(static_cast<int64_t>(city));
    Defaults::hasManuallyChangedTheme.set(true);
    Notifications().post(NotificationName::themeChanged());
}

Theme::City ThemeMenu::defaultTheme() {
    return ThemePalette::desktopIsDark() ? Theme::City::oslo : Theme::City::stockholm;
}

void ThemeMenu::registerDefaultTheme() {
    const Theme::City city = defaultTheme();
    PlistDictionary defaults = Theme::all().at(static_cast<std::size_t>(city));
    defaults.insert_or_assign(std::string(Defaults::currentTheme.key()),
                              PlistValue(static_cast<int64_t>(city)));
    UserDefaults::standard()->registerDefaults(defaults);
}

QString ThemeMenu::themeName(Theme::City city) {
    switch (city) {
        case Theme::City::stockholm:
            return "Stockholm";
        case Theme::City::copenhagen:
            return "Copenhagen";
        case Theme::City::oslo:
            return "Oslo";
        case Theme::City::helsinki:
            return "Helsinki";
    }
    return {};
}

void ThemeMenu::checkCurrentTheme() {
    const int64_t current = Defaults::currentTheme.get();
    for (QAction* action : group_->actions()) {
        action->setChecked(action->data().toLongLong() == current);
    }
}

}  // namespace quod::demo
