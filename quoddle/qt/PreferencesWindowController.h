// The shared preferences window: a WindowController of the `preferences` kind whose content is a
// PreferencesTabViewController, one tab per preference pane.
//
// The window remembers its frame ("PreferencesFrame", rectangle text of the client geometry, see
// WindowFrame.h) and its tab ("PreferencesTab") in the standard defaults, titles itself after the
// selected tab, comes back after a relaunch as the restoration class "Preferences" (see
// WindowRestoration.h) and offers the tabs again as a segmented control. Linux has no touch bar,
// so that control sits in the window's toolbar (made by ToolbarBuilder, its one item being
// `tabSegmentedControlIdentifier`); the names stay those of the touch bar. Where that toolbar
// shows (the window is a QMainWindow), it is the window's only tab switcher: the tab view
// controller takes the `toolbar` tab style and hides its own tab bar.
//
// Loading (`windowDidLoad`):
//   1. WindowController's loading (registration, "Resume"),
//   2. `singleton` becomes `preferences`,
//   3. a stored "PreferencesFrame" that is a usable rectangle becomes the window's frame,
//   4. the restoration class becomes "Preferences",
//   5. the title becomes the localized "Preferences",
//   6. the tab view controller (when it is the content) loads, takes the transition options
//      0x1000 and selects the tab stored under "PreferencesTab",
//   7. the toolbar with the segmented control is built (`makeTouchBar`).
// Moving the window stores its frame at once; choosing a segment stores its index and selects
// that tab.
//
// Applications register a factory that makes this controller under "Preferences" in the main
// Storyboard, and call `registerRestorationClass()` before WindowRestoration::restoreWindows().
#pragma once

#include <QPointer>
#include <QToolBar>
#include <optional>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/qt/PreferencesTabViewController.h"
#include "quoddle/qt/SegmentedControl.h"
#include "quoddle/qt/WindowController.h"
#include "quoddle/qt/WindowRestoration.h"

namespace quod {

class QUODDLE_EXPORT PreferencesWindowController : public WindowController {
    Q_OBJECT

  public:
    static constexpr std::string_view restorationClassIdentifier = "Preferences";
    // The one item of the bar `makeTouchBar` builds.
    static constexpr std::string_view tabSegmentedControlIdentifier = "PreferencesTabSegments";

    // `tabs` becomes the window's content when given.
    explicit PreferencesWindowController(PreferencesTabViewController* tabs = nullptr);

    // Null until `makeTouchBar` has built it.
    [[nodiscard]] SegmentedControl* touchBarTabSegmentedControl() const { return tabControl_; }
    // The content when it is a PreferencesTabViewController, else null.
    [[nodiscard]] PreferencesTabViewController* tabViewController() const;

    void windowDidLoad() override;
    void windowDidMove() override;

    // Stores the sender's selected segment under "PreferencesTab", then selects that tab.
    void switchTab(SegmentedControl* sender);
    // Builds the bar with the tab control (replacing an earlier one) and shows it in the window's
    // toolbar area, when the window is a QMainWindow; the tab view controller then hides its tab
    // bar. Otherwise the bar stays hidden and the tab bar shows.
    QToolBar* makeTouchBar();
    // The item for `identifier`: a new tab control for tabSegmentedControlIdentifier, one segment
    // per tab with the tab's label and image, kept in touchBarTabSegmentedControl(); null for any
    // other identifier.
    QWidget* makeTouchBarItem(std::string_view identifier);
    // Selects the segment stored under "PreferencesTab".
    void updateTouchBarSegmentedControl();

    // The restoration class: a window from the main storyboard's "Preferences" entry (the
    // registered one when it exists already), or no window and no error when there is none.
    static void restoreWindow(std::string_view identifier, const PlistDictionary& state,
                              const WindowRestoration::CompletionHandler& completionHandler);
    static void registerRestorationClass();

  private:
    QPointer<SegmentedControl> tabControl_;
    QPointer<QToolBar> touchBar_;
};

}  // namespace quod
