#include "quoddle/interface/UserInterfaceLayoutDirection.h"

#include <atomic>

namespace quod::Interface {
namespace {

std::atomic<UserInterfaceLayoutDirection> direction{UserInterfaceLayoutDirection::leftToRight};

}  // namespace

UserInterfaceLayoutDirection userInterfaceLayoutDirection() {
    return direction.load(std::memory_order_relaxed);
}

void setUserInterfaceLayoutDirection(UserInterfaceLayoutDirection newDirection) {
    direction.store(newDirection, std::memory_order_relaxed);
}

}  // namespace quod::Interface
