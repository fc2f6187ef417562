// A tool window whose toolbar is always there: the user can neither hide it nor customise it.
//
// The toolbar cannot be moved, floated or switched off: neither the window nor the toolbar offers
// a context menu with its show/hide entry, and its toggle action is hidden and disabled.
// `validateMenuItem` tells menus the same: false for an item without an action and for the
// "toggleToolbarShown" and "runToolbarCustomizationPalette" actions, true for every other item;
// and those two actions, when they arrive anyway, do nothing.
#pragma once

#include <QMainWindow>
#include <string_view>

#include "quoddle/Export.h"

class QToolBar;

namespace quod {

class MenuItem;

class QUODDLE_EXPORT FixedToolbarPanel : public QMainWindow {
    Q_OBJECT

  public:
    static constexpr std::string_view toggleToolbarShownAction = "toggleToolbarShown";
    static constexpr std::string_view runToolbarCustomizationPaletteAction =
        "runToolbarCustomizationPalette";

    explicit FixedToolbarPanel(QWidget* parent = nullptr);

    [[nodiscard]] QToolBar* toolbar() const { return toolbar_; }

    [[nodiscard]] bool validateMenuItem(const MenuItem& item) const;

  public Q_SLOTS:
    void toggleToolbarShown(QObject* sender = nullptr);
    void runToolbarCustomizationPalette(QObject* sender = nullptr);

  protected:
    // No menu of toolbars to switch off.
    QMenu* createPopupMenu() override;

  private:
    QToolBar* toolbar_;
};

}  // namespace quod
