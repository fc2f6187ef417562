// A list of callbacks that one owner type emits to; the framework's observer mechanism.
//
// Only `Owner` can emit, so a view's "text changed" cannot be faked by a client. `connect` returns
// a `Connection` that disconnects when destroyed (or on `disconnect()`); it holds the signal's slot
// list weakly, so either side may die first. Slots run in connection order; a slot connected or
// disconnected during an emission takes effect from the next emission. Not thread-safe: signals
// are emitted and connected on the thread that owns the object (the main thread for views).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT Connection {
  public:
    Connection() = default;
    explicit Connection(std::function<void()> disconnector)
        : disconnector_(std::move(disconnector)) {}
    Connection(Connection&& other) noexcept
        : disconnector_(std::exchange(other.disconnector_, {})) {}
    Connection& operator=(Connection&& other) noexcept {
        if (this != &other) {
            disconnect();
            disconnector_ = std::exchange(other.disconnector_, {});
        }
        return *this;
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() { disconnect(); }

    void disconnect() {
        if (disconnector_) std::exchange(disconnector_, {})();
    }

  private:
    std::function<void()> disconnector_;
};

template <typename Owner, typename... Args>
class Signal {
  public:
    using Slot = std::function<void(Args...)>;

    Signal() = default;
    // Connections belong to one object: a copy starts with none, a move takes them along.
    Signal(const Signal&) : Signal() {}
    Signal& operator=(const Signal&) { return *this; }
    Signal(Signal&& other) noexcept
        : slots_(std::exchange(other.slots_, std::make_shared<std::vector<Entry>>())),
          nextId_(other.nextId_) {}
    Signal& operator=(Signal&& other) noexcept {
        slots_ = std::exchange(other.slots_, std::make_shared<std::vector<Entry>>());
        nextId_ = other.nextId_;
        return *this;
    }

    [[nodiscard]] Connection connect(Slot slot) {
        const std::uint64_t id = nextId_++;
        slots_->push_back({id, std::make_shared<Slot>(std::move(slot))});
        std::weak_ptr<std::vector<Entry>> weakSlots = slots_;
        return Connection([weakSlots, id] {
            if (auto slots = weakSlots.lock()) {
                std::erase_if(*slots, [id](const Entry& entry) { return entry.id == id; });
            }
        });
    }

  private:
    friend Owner;

    struct Entry {
        std::uint64_t id;
        std::shared_ptr<Slot> slot;
    };

    void emit(Args... args) const {
        if (slots_->empty()) return;
        // A copy, so that slots may connect and disconnect while we call them.
        const std::vector<Entry> current = *slots_;
        for (const Entry& entry : current)
            (*entry.slot)(args...);
    }

    std::shared_ptr<std::vector<Entry>> slots_ = std::make_shared<std::vector<Entry>>();
    std::uint64_t nextId_ = 0;
};

}  // namespace quod
