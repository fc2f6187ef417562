// The content of the preferences window: a tab bar over the preference panes, one tab per pane.
//
// Items. Each item is a pane (any widget; the controller owns it once added) with a label and an
// image. `viewDidLoad()` runs once, when the view first loads (its first show, or
// `loadViewIfNeeded()`), and names every item whose pane adopts PreferenceTabType after the pane's
// `tabLabel()` and `tabImage()`; other items keep what they were added with.
//
// Selection. `selectedTabViewItemIndex()` is -1 until a tab is selected, by the user or by
// `setSelectedTabViewItemIndex`; meanwhile the first pane shows. Selecting an index outside the
// items changes nothing. Each selection shows the pane, sizes the window to it and then calls
// `tabViewDidSelect(index)`, which for the preferences window
//   1. stops unless a PreferencesWindowController is registered (WindowController::retained()),
//   2. stores the index under "PreferencesTab" and mirrors it in that controller's segmented
//      control,
//   3. titles the window after the item's label,
//   4. 0.4 s later (on the main run loop), if this controller still exists and is inside a window,
//      stores the window's frame under "PreferencesFrame": the frame after the resize.
// `viewDidAppear()` titles the window after the selected item, and leaves the title alone when no
// item is selected (a stored tab index that no longer exists, say).
//
// Sizing. The window takes the size that shows the selected pane at its preferred content size
// (PreferenceTabViewController asks for 600 × 100 each time it appears; any other widget at its
// size hint), grown to the pane's minimum size hint and to what the tabs and the window's other
// parts need. The window's top left corner stays where it is.
//
// Tab style. With `tabBar` (the default) the tabs are a tab bar above the panes. With `toolbar`
// the controller shows no tab bar of its own: the window offers the tabs elsewhere, as the
// preferences window does with the segmented control in its toolbar, so that they are not shown
// twice. Selection and sizing work the same either way.
//
// Transition options are kept for hosts that read them; panes switch at once, without animation.
#pragma once

#include <QIcon>
#include <QString>
#include <QWidget>
#include <span>
#include <vector>

#include "quoddle/Export.h"

class QTabBar;

namespace quod {

namespace internal {
class PaneStack;
}

class QUODDLE_EXPORT PreferencesTabViewController : public QWidget {
    Q_OBJECT

  public:
    struct TabViewItem {
        QString label;
        QIcon image;
        QWidget* viewController = nullptr;
    };

    // Options of the platform's tab transitions: user interaction allowed, no animation.
    static constexpr unsigned allowUserInteraction = 0x1000;

    enum class TabStyle { tabBar, toolbar };

    explicit PreferencesTabViewController(QWidget* parent = nullptr);
    ~PreferencesTabViewController() override;

    void addTabViewItem(QWidget* viewController, const QString& label = {},
                        const QIcon& image = {});
    [[nodiscard]] std::span<const TabViewItem> tabViewItems() const { return items_; }

    [[nodiscard]] int selectedTabViewItemIndex() const { return selected_; }
    void setSelectedTabViewItemIndex(int index);

    [[nodiscard]] TabStyle tabStyle() const { return tabStyle_; }
    void setTabStyle(TabStyle style);

    [[nodiscard]] unsigned transitionOptions() const { return transitionOptions_; }
    void setTransitionOptions(unsigned options) { transitionOptions_ = options; }

    [[nodiscard]] bool isViewLoaded() const { return loaded_; }
    void loadViewIfNeeded();

    // Overrides call these first.
    virtual void viewDidLoad();
    virtual void viewDidAppear();
    virtual void tabViewDidSelect(int index);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void setItemLook(int index);
    void sizeWindowToSelectedPane();

    QTabBar* tabBar_;
    internal::PaneStack* stack_;
    std::vector<TabViewItem> items_;
    int selected_ = -1;
    unsigned transitionOptions_ = 0;
    TabStyle tabStyle_ = TabStyle::tabBar;
    bool loaded_ = false;
};

}  // namespace quod
