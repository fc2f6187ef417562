#include "demo/ThemesPane.h"

#include <QSignalBlocker>
#include <QVBoxLayout>

#include "demo/ThemeMenu.h"
#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/NotificationCenter.h"

namespace quod::demo {

ThemesPane::ThemesPane(QWidget* parent)
    : PreferenceTabViewController(parent), themes_(new QListWidget(this)) {
    themes_->setObjectName("themes");
    for (int64_t index = 0; index < static_cast<int64_t>(Theme::all().size()); ++index) {
        themes_->addItem(ThemeMenu::themeName(*Theme::cityFromRawValue(index)));
    }
    selectCurrentTheme();
    connect(themes_, &QListWidget::currentRowChanged, this, [](int row) {
        if (const auto city = Theme::cityFromRawValue(row)) ThemeMenu::applyTheme(*city);
    });
    themeChanged_ =
        Notifications().addObserver(NotificationName::themeChanged().rawValue(), nullptr,
                                    [this](const Notification&) { selectCurrentTheme(); });
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(themes_);
}

QString ThemesPane::tabLabel() const {
    return QString::fromStdString(Localize::themes());
}

std::optional<QIcon> ThemesPane::tabImage() const {
    return QIcon::fromTheme("preferences-desktop-theme");
}

void ThemesPane::selectCurrentTheme() {
    // Showing the stored theme must not apply it again.
    const QSignalBlocker quiet(themes_);
    const int64_t current = Defaults::currentTheme.get();
    themes_->setCurrentRow(current >= 0 && current < themes_->count() ? static_cast<int>(current)
                                                                      : -1);
}

}  // namespace quod::demo
