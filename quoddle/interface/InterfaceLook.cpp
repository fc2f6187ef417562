#include "quoddle/interface/InterfaceLook.h"

#include <atomic>

namespace quod::Interface {
namespace {

std::atomic<InterfaceLook> currentLook{InterfaceLook::flat};

}  // namespace

InterfaceLook look() {
    return currentLook.load(std::memory_order_relaxed);
}

void setLook(InterfaceLook newLook) {
    currentLook.store(newLook, std::memory_order_relaxed);
}

}  // namespace quod::Interface
