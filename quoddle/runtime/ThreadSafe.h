// A value whose every read and write is serialised: a wrapper for a property shared by threads.
//
// `wrappedValue()` copies the value out and `setWrappedValue(v)` stores one, each as one turn
// under the wrapper's guard, blocking the caller until done. The guard stands for the serial
// queue the framework has always given each wrapper (label `label`, quality of service
// `qualityOfService`, one per wrapper); it is a mutex here, since no work other than these two
// turns ever runs on it, so no thread or queue exists per value.
//
// `modify(change)` is a read, then `change` applied to the copy outside the guard, then a write:
// two separate turns. It is deliberately not atomic: two threads incrementing at once can lose an
// increment, and a write by another thread between the two turns is overwritten. Hosts rely on
// this being exactly a get followed by a set; callers that need an atomic read-modify-write take
// their own lock.
//
//     ThreadSafe<std::vector<std::string>> recent(std::vector<std::string>{});
//     recent.setWrappedValue({"a.txt"});
//     std::vector<std::string> now = recent.wrappedValue();
//
// Copies hold their own value (read under the source's guard) and their own guard.
#pragma once

#include <mutex>
#include <string_view>
#include <utility>

#include "quoddle/runtime/Const.h"
#include "quoddle/runtime/QualityOfService.h"

namespace quod {

template <typename T>
class ThreadSafe {
  public:
    static constexpr std::string_view label = Const::QueueLabel::threadSafe;
    static constexpr QualityOfService qualityOfService = QualityOfService::userInitiated;

    explicit ThreadSafe(T value) : value_(std::move(value)) {}

    ThreadSafe(const ThreadSafe& other) : value_(other.wrappedValue()) {}
    ThreadSafe& operator=(const ThreadSafe& other) {
        if (this != &other) setWrappedValue(other.wrappedValue());
        return *this;
    }

    [[nodiscard]] T wrappedValue() const {
        std::lock_guard lock(mutex_);
        return value_;
    }

    void setWrappedValue(T value) {
        {
            std::lock_guard lock(mutex_);
            using std::swap;
            swap(value_, value);
        }
        // `value` now holds the old value, destroyed outside the guard.
    }

    template <typename Change>
    void modify(Change&& change) {
        T copy = wrappedValue();
        std::forward<Change>(change)(copy);
        setWrappedValue(std::move(copy));
    }

  private:
    mutable std::mutex mutex_;
    T value_;
};

}  // namespace quod
