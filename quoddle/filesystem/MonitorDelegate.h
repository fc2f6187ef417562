// What a folder monitor's client receives: one call per changed item or folder.
//
// Monitors hold their delegate weakly (std::weak_ptr), so a delegate that goes away is simply no
// longer told anything; keep it alive in a std::shared_ptr for as long as reports are wanted.
// `monitorDidChange` is always called on the main thread (RunLoop::main()), never while the
// monitor's own member functions run, so a delegate may stop, restart or destroy the monitor from
// inside the call.
#pragma once

#include "quoddle/Export.h"
#include "quoddle/filesystem/Url.h"

namespace quod {

class QUODDLE_EXPORT MonitorDelegate {
  public:
    virtual ~MonitorDelegate() = default;

    // `url` is the item or folder that changed; which one depends on the monitor (see
    // FileSystemMonitor.h and SingleFolderMonitor.h).
    virtual void monitorDidChange(const Url& url) = 0;
};

}  // namespace quod
