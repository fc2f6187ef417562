// Named notifications, posted by anyone to whoever observes them; safe from every thread.
//
// An observer names the notification it wants (or every name) and optionally the one sender it
// wants it from; the sender is an object's identity (its address), never dereferenced. `post`
// calls the matching observers synchronously on the posting thread, in the order they were
// added, and returns when all have run. Threads are the caller's business: an observer that
// touches views must be called from posts on the main thread, or hop there with RunLoop::main().
//
// `addObserver` returns a Connection; the observer stays registered while it lives (or until
// `disconnect()`). Posts and registrations may happen on any threads at once:
//   * an observer added during a post is called from the next post on;
//   * an observer removed during a post, before its turn (by an earlier observer, say, or by
//     another thread), is not called for the rest of that post; one may remove itself;
//   * after removal returns, no new call of that observer starts. A call already running on
//     another thread may still finish afterwards, so an observer that captures an object that
//     the remover then destroys must hold it by shared_ptr/weak_ptr.
// A post holds no lock while observers run, so observers may post, add and remove freely.
//
//     Connection themeObserver = Notifications().addObserver(
//         "ThemeChanged", nullptr, [&](const Notification&) { gutter.refresh(); });
//     Notifications().post("ThemeChanged");
//
// `Notifications()` is the process's default centre, made on first use and never destroyed.
// Notification names used by the framework and its hosts are in interface/NotificationName.h,
// which converts to a string view wherever a name is taken here.
#pragma once

#include <any>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/base/Signal.h"

namespace quod {

struct Notification {
    std::string name;
    const void* object = nullptr;  // the sender, if the poster named one
    std::map<std::string, std::any> userInfo;
};

class QUODDLE_EXPORT NotificationCenter {
  public:
    using Observer = std::function<void(const Notification&)>;

    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    // `name`: no value observes every name. `object`: nullptr observes every sender.
    [[nodiscard]] Connection addObserver(std::optional<std::string> name, const void* object,
                                         Observer observer);

    void post(std::string_view name, const void* object = nullptr,
              std::map<std::string, std::any> userInfo = {});

    [[nodiscard]] std::size_t observerCount() const;

  private:
    struct Core;
    // Shared with the Connections, so that either may outlive the other.
    std::shared_ptr<Core> core_;
};

[[nodiscard]] QUODDLE_EXPORT NotificationCenter& Notifications();

}  // namespace quod
