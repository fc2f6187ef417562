#include "quoddle/qt/MainLoopBridge.h"

#include <chrono>

#include "quoddle/runtime/RunLoop.h"

namespace quod {

MainLoopBridge::MainLoopBridge(QObject* parent)
    : QObject(parent), notifier_(RunLoop::main().descriptor(), QSocketNotifier::Read) {
    connect(&notifier_, &QSocketNotifier::activated, this,
            [] { RunLoop::main().runOnce(std::chrono::nanoseconds::zero()); });
}

}  // namespace quod
