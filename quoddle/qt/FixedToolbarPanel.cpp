#include "quoddle/qt/FixedToolbarPanel.h"

#include <QAction>
#include <QToolBar>

#include "quoddle/qt/MenuItem.h"

namespace quod {

FixedToolbarPanel::FixedToolbarPanel(QWidget* parent)
    : QMainWindow(parent, Qt::Tool), toolbar_(new QToolBar(this)) {
    toolbar_->setObjectName(QStringLiteral("FixedToolbar"));
    toolbar_->setMovable(false);
    toolbar_->setFloatable(false);
    toolbar_->setContextMenuPolicy(Qt::PreventContextMenu);
    toolbar_->toggleViewAction()->setVisible(false);
    toolbar_->toggleViewAction()->setEnabled(false);
    addToolBar(Qt::TopToolBarArea, toolbar_);
}

bool FixedToolbarPanel::validateMenuItem(const MenuItem& item) const {
    const std::string& action = item.action();
    return !action.empty() && action != toggleToolbarShownAction &&
           action != runToolbarCustomizationPaletteAction;
}

void FixedToolbarPanel::toggleToolbarShown(QObject* /*sender*/) {}

void FixedToolbarPanel::runToolbarCustomizationPalette(QObject* /*sender*/) {}

QMenu* FixedToolbarPanel::createPopupMenu() {
    return nullptr;
}

}  // namespace quod
