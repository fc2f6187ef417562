// Labelled serial and concurrent queues of work over the shared thread pool.
//
// A queue is a handle: copies refer to the same queue, and the queue lives while any copy or any
// of its pending work does. Work is a move-only closure (UniqueFunction<void()>).
//
// Serial queues run one piece of work at a time, in the order it arrived, whichever thread runs
// it. Concurrent queues hand each piece of work to the pool as it arrives; pieces may run in
// parallel and finish in any order.
//
// `async(work)` returns at once; work that throws ends the process, as nobody is left to catch
// it. `sync(work)` runs `work` on the calling thread and returns its result (exceptions reach the
// caller): on a serial queue, once everything queued before it has run and while nothing else
// runs on the queue; on a concurrent queue, at once. A serial `sync` never waits for a free pool
// thread: work queued ahead of it that no thread is running is run by the waiting caller itself.
// Calling `sync` on a serial queue from work that is running on that same queue (directly or
// through other `sync` calls) would wait for itself forever; it stops the process through
// QUOD_PRECONDITION instead, naming the queue.
//
//     DispatchQueue queue("com.example.cache", QualityOfService::utility);
//     queue.async([] { rebuild(); });
//     int size = queue.sync([&] { return cache.size(); });  // after rebuild() has finished
//
// `currentLabel()` answers the label of the queue whose work the calling thread is running (the
// innermost, for nested `sync`), or no value on a thread that runs no queue work. Main-thread
// work belongs to RunLoop, not to a queue.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quoddle/Export.h"
#include "quoddle/runtime/QualityOfService.h"
#include "quoddle/runtime/UniqueFunction.h"

namespace quod {
namespace internal {

struct QueueState;

// One entry of the calling thread's list of queues whose work it is running.
struct HeldQueue {
    const QueueState* queue;
    const HeldQueue* outer;
};

// The calling thread's turn on a queue, from construction to destruction.
class QUODDLE_EXPORT QueueTurn {
  public:
    explicit QueueTurn(QueueState& queue);
    ~QueueTurn();
    QueueTurn(const QueueTurn&) = delete;
    QueueTurn& operator=(const QueueTurn&) = delete;

  private:
    QueueState& queue_;
    HeldQueue held_;
};

}  // namespace internal

class QUODDLE_EXPORT DispatchQueue {
  public:
    enum class Attributes { serial, concurrent };
    using Work = UniqueFunction<void()>;

    explicit DispatchQueue(std::string label,
                           QualityOfService qualityOfService = QualityOfService::unspecified,
                           Attributes attributes = Attributes::serial);

    [[nodiscard]] const std::string& label() const;
    [[nodiscard]] QualityOfService qualityOfService() const;
    [[nodiscard]] bool isConcurrent() const;

    void async(Work work) const;

    template <typename Callable>
    decltype(auto) sync(Callable&& work) const {
        internal::QueueTurn turn(*state_);
        return std::invoke(std::forward<Callable>(work));
    }

    [[nodiscard]] static std::optional<std::string> currentLabel();

    friend bool operator==(const DispatchQueue& a, const DispatchQueue& b) {
        return a.state_ == b.state_;
    }

  private:
    std::shared_ptr<internal::QueueState> state_;
};

}  // namespace quod
