#include "quoddle/qt/ToolbarBuilder.h"

#include <QAction>
#include <QSizePolicy>
#include <string>

#include "quoddle/runtime/Localize.h"

namespace quod {
namespace {

struct StandardItem {
    const ToolbarItemIdentifier& (*identifier)();
    const std::string& (*label)();
    // A name of the freedesktop icon naming scheme; empty where it has none that fits.
    const char* icon;
};

using Id = ToolbarItemIdentifier;

// `remove` is missing on purpose: its value is `insert`'s, so a lookup by value never reaches it.
// `centerSpace` and `backForward` are no single button (see makeToolbar).
const StandardItem standardItems[] = {
    {&Id::add, &Localize::add, "list-add"},
    {&Id::advancedFind, &Localize::advancedFind, "edit-find-replace"},
    {&Id::back, &Localize::back, "go-previous"},
    {&Id::close, &Localize::close, "window-close"},
    {&Id::deleteString, &Localize::deleteString, "edit-delete"},
    {&Id::documents, &Localize::documents, "x-office-document"},
    {&Id::filter, &Localize::filter, ""},
    {&Id::folders, &Localize::folders, "folder"},
    {&Id::forward, &Localize::forward, "go-next"},
    {&Id::functions, &Localize::functions, ""},
    {&Id::info, &Localize::info, "dialog-information"},
    {&Id::insert, &Localize::insert, "insert-text"},
    {&Id::log, &Localize::log, ""},
    {&Id::mode, &Localize::mode, ""},
    {&Id::newString, &Localize::newString, "document-new"},
    {&Id::open, &Localize::open, "document-open"},
    {&Id::preview, &Localize::preview, "document-print-preview"},
    {&Id::progress, &Localize::progress, ""},
    {&Id::quickLook, &Localize::quickLook, ""},
    {&Id::refresh, &Localize::refresh, "view-refresh"},
    {&Id::run, &Localize::run, "system-run"},
    {&Id::save, &Localize::save, "document-save"},
    {&Id::share, &Localize::share, ""},
    {&Id::sidebar, &Localize::sidebar, ""},
};

}  // namespace

ToolbarBuilder::ToolbarBuilder(ItemChosen itemChosen, ItemMaker makeItem)
    : itemChosen_(std::move(itemChosen)), makeItem_(std::move(makeItem)) {}

std::optional<ToolbarItem> ToolbarBuilder::standardItem(const ToolbarItemIdentifier& identifier) {
    for (const StandardItem& item : standardItems) {
        if (item.identifier() != identifier) continue;
        // Without the theme's icon a named QIcon draws nothing; a null one lets buttons show text
        // alone.
        const QString icon = QString::fromLatin1(item.icon);
        return ToolbarItem{
            identifier, QString::fromStdString(item.label()),
            !icon.isEmpty() && QIcon::hasThemeIcon(icon) ? QIcon::fromTheme(icon) : QIcon()};
    }
    return std::nullopt;
}

QToolBar* ToolbarBuilder::makeToolbar(std::span<const ToolbarItemIdentifier> identifiers,
                                      QWidget* parent) const {
    auto* bar = new QToolBar(parent);
    bar->setMovable(false);
    bar->setFloatable(false);
    // The window's context menu would offer to hide the bar, and with it the only way to its items.
    bar->toggleViewAction()->setVisible(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    for (const ToolbarItemIdentifier& identifier : identifiers) {
        if (makeItem_) {
            if (QWidget* custom = makeItem_(identifier)) {
                bar->addWidget(custom);
                continue;
            }
        }
        addStandardItem(*bar, identifier);
    }
    return bar;
}

void ToolbarBuilder::addStandardItem(QToolBar& bar, const ToolbarItemIdentifier& identifier) const {
    if (identifier == ToolbarItemIdentifier::centerSpace()) {
        auto* space = new QWidget(&bar);
        space->setObjectName(QString::fromStdString(identifier.rawValue()));
        space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        bar.addWidget(space);
        return;
    }
    if (identifier == ToolbarItemIdentifier::backForward()) {
        addStandardItem(bar, ToolbarItemIdentifier::back());
        addStandardItem(bar, ToolbarItemIdentifier::forward());
        return;
    }
    const std::optional<ToolbarItem> item = standardItem(identifier);
    if (!item) return;
    QAction* action = bar.addAction(item->image, item->label);
    action->setObjectName(QString::fromStdString(identifier.rawValue()));
    QObject::connect(action, &QAction::triggered, &bar, [chosen = itemChosen_, identifier] {
        if (chosen) chosen(identifier);
    });
}

SegmentedControl* ToolbarBuilder::makeSegmentedControl(std::vector<ToolbarItem> items,
                                                       QWidget* parent) const {
    auto* control = new SegmentedControl(parent);
    for (const ToolbarItem& item : items)
        control->addSegment(item.label, item.image);
    QObject::connect(control, &SegmentedControl::segmentChosen, control,
                     [chosen = itemChosen_, items = std::move(items)](SegmentedControl* sender) {
                         const int segment = sender->selectedSegment();
                         if (chosen && segment >= 0 && segment < int(items.size()))
                             chosen(items[std::size_t(segment)].identifier);
                     });
    return control;
}

}  // namespace quod
