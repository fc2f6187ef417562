#include "quoddle/runtime/NotificationCenter.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace quod {

struct NotificationCenter::Core {
    struct Registration {
        std::optional<std::string> name;
        const void* object;
        Observer observer;
        std::atomic<bool> active{true};

        [[nodiscard]] bool matches(std::string_view postedName, const void* sender) const {
            return (!name || *name == postedName) && (object == nullptr || object == sender);
        }
    };
    using Registrations = std::vector<std::shared_ptr<Registration>>;

    // Copy-on-write: a post takes the current list under the lock and walks it unlocked, so
    // observers run with no lock held; adding and removing install a new list.
    mutable std::mutex mutex;
    std::shared_ptr<const Registrations> registrations = std::make_shared<const Registrations>();

    void add(std::shared_ptr<Registration> registration) {
        std::lock_guard lock(mutex);
        auto next = std::make_shared<Registrations>(*registrations);
        next->push_back(std::move(registration));
        registrations = std::move(next);
    }

    void remove(const Registration* registration) {
        std::lock_guard lock(mutex);
        auto next = std::make_shared<Registrations>(*registrations);
        auto found = std::find_if(next->begin(), next->end(),
                                  [&](const auto& entry) { return entry.get() == registration; });
        if (found == next->end()) return;
        // Under the lock, so a post that already took the old list sees the flag before calling.
        (*found)->active = false;
        next->erase(found);
        registrations = std::move(next);
    }

    [[nodiscard]] std::shared_ptr<const Registrations> snapshot() const {
        std::lock_guard lock(mutex);
        return registrations;
    }
};

NotificationCenter::NotificationCenter() : core_(std::make_shared<Core>()) {}

NotificationCenter::~NotificationCenter() = default;

Connection NotificationCenter::addObserver(std::optional<std::string> name, const void* object,
                                           Observer observer) {
    auto registration = std::make_shared<Core::Registration>();
    registration->name = std::move(name);
    registration->object = object;
    registration->observer = std::move(observer);
    const Core::Registration* key = registration.get();
    core_->add(std::move(registration));
    std::weak_ptr<Core> weakCore = core_;
    return Connection([weakCore, key] {
        if (auto core = weakCore.lock()) core->remove(key);
    });
}

void NotificationCenter::post(std::string_view name, const void* object,
                              std::map<std::string, std::any> userInfo) {
    const std::shared_ptr<const Core::Registrations> current = core_->snapshot();
    std::optional<Notification> notification;
    for (const std::shared_ptr<Core::Registration>& registration : *current) {
        if (!registration->matches(name, object) || !registration->active) continue;
        if (!notification)
            notification = Notification{std::string(name), object, std::move(userInfo)};
        registration->observer(*notification);
    }
}

std::size_t NotificationCenter::observerCount() const {
    return core_->snapshot()->size();
}

NotificationCenter& Notifications() {
    static NotificationCenter* const center = new NotificationCenter;
    return *center;
}

}  // namespace quod
