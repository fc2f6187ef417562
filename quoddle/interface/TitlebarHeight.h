// The height of a window's title bar, from the two heights a toolkit can tell.
//
// A window's title bar is what its frame has above the content layout: frame height minus content
// layout height. A window in a tab group whose tab bar shows has that bar inside the same strip,
// and the bar (taken as exactly 28 points) is not part of the title bar:
//
//     titlebarHeight(622, 600, WindowTabBar::hidden)    // 22
//     titlebarHeight(650, 600, WindowTabBar::visible)   // 22
//
// No clamping: heights that make no sense give a number that makes none either.
#pragma once

namespace quod {

enum class WindowTabBar { hidden, visible };

inline constexpr double windowTabBarHeight = 28.0;

[[nodiscard]] constexpr double titlebarHeight(double frameHeight, double contentLayoutHeight,
                                              WindowTabBar tabBar) {
    const double height = frameHeight - contentLayoutHeight;
    return tabBar == WindowTabBar::visible ? height - windowTabBarHeight : height;
}

}  // namespace quod
