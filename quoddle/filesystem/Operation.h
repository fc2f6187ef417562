// A cancellable piece of work: the owner calls `cancel()` from any thread, the work polls
// `isCancelled()` where it can stop cleanly.
//
// Only the flag is kept: there is no queue, no completion and no un-cancelling. Cancelling twice is
// the same as once. The work sees the cancellation on its next poll, never in the middle of a step,
// so what it built up to then stays consistent. The owner keeps the object alive for as long as
// the work may poll it (a `FileItem` build only polls during its constructor).
#pragma once

#include <atomic>

namespace quod {

class Operation {
  public:
    void cancel() noexcept { cancelled_.store(true); }
    [[nodiscard]] bool isCancelled() const noexcept { return cancelled_.load(); }

  private:
    std::atomic<bool> cancelled_{false};
};

}  // namespace quod
