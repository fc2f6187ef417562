// What every folder monitor offers: the location it watches, a weakly held delegate, and
// starting and stopping.
//
// A monitor starts watching in its constructor. `stopMonitoring()` ends the reports (twice in a
// row is harmless); `startMonitoring()` starts again, with the caveats each monitor spells out.
// Monitors are made, used and destroyed on the main thread, where their reports arrive too.
#pragma once

#include <memory>

#include "quoddle/Export.h"
#include "quoddle/filesystem/MonitorDelegate.h"
#include "quoddle/filesystem/Url.h"

namespace quod {

class QUODDLE_EXPORT MonitorType {
  public:
    virtual ~MonitorType() = default;

    [[nodiscard]] virtual const Url& url() const = 0;
    // Absent when none was set or the one set has gone away.
    [[nodiscard]] virtual std::shared_ptr<MonitorDelegate> delegate() const = 0;
    virtual void setDelegate(std::weak_ptr<MonitorDelegate> delegate) = 0;

    virtual void startMonitoring() = 0;
    virtual void stopMonitoring() = 0;
};

}  // namespace quod
