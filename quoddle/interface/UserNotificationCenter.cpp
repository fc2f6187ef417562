#include "quoddle/interface/UserNotificationCenter.h"

#include <gio/gio.h>

#include <algorithm>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "quoddle/interface/GLibPointers.h"
#include "quoddle/runtime/Bundle.h"
#include "quoddle/runtime/RunLoop.h"

namespace quod {
namespace {

using internal::GString;
using internal::GVariantPointer;

constexpr const char* serviceName = "org.freedesktop.Notifications";
constexpr const char* objectPath = "/org/freedesktop/Notifications";
constexpr const char* interfaceName = "org.freedesktop.Notifications";
// A bus address that leads to a host that does not answer must not hold notifications up for
// the minutes a TCP connection takes to give up.
constexpr std::chrono::milliseconds connectTimeout{2000};

// What the host sets, from any thread.
struct Registry {
    std::mutex mutex;
    std::vector<NotificationCategory> categories;
    std::weak_ptr<UserNotificationCenterDelegate> delegate;
};

Registry& registry() {
    static auto* const shared = new Registry;
    return *shared;
}

void deliver(const NotificationResponse& response) {
    std::shared_ptr<UserNotificationCenterDelegate> delegate;
    {
        const std::lock_guard lock(registry().mutex);
        delegate = registry().delegate.lock();
    }
    if (delegate) delegate->didReceive(response);
}

void complete(UserNotificationCenter::Completion& completion, bool delivered) {
    if (!completion) return;
    RunLoop::main().post(
        [completion = std::move(completion), delivered] { completion(delivered); });
}

// D-Bus strings must be UTF-8; a host's text may not be.
std::string validUtf8(std::string_view text) {
    const GString valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    return valid.get();
}

std::string escapedMarkup(const std::string& text) {
    const GString escaped(g_markup_escape_text(text.c_str(), -1));
    return escaped.get();
}

std::string body(const NotificationContent& content, bool markup) {
    const std::string subtitle = validUtf8(content.subtitle);
    const std::string text = validUtf8(content.body);
    if (!markup) return subtitle.empty() ? text : subtitle + "\n" + text;
    if (subtitle.empty()) return escapedMarkup(text);
    return "<b>" + escapedMarkup(subtitle) + "</b>\n" + escapedMarkup(text);
}

struct Request {
    std::string identifier;
    NotificationContent content;
    std::vector<NotificationAction> actions;  // the category's, as registered when posted
    UserNotificationCenter::Completion completion;
};

// The D-Bus side: one connection to the session bus, used only on a thread of its own, whose
// GLib main context also receives the server's signals.
class NotificationThread {
  public:
    static NotificationThread& shared() {
        static auto* const thread = new NotificationThread;
        return *thread;
    }

    void send(Request request) {
        {
            const std::lock_guard lock(mutex_);
            requests_.push_back(std::move(request));
        }
        // The requests go through a queue of our own rather than as the callback's data, so that
        // the hand-over is one that thread checkers can see (GLib locks with bare futexes).
        g_main_context_invoke(
            context_,
            [](gpointer) -> gboolean {
                shared().handleRequests();
                return G_SOURCE_REMOVE;
            },
            nullptr);
    }

  private:
    NotificationThread() : context_(g_main_context_new()) {
        std::thread([this] {
            g_main_context_push_thread_default(context_);
            GMainLoop* const loop = g_main_loop_new(context_, FALSE);
            g_main_loop_run(loop);
        }).detach();
    }

    void handleRequests() {
        for (;;) {
            std::optional<Request> request;
            {
                const std::lock_guard lock(mutex_);
                if (requests_.empty()) return;
                request.emplace(std::move(requests_.front()));
                requests_.pop_front();
            }
            handle(*request);
        }
    }

    void handle(Request& request) {
        if (!connect()) return complete(request.completion, false);
        const auto capabilities = serverCapabilities();
        if (!capabilities) return complete(request.completion, false);
        const bool markup = std::ranges::find(*capabilities, "body-markup") != capabilities->end();

        GVariantBuilder actions;
        g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
        g_variant_builder_add(&actions, "s", NotificationResponse::defaultActionIdentifier.data());
        g_variant_builder_add(&actions, "s", "");
        for (const NotificationAction& action : request.actions) {
            g_variant_builder_add(&actions, "s", validUtf8(action.identifier).c_str());
            g_variant_builder_add(&actions, "s", validUtf8(action.title).c_str());
        }
        GVariantBuilder hints;
        g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));

        guint32 replaces = 0;
        for (const auto& [id, identifier] : shown_) {
            if (identifier == request.identifier) replaces = id;
        }
        const std::string application =
            validUtf8(internal::runningExecutablePath().filename().string());
        const std::string title = validUtf8(request.content.title);
        GError* error = nullptr;
        const GVariantPointer reply(g_dbus_connection_call_sync(
            connection_, serviceName, objectPath, interfaceName, "Notify",
            g_variant_new("(susssasa{sv}i)", application.c_str(), replaces, "", title.c_str(),
                          body(request.content, markup).c_str(), &actions, &hints, -1),
            G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE,
            static_cast<gint>(UserNotificationCenter::replyTimeout.count()), nullptr, &error));
        if (!reply) {
            g_error_free(error);
            return complete(request.completion, false);
        }
        guint32 id = 0;
        g_variant_get(reply.get(), "(u)", &id);
        std::erase_if(shown_,
                      [&](const auto& entry) { return entry.second == request.identifier; });
        shown_[id] = request.identifier;
        complete(request.completion, true);
    }

    std::optional<std::vector<std::string>> serverCapabilities() {
        GError* error = nullptr;
        const GVariantPointer reply(g_dbus_connection_call_sync(
            connection_, serviceName, objectPath, interfaceName, "GetCapabilities", nullptr,
            G_VARIANT_TYPE("(as)"), G_DBUS_CALL_FLAGS_NONE,
            static_cast<gint>(UserNotificationCenter::replyTimeout.count()), nullptr, &error));
        if (!reply) {
            g_error_free(error);
            return std::nullopt;
        }
        GVariantIter* iterator = nullptr;
        g_variant_get(reply.get(), "(as)", &iterator);
        std::vector<std::string> capabilities;
        const gchar* capability = nullptr;
        while (g_variant_iter_next(iterator, "&s", &capability))
            capabilities.emplace_back(capability);
        g_variant_iter_free(iterator);
        return capabilities;
    }

    // A connection to the session bus that the environment names now.
    bool connect() {
        GError* error = nullptr;
        const GString address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, &error));
        if (!address) {
            g_error_free(error);
            disconnect();
            return false;
        }
        if (connection_ != nullptr && !g_dbus_connection_is_closed(connection_) &&
            address_ == address.get()) {
            return true;
        }
        disconnect();
        connection_ = open(address.get());
        if (connection_ == nullptr) return false;
        address_ = address.get();
        g_dbus_connection_set_exit_on_close(connection_, FALSE);
        actionInvoked_ = g_dbus_connection_signal_subscribe(
            connection_, serviceName, interfaceName, "ActionInvoked", objectPath, nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, &NotificationThread::actionInvoked, this, nullptr);
        notificationClosed_ = g_dbus_connection_signal_subscribe(
            connection_, serviceName, interfaceName, "NotificationClosed", objectPath, nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, &NotificationThread::notificationClosed, this, nullptr);
        return true;
    }

    // Connects with a time limit: the connection is made in a context of its own, so that
    // nothing else runs on this thread meanwhile.
    static GDBusConnection* open(const char* address) {
        struct Attempt {
            GDBusConnection* connection = nullptr;
            bool finished = false;
        } attempt;
        GMainContext* const waiting = g_main_context_new();
        g_main_context_push_thread_default(waiting);
        GCancellable* const cancellable = g_cancellable_new();
        g_dbus_connection_new_for_address(
            address,
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, cancellable,
            [](GObject*, GAsyncResult* result, gpointer data) {
                auto* const attempt = static_cast<Attempt*>(data);
                GError* error = nullptr;
                attempt->connection = g_dbus_connection_new_for_address_finish(result, &error);
                if (error != nullptr) g_error_free(error);
                attempt->finished = true;
            },
            &attempt);
        GSource* const timeout = g_timeout_source_new(static_cast<guint>(connectTimeout.count()));
        g_source_set_callback(
            timeout,
            [](gpointer data) -> gboolean {
                g_cancellable_cancel(static_cast<GCancellable*>(data));
                return G_SOURCE_REMOVE;
            },
            cancellable, nullptr);
        g_source_attach(timeout, waiting);
        while (!attempt.finished)
            g_main_context_iteration(waiting, TRUE);
        g_source_destroy(timeout);
        g_source_unref(timeout);
        g_object_unref(cancellable);
        g_main_context_pop_thread_default(waiting);
        g_main_context_unref(waiting);
        return attempt.connection;
    }

    void disconnect() {
        if (connection_ == nullptr) return;
        g_dbus_connection_signal_unsubscribe(connection_, actionInvoked_);
        g_dbus_connection_signal_unsubscribe(connection_, notificationClosed_);
        g_dbus_connection_close(connection_, nullptr, nullptr, nullptr);
        g_object_unref(connection_);
        connection_ = nullptr;
        address_.clear();
        shown_.clear();
    }

    static void actionInvoked(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                              const gchar*, GVariant* parameters, gpointer data) {
        if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(us)"))) return;
        auto* const self = static_cast<NotificationThread*>(data);
        guint32 id = 0;
        const gchar* action = nullptr;
        g_variant_get(parameters, "(u&s)", &id, &action);
        const auto shown = self->shown_.find(id);
        if (shown == self->shown_.end()) return;
        RunLoop::main().post(
            [response = NotificationResponse{action, shown->second}] { deliver(response); });
    }

    static void notificationClosed(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                                   const gchar*, GVariant* parameters, gpointer data) {
        if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(uu)"))) return;
        guint32 id = 0;
        guint32 reason = 0;
        g_variant_get(parameters, "(uu)", &id, &reason);
        static_cast<NotificationThread*>(data)->shown_.erase(id);
    }

    GMainContext* const context_;
    std::mutex mutex_;
    std::deque<Request> requests_;  // guarded by mutex_
    // This thread's alone:
    GDBusConnection* connection_ = nullptr;
    std::string address_;
    guint actionInvoked_ = 0;
    guint notificationClosed_ = 0;
    std::map<guint32, std::string> shown_;  // the server's id -> the host's identifier
};

}  // namespace

UserNotificationCenter& UserNotificationCenter::current() {
    static auto* const center = new UserNotificationCenter;
    return *center;
}

void UserNotificationCenter::setNotificationCategories(
    std::vector<NotificationCategory> categories) {
    const std::lock_guard lock(registry().mutex);
    registry().categories = std::move(categories);
}

std::vector<NotificationCategory> UserNotificationCenter::notificationCategories() const {
    const std::lock_guard lock(registry().mutex);
    return registry().categories;
}

void UserNotificationCenter::setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) {
    const std::lock_guard lock(registry().mutex);
    registry().delegate = std::move(delegate);
}

void UserNotificationCenter::add(std::string identifier, NotificationContent content,
                                 Completion completion) {
    std::vector<NotificationAction> actions;
    if (!content.categoryIdentifier.empty()) {
        const std::lock_guard lock(registry().mutex);
        const auto category = std::ranges::find(registry().categories, content.categoryIdentifier,
                                                &NotificationCategory::identifier);
        if (category != registry().categories.end()) actions = category->actions;
    }
    NotificationThread::shared().send(
        {std::move(identifier), std::move(content), std::move(actions), std::move(completion)});
}

namespace Interface {

void notification(std::string_view title, std::string_view text, std::string_view identifier,
                  std::string_view categoryIdentifier, std::string_view subtitle,
                  UserNotificationCenter::Completion completion) {
    UserNotificationCenter::current().add(std::string(identifier),
                                          {std::string(title), std::string(subtitle),
                                           std::string(text), std::string(categoryIdentifier)},
                                          std::move(completion));
}

}  // namespace Interface
}  // namespace quod
