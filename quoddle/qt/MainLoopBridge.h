// Runs the framework's main run loop inside Qt's event loop.
//
// RunLoop::main() offers one descriptor that is readable exactly while it has work; the bridge
// watches it with a QSocketNotifier and runs one turn of the loop each time it fires, so monitor
// reports, Delay closures and posted tasks reach the main thread while Qt runs the show. Make one
// after the QApplication, on the main thread, and keep it for the life of the application.
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT MainLoopBridge : public QObject {
    Q_OBJECT

  public:
    explicit MainLoopBridge(QObject* parent = nullptr);

  private:
    QSocketNotifier notifier_;
};

}  // namespace quod
