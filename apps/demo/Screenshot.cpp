#include "demo/Screenshot.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPixmap>

namespace quod::demo {

bool saveScreenshot(MainWindow& window, const QString& path) {
    window.show();
    QElapsedTimer clock;
    clock.start();
    // Delayed work posted at start-up is due within a few hundred milliseconds; a short quiet
    // spell after the tree is shown lets it run.
    constexpr qint64 quietSpell = 300;
    qint64 settledSince = -1;
    while (clock.elapsed() < settleLimit.count()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        const bool settled = window.isVisible() && !window.sidebar().isBuilding();
        if (!settled) {
            settledSince = -1;
        } else if (settledSince < 0) {
            settledSince = clock.elapsed();
        } else if (clock.elapsed() - settledSince >= quietSpell) {
            break;
        }
    }
    return window.grab().save(path, "PNG");
}

}  // namespace quod::demo
