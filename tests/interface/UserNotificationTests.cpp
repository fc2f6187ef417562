// Desktop notifications over a real session bus: each test starts its own dbus-daemon and, on it,
// a small notification server of its own that records what it is asked to show and can report
// the user's choice as a real server does.
#include <fcntl.h>
#include <gio/gio.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "quoddle/interface/UserNotificationCenter.h"
#include "quoddle/runtime/RunLoop.h"
#include "tests/support/GLibThreadSanitizer.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"

extern char** environ;

namespace quod {
namespace {

using namespace std::chrono_literals;
using quod::testing::ScopedEnvironment;
using quod::testing::TemporaryFolder;

// A private session bus for one test, which $DBUS_SESSION_BUS_ADDRESS names while it lives. Its
// configuration has no service folders, so nothing on the machine can be started on it.
class SessionBus {
  public:
    SessionBus() {
        const std::string config = folder_
                                       .write("bus.conf", R"(<busconfig>
  <type>session</type>
  <listen>unix:dir=)" + folder_.path().string() + R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)")
                                       .string();
        int pipe[2];
        if (::pipe2(pipe, O_CLOEXEC) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
        // It complains of limits it may not raise in a container; nothing a test needs.
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        const std::string configArgument = "--config-file=" + config;
        char* const arguments[] = {
            const_cast<char*>("dbus-daemon"), const_cast<char*>(configArgument.c_str()),
            const_cast<char*>("--nofork"), const_cast<char*>("--print-address=1"), nullptr};
        const int spawned =
            posix_spawnp(&daemon_, "dbus-daemon", &actions, nullptr, arguments, environ);
        posix_spawn_file_actions_destroy(&actions);
        ::close(pipe[1]);
        if (spawned != 0) {
            daemon_ = -1;
            ::close(pipe[0]);
            return;
        }
        // The daemon prints its address once it listens.
        std::string line;
        pollfd ready{pipe[0], POLLIN, 0};
        char c = 0;
        while (::poll(&ready, 1, 10'000) == 1 && ::read(pipe[0], &c, 1) == 1 && c != '\n')
            line += c;
        ::close(pipe[0]);
        address_ = line;
        environment_.set("DBUS_SESSION_BUS_ADDRESS", address_);
    }
    ~SessionBus() {
        if (daemon_ <= 0) return;
        ::kill(daemon_, SIGTERM);
        ::waitpid(daemon_, nullptr, 0);
    }
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    [[nodiscard]] const std::string& address() const { return address_; }
    [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

  private:
    TemporaryFolder folder_{"session-bus"};
    ScopedEnvironment environment_;
    pid_t daemon_ = -1;
    std::string address_;
};

struct Shown {
    std::string application;
    guint32 replaces;
    std::string summary;
    std::string body;
    std::vector<std::string> actions;
};

// org.freedesktop.Notifications on a bus, served from a thread of its own.
class NotificationServer {
  public:
    NotificationServer(const std::string& address, std::vector<std::string> capabilities)
        : capabilities_(std::move(capabilities)) {
        std::promise<bool> started;
        thread_ = std::thread([&] { run(address, started); });
        ready_ = started.get_future().get();
    }
    ~NotificationServer() {
        g_main_loop_quit(loop_);
        thread_.join();
    }
    NotificationServer(const NotificationServer&) = delete;
    NotificationServer& operator=(const NotificationServer&) = delete;

    [[nodiscard]] bool ready() const { return ready_; }

    [[nodiscard]] std::vector<Shown> shown() const {
        const std::lock_guard lock(mutex_);
        return shown_;
    }

    // What a server sends when the user picks the action `key` of notification `id`.
    void invokeAction(guint32 id, const char* key) const {
        g_dbus_connection_emit_signal(connection_, nullptr, path, name, "ActionInvoked",
                                      g_variant_new("(us)", id, key), nullptr);
    }

  private:
    static constexpr const char* name = "org.freedesktop.Notifications";
    static constexpr const char* path = "/org/freedesktop/Notifications";
    static constexpr const char* introspection = R"(<node>
  <interface name="org.freedesktop.Notifications">
    <method name="GetCapabilities"><arg direction="out" type="as"/></method>
    <method name="Notify">
      <arg direction="in" type="s"/><arg direction="in" type="u"/><arg direction="in" type="s"/>
      <arg direction="in" type="s"/><arg direction="in" type="s"/><arg direction="in" type="as"/>
      <arg direction="in" type="a{sv}"/><arg direction="in" type="i"/>
      <arg direction="out" type="u"/>
    </method>
    <signal name="ActionInvoked"><arg type="u"/><arg type="s"/></signal>
    <signal name="NotificationClosed"><arg type="u"/><arg type="u"/></signal>
  </interface>
</node>)";

    void run(const std::string& address, std::promise<bool>& started) {
        GMainContext* const context = g_main_context_new();
        g_main_context_push_thread_default(context);
        loop_ = g_main_loop_new(context, FALSE);
        connection_ = g_dbus_connection_new_for_address_sync(
            address.c_str(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr);
        GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(introspection, nullptr);
        static const GDBusInterfaceVTable table{&NotificationServer::call, nullptr, nullptr, {}};
        const guint registration =
            connection_ ? g_dbus_connection_register_object(connection_, path, node->interfaces[0],
                                                            &table, this, nullptr, nullptr)
                        : 0;
        GVariant* const owned =
            registration
                ? g_dbus_connection_call_sync(
                      connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                      "org.freedesktop.DBus", "RequestName", g_variant_new("(su)", name, 4u),
                      G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr)
                : nullptr;
        started.set_value(owned != nullptr);
        if (owned) g_variant_unref(owned);
        g_main_loop_run(loop_);
        if (registration) g_dbus_connection_unregister_object(connection_, registration);
        if (connection_) {
            g_dbus_connection_close_sync(connection_, nullptr, nullptr);
            g_object_unref(connection_);
        }
        g_dbus_node_info_unref(node);
        g_main_loop_unref(loop_);
        g_main_context_pop_thread_default(context);
        g_main_context_unref(context);
    }

    static void call(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                     const gchar* method, GVariant* parameters, GDBusMethodInvocation* invocation,
                     gpointer data) {
        auto* const self = static_cast<NotificationServer*>(data);
        if (std::string_view(method) == "GetCapabilities") {
            GVariantBuilder capabilities;
            g_variant_builder_init(&capabilities, G_VARIANT_TYPE("as"));
            for (const std::string& capability : self->capabilities_)
                g_variant_builder_add(&capabilities, "s", capability.c_str());
            g_dbus_method_invocation_return_value(invocation, g_variant_new("(as)", &capabilities));
            return;
        }
        const gchar* application = nullptr;
        guint32 replaces = 0;
        const gchar* icon = nullptr;
        const gchar* summary = nullptr;
        const gchar* body = nullptr;
        GVariantIter* actions = nullptr;
        GVariant* hints = nullptr;
        gint32 timeout = 0;
        g_variant_get(parameters, "(&su&s&s&sas@a{sv}i)", &application, &replaces, &icon, &summary,
                      &body, &actions, &hints, &timeout);
        Shown shown{application, replaces, summary, body, {}};
        const gchar* action = nullptr;
        while (g_variant_iter_next(actions, "&s", &action))
            shown.actions.emplace_back(action);
        g_variant_iter_free(actions);
        g_variant_unref(hints);
        guint32 id = 0;
        {
            const std::lock_guard lock(self->mutex_);
            self->shown_.push_back(std::move(shown));
            id = static_cast<guint32>(self->shown_.size());
        }
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(u)", id));
    }

    std::vector<std::string> capabilities_;
    std::thread thread_;
    bool ready_ = false;
    GMainLoop* loop_ = nullptr;
    GDBusConnection* connection_ = nullptr;
    mutable std::mutex mutex_;
    std::vector<Shown> shown_;
};

struct RecordingDelegate : UserNotificationCenterDelegate {
    void didReceive(const NotificationResponse& response) override {
        responses.push_back(response);
    }
    std::vector<NotificationResponse> responses;
};

// Posts and runs the main loop until the completion comes; no value if it never does.
std::optional<bool> post(std::string_view title, std::string_view text, std::string_view identifier,
                         std::string_view category = {}, std::string_view subtitle = {}) {
    std::optional<bool> delivered;
    Interface::notification(title, text, identifier, category, subtitle,
                            [&](bool result) { delivered = result; });
    RunLoop::main().runUntil([&] { return delivered.has_value(); }, 20s);
    return delivered;
}

class Notifications : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_FALSE(bus.address().empty()) << "dbus-daemon did not start (scripts/install-deps "
                                               "--dev installs it)";
        UserNotificationCenter::current().setDelegate(delegate);
        UserNotificationCenter::current().setNotificationCategories(
            {{"JobFailed", {{"show", "Show Log"}, {"restart", "Restart"}}}});
    }

    SessionBus bus;
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

TEST_F(Notifications, ShowTheCategorysActionsAndReportTheOneChosen) {
    NotificationServer server(bus.address(), {"actions", "body"});
    ASSERT_TRUE(server.ready());
    EXPECT_EQ(post("Backup failed", "Exit status 2", "job-17", "JobFailed", "Nightly backup"),
              true);
    EXPECT_EQ(post("Backup failed", "Exit status 3", "job-17", "JobFailed"), true);
    EXPECT_EQ(post("Done", "All jobs ran", "summary"), true);

    const std::vector<Shown> shown = server.shown();
    ASSERT_EQ(shown.size(), 3u);
    EXPECT_EQ(shown[0].application, "interface_tests");
    EXPECT_EQ(shown[0].summary, "Backup failed");
    EXPECT_EQ(shown[0].body, "Nightly backup\nExit status 2");
    EXPECT_EQ(shown[0].actions,
              (std::vector<std::string>{"default", "", "show", "Show Log", "restart", "Restart"}));
    EXPECT_EQ(shown[0].replaces, 0u);
    EXPECT_EQ(shown[1].replaces, 1u);  // the same identifier replaces what is shown
    EXPECT_EQ(shown[1].body, "Exit status 3");
    EXPECT_EQ(shown[2].actions, (std::vector<std::string>{"default", ""}));

    server.invokeAction(2, "restart");
    server.invokeAction(99, "restart");  // not ours
    server.invokeAction(3, "default");
    RunLoop::main().runUntil([&] { return delegate->responses.size() >= 2; }, 20s);
    RunLoop::main().runOnce(100ms);
    EXPECT_EQ(delegate->responses,
              (std::vector<NotificationResponse>{{"restart", "job-17"}, {"default", "summary"}}));
}

TEST_F(Notifications, MarkupServersGetEscapedTextAndBadBytesNeverReachTheBus) {
    NotificationServer server(bus.address(), {"actions", "body", "body-markup"});
    ASSERT_TRUE(server.ready());
    EXPECT_EQ(post("Caf\xe9", "a < b & c", "escaped", "NoSuchCategory", "<sub>"), true);
    const std::vector<Shown> shown = server.shown();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].summary, "Caf\uFFFD");
    EXPECT_EQ(shown[0].body, "<b>&lt;sub&gt;</b>\na &lt; b &amp; c");
    EXPECT_EQ(shown[0].actions.size(), 2u);
}

TEST_F(Notifications, WithoutAServerOrABusNothingIsShownAndTheAnswerComesAtOnce) {
    // A bus with no notification server on it.
    EXPECT_EQ(post("Nobody", "listens", "alone"), false);

    // A server, but the environment names a bus that is not there.
    NotificationServer server(bus.address(), {"actions", "body"});
    ASSERT_TRUE(server.ready());
    ScopedEnvironment nowhere;
    nowhere.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + bus.folder().path("none").string());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(post("Lost", "in the void", "lost"), false);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    EXPECT_TRUE(server.shown().empty());
}

}  // namespace
}  // namespace quod
