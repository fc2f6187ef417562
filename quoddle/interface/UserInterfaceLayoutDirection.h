// Whether the user interface is laid out left to right or right to left.
//
// A process-wide setting that the host makes from its own localization (the language its menus
// and windows are shown in, which need not be the language of the current locale) and may change
// at any time, from any thread; views read it when they lay out and draw. Left to right until the
// host says otherwise.
//
//     Interface::setUserInterfaceLayoutDirection(UserInterfaceLayoutDirection::rightToLeft);
//     Interface::rtl();   // true
#pragma once

#include "quoddle/Export.h"

namespace quod {

enum class UserInterfaceLayoutDirection { leftToRight, rightToLeft };

namespace Interface {

[[nodiscard]] QUODDLE_EXPORT UserInterfaceLayoutDirection userInterfaceLayoutDirection();
QUODDLE_EXPORT void setUserInterfaceLayoutDirection(UserInterfaceLayoutDirection direction);

// Shorthand for a right-to-left layout direction.
[[nodiscard]] inline bool rtl() {
    return userInterfaceLayoutDirection() == UserInterfaceLayoutDirection::rightToLeft;
}

}  // namespace Interface
}  // namespace quod
