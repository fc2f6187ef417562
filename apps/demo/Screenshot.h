// Renders a window into a PNG file, for checking the demo without a display.
//
// The window is shown (under QT_QPA_PLATFORM=offscreen nothing reaches a screen) and given time
// to settle before it is grabbed: until it is exposed, the sidebar's tree is built and the main
// run loop's delayed work (such as a gutter's set-up) has run, at most `settleLimit`. The grab is
// the window's own rendering, so it is the same on every platform plugin.
#pragma once

#include <QString>
#include <chrono>

#include "demo/MainWindow.h"

namespace quod::demo {

inline constexpr std::chrono::milliseconds settleLimit{5000};

// False when the file could not be written.
[[nodiscard]] bool saveScreenshot(MainWindow& window, const QString& path);

}  // namespace quod::demo
