// The kinds of window that an application shows once at most: `Singleton::WindowController`.
//
// Each kind names the factory entry (the storyboard identifier) that builds its controller;
// WindowController::show(kind) in the Qt layer looks the entry up by this name, so the strings
// are part of how applications register their windows:
//
//     Singleton::storyboardIdentifier(Singleton::WindowController::find)   // "Find"
#pragma once

#include <array>
#include <string_view>

namespace quod::Singleton {

enum class WindowController { preferences, compare, find };

[[nodiscard]] constexpr std::string_view storyboardIdentifier(WindowController kind) {
    switch (kind) {
        case WindowController::preferences:
            return "Preferences";
        case WindowController::compare:
            return "Compare";
        case WindowController::find:
            return "Find";
    }
    return {};
}

// Every kind, in declaration order.
inline constexpr std::array allWindowControllers{WindowController::preferences,
                                                 WindowController::compare, WindowController::find};

}  // namespace quod::Singleton
