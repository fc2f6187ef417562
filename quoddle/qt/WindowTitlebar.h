// The height of a Qt window's title bar (interface/TitlebarHeight.h has the rule).
//
// Qt tells the decorated frame and the client area apart (frameGeometry and geometry), so this is
// the frame height minus the client height: whatever the window manager adds above and below the
// content, 0 for an undecorated window or one not shown yet. Qt on Linux has no tabbed windows,
// so a window never belongs to a tab group here and the 28-point tab-bar term never applies.
#pragma once

#include <QWidget>

#include "quoddle/Export.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT double titlebarHeight(const QWidget& window);

}  // namespace quod
