// Desktop notifications: a title and text shown by the desktop's notification server, with
// buttons for the actions of the notification's category, and the user's choice reported back.
//
// Notifications go to the org.freedesktop.Notifications service on the session bus (D-Bus),
// which every Linux desktop provides. A host registers its categories once (an identifier and
// the actions, each an identifier and a localized button title) and posts notifications with
// `Interface::notification(title, text, identifier, categoryIdentifier, subtitle)`:
//
//     UserNotificationCenter::current().setNotificationCategories(
//         {{"JobFailed", {{"Show", Localize::show()}, {"Restart", Localize::relaunch()}}}});
//     UserNotificationCenter::current().setDelegate(delegate);   // a shared_ptr the host keeps
//     Interface::notification("Backup failed", "Exit status 2", "job-17", "JobFailed", "");
//     // the user presses "Restart": delegate->didReceive({"Restart", "job-17"}) on the main thread
//
// Showing. The title is the notification's summary; the body is the subtitle, a line break and
// the text (the text alone without a subtitle). A server that reads markup in bodies gets both
// escaped, with the subtitle in bold. A category's actions become the server's action buttons in
// the order registered; a notification with no category, or one that is not registered, has
// none. Every notification also asks for the server's default action (the user clicks the
// notification itself), which comes back as NotificationResponse::defaultActionIdentifier. A
// notification posted with the identifier of one still shown replaces it. Servers that show no
// buttons (they lack the "actions" capability) show the notification without them.
//
// Answers. When the user picks an action, the delegate's `didReceive` is called on the main
// thread (RunLoop::main()) with the action's identifier and the notification's identifier. The
// delegate is held weakly and read at delivery: a delegate that is gone is told nothing.
//
// Failure is quiet. Without a session bus, without a notification server, or with a server that
// does not answer within `replyTimeout`, the notification is simply not shown; a host that wants
// to know passes a completion, called on the main thread with true once the server has taken the
// notification and false otherwise. The caller never waits: the D-Bus work happens on a thread
// of the framework's own, started with the first notification and kept for the life of the
// process. The bus is the one $DBUS_SESSION_BUS_ADDRESS names at the time of each post (else the
// user's default session bus); a new address gets a new connection, and answers still come from
// the notifications sent over the old one only while it stays open.
//
// `setNotificationCategories`, `setDelegate` and `add` may be called from any thread.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"

namespace quod {

struct NotificationAction {
    std::string identifier;
    std::string title;  // the button's text, localized

    friend bool operator==(const NotificationAction&, const NotificationAction&) = default;
};

struct NotificationCategory {
    std::string identifier;
    std::vector<NotificationAction> actions;

    friend bool operator==(const NotificationCategory&, const NotificationCategory&) = default;
};

struct NotificationContent {
    std::string title;
    std::string subtitle;
    std::string body;
    std::string categoryIdentifier;
};

// What the user did with a notification.
struct NotificationResponse {
    // The user clicked the notification itself rather than one of its buttons.
    static constexpr std::string_view defaultActionIdentifier = "default";

    std::string actionIdentifier;
    std::string notificationIdentifier;

    friend bool operator==(const NotificationResponse&, const NotificationResponse&) = default;
};

class QUODDLE_EXPORT UserNotificationCenterDelegate {
  public:
    virtual ~UserNotificationCenterDelegate() = default;
    virtual void didReceive(const NotificationResponse& response) = 0;
};

class QUODDLE_EXPORT UserNotificationCenter {
  public:
    using Completion = std::function<void(bool delivered)>;

    // How long the server has to answer a call before the notification is given up.
    static constexpr std::chrono::milliseconds replyTimeout{3000};

    // The process's one center, made on first use and never destroyed.
    [[nodiscard]] static UserNotificationCenter& current();

    void setNotificationCategories(std::vector<NotificationCategory> categories);
    [[nodiscard]] std::vector<NotificationCategory> notificationCategories() const;

    void setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate);

    // Shows `content` as the notification `identifier`; see above.
    void add(std::string identifier, NotificationContent content, Completion completion = {});

    UserNotificationCenter(const UserNotificationCenter&) = delete;
    UserNotificationCenter& operator=(const UserNotificationCenter&) = delete;

  private:
    UserNotificationCenter() = default;
    ~UserNotificationCenter() = default;
};

namespace Interface {

// UserNotificationCenter::current().add(identifier, {title, subtitle, text, categoryIdentifier},
// completion). An empty `categoryIdentifier` or `subtitle` means none.
QUODDLE_EXPORT void notification(std::string_view title, std::string_view text,
                                 std::string_view identifier,
                                 std::string_view categoryIdentifier = {},
                                 std::string_view subtitle = {},
                                 UserNotificationCenter::Completion completion = {});

}  // namespace Interface
}  // namespace quod
