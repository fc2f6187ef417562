// Bars of commands or choices made from toolbar item identifiers: what stands in on Linux for the
// platform's toolbars and touch bars.
//
// A bar is a list of identifiers (ToolbarItemIdentifier.h). `makeToolbar` turns each, in order,
// into an item of a QToolBar:
//   1. the host's item maker, when one was given, may make a widget of its own for it (a search
//      field, a segmented control); the toolbar then owns that widget;
//   2. otherwise the identifier gets its standard item: `centerSpace` is a space that takes the
//      free width, so the items after it sit at the far end; `backForward` is the Back and Forward
//      buttons side by side; every other catalogued identifier is one button (a QAction named
//      after the identifier's value) labelled from the localized catalogue (`Localize::save()` for
//      `save`), with the desktop icon theme's icon where the theme has one (freedesktop names:
//      "document-save", "list-add"...) and the label alone where it has none;
//   3. an identifier that neither knows (a host's own, with no maker that makes it) is left out.
// `remove` carries the value of `insert`, so it cannot be told apart and shows as Insert.
//
// `makeSegmentedControl` makes a row of exclusive choices (SegmentedControl.h) from items with
// labels and images of their own, such as the preferences window's panes; `standardItem` gives
// the catalogue's label and icon for an identifier to build such items from.
//
// Choosing a button or a segment calls the builder's `itemChosen` with the item's identifier
// (Back or Forward for the two halves of `backForward`). Made widgets keep their own copy of the
// callback, so the builder itself may go at once; the callback must stay valid while they live
// (capture the window that owns the bar, not something shorter-lived). Selecting a segment from
// code calls nothing. Main thread only.
//
//     ToolbarBuilder builder([this](const ToolbarItemIdentifier& item) { run(item); });
//     const ToolbarItemIdentifier items[] = {ToolbarItemIdentifier::open(),
//                                            ToolbarItemIdentifier::centerSpace(),
//                                            ToolbarItemIdentifier::save()};
//     window.addToolBar(builder.makeToolbar(items, &window));
#pragma once

#include <QIcon>
#include <QString>
#include <QToolBar>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/interface/ToolbarItemIdentifier.h"
#include "quoddle/qt/SegmentedControl.h"

namespace quod {

struct ToolbarItem {
    ToolbarItemIdentifier identifier;
    QString label;
    QIcon image;
};

class QUODDLE_EXPORT ToolbarBuilder {
  public:
    using ItemChosen = std::function<void(const ToolbarItemIdentifier&)>;
    // Answers null for identifiers it leaves to the builder.
    using ItemMaker = std::function<QWidget*(const ToolbarItemIdentifier&)>;

    explicit ToolbarBuilder(ItemChosen itemChosen = {}, ItemMaker makeItem = {});

    // A bar that cannot be moved, floated or hidden by the user, parented to `parent`.
    [[nodiscard]] QToolBar* makeToolbar(std::span<const ToolbarItemIdentifier> identifiers,
                                        QWidget* parent = nullptr) const;
    // One segment per item, in order, none selected.
    [[nodiscard]] SegmentedControl* makeSegmentedControl(std::vector<ToolbarItem> items,
                                                         QWidget* parent = nullptr) const;

    // The catalogue's item for `identifier`: localized label, theme icon when there is one. No
    // value for `centerSpace` and `backForward`, which are no single button, and for identifiers
    // the catalogue does not know.
    [[nodiscard]] static std::optional<ToolbarItem> standardItem(
        const ToolbarItemIdentifier& identifier);

  private:
    void addStandardItem(QToolBar& bar, const ToolbarItemIdentifier& identifier) const;

    ItemChosen itemChosen_;
    ItemMaker makeItem_;
};

}  // namespace quod
