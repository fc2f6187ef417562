#include "quoddle/qt/WindowTitlebar.h"

#include "quoddle/interface/TitlebarHeight.h"

namespace quod {

double titlebarHeight(const QWidget& window) {
    const QWidget& top = *window.window();
    return titlebarHeight(top.frameGeometry().height(), top.geometry().height(),
                          WindowTabBar::hidden);
}

}  // namespace quod
