// A menu item that either runs a closure or names an action for the host to dispatch.
//
//   - MenuItem(title, closure, keyEquivalent): its action is "performAction" (`performActionName`)
//     and triggering it runs the closure, so a menu built in code needs no receiver object. An
//     empty closure makes an item that does nothing.
//   - MenuItem(title, action, keyEquivalent): an ordinary item carrying the action's name; the
//     host decides what triggering it does (validation, as in FixedToolbarPanel, reads the name).
//
// `keyEquivalent` is anything QKeySequence reads in portable form ("Ctrl+Shift+K"); empty for
// none, and text QKeySequence does not understand gives no shortcut.
//
//     menu->addAction(new MenuItem("Reload", [this] { reload(); }, "Ctrl+R", menu));
#pragma once

#include <QAction>
#include <functional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT MenuItem : public QAction {
    Q_OBJECT

  public:
    static constexpr std::string_view performActionName = "performAction";

    MenuItem(const QString& title, std::function<void()> closure, const QString& keyEquivalent,
             QObject* parent = nullptr);
    MenuItem(const QString& title, std::string action, const QString& keyEquivalent,
             QObject* parent = nullptr);

    // The action's name; empty when the item has none.
    [[nodiscard]] const std::string& action() const { return action_; }

  public Q_SLOTS:
    // Runs the closure, if the item has one.
    void performAction();

  private:
    std::string action_;
    std::function<void()> closure_;
};

}  // namespace quod
