#include "quoddle/runtime/DispatchQueue.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>

#include "quoddle/runtime/ThreadPool.h"

namespace quod {
namespace internal {
namespace {

// The queues whose work this thread is running, innermost first: what `currentLabel` answers and
// what the re-entry check walks. Entries live on the stack of the frames that run the work.
thread_local const HeldQueue* heldQueues = nullptr;

class Holding {
  public:
    explicit Holding(const QueueState& queue) : entry_{&queue, heldQueues} { heldQueues = &entry_; }
    ~Holding() { heldQueues = entry_.outer; }
    Holding(const Holding&) = delete;
    Holding& operator=(const Holding&) = delete;

  private:
    HeldQueue entry_;
};

bool isHeldByThisThread(const QueueState& queue) {
    for (const HeldQueue* held = heldQueues; held != nullptr; held = held->outer) {
        if (held->queue == &queue) return true;
    }
    return false;
}

void runWork(DispatchQueue::Work& work) noexcept {
    work();
}

}  // namespace

// A serial queue's items are work and the turns of blocked `sync` callers, in arrival order.
// Ownership (who may run the queue's items) is in `owner`:
//   none       nobody; the queue is empty.
//   scheduled  a drain job is in the pool and nobody runs the queue yet. Whoever takes the queue
//              first (that job, a later duplicate of it, or a `sync` caller) sets `running`; a
//              job that finds any other state returns at once. Every move to `scheduled`
//              submits a job, so a scheduled queue always has a job coming.
//   running    one thread runs the queue: a drain job, or a `sync` caller.
// Whoever owns the queue and reaches another caller's turn hands ownership to that caller and
// stops. While any caller waits, ownership passes from thread to thread without the pool: a
// caller that finishes with work still queued ahead of the next turn hands the queue to that
// turn's caller, who runs the work first; a pool job never yields the queue back to the pool.
struct QueueState : std::enable_shared_from_this<QueueState> {
    enum class Owner { none, scheduled, running };
    struct Turn {
        enum class Grant { none, drainToTurn, atTurn };
        std::condition_variable granted;
        Grant grant = Grant::none;
    };
    struct Item {
        DispatchQueue::Work work;
        Turn* turn = nullptr;
    };
    enum class DrainEnd { emptied, handedOver, reachedOwnTurn, yielded };

    // A pool job drains this many items, then goes to the back of the pool, so that one busy
    // queue does not hold a worker while other queues wait.
    static constexpr int drainBudget = 64;

    QueueState(std::string name, QualityOfService service, bool isConcurrent)
        : label(std::move(name)), qualityOfService(service), concurrent(isConcurrent) {}

    const std::string label;
    const QualityOfService qualityOfService;
    const bool concurrent;

    std::mutex mutex;
    std::deque<Item> items;
    int waitingTurns = 0;  // turns in `items`
    Owner owner = Owner::none;

    void submitDrainJob() {
        ThreadPool::shared().submit(qualityOfService,
                                    [self = shared_from_this()] { self->drainFromPool(); });
    }

    void drainFromPool() {
        std::unique_lock lock(mutex);
        if (owner != Owner::scheduled) return;
        owner = Owner::running;
        if (drain(lock, nullptr) == DrainEnd::yielded) {
            lock.unlock();
            submitDrainJob();
        }
    }

    static void grant(Turn& turn, Turn::Grant grant) {
        turn.grant = grant;
        turn.granted.notify_one();
    }

    // Runs items in order while this thread owns the queue; `ownTurn` is the caller's own turn
    // in the items, if it is a `sync` caller. Called and returns with `lock` held.
    DrainEnd drain(std::unique_lock<std::mutex>& lock, const Turn* ownTurn) {
        for (int ran = 0;; ++ran) {
            if (items.empty()) {
                owner = Owner::none;
                return DrainEnd::emptied;
            }
            if (Turn* turn = items.front().turn) {
                items.pop_front();
                --waitingTurns;
                if (turn == ownTurn) return DrainEnd::reachedOwnTurn;
                grant(*turn, Turn::Grant::atTurn);
                return DrainEnd::handedOver;
            }
            if (ownTurn == nullptr && ran >= drainBudget && waitingTurns == 0) {
                owner = Owner::scheduled;
                return DrainEnd::yielded;
            }
            DispatchQueue::Work work = std::move(items.front().work);
            items.pop_front();
            lock.unlock();
            {
                Holding holding(*this);
                runWork(work);
                work = nullptr;
            }
            lock.lock();
        }
    }

    // Blocks until the calling thread owns the queue at its turn, running queued work ahead of
    // it whenever nobody else runs it.
    void beginSync() {
        QUOD_PRECONDITION(!isHeldByThisThread(*this),
                          ("sync on serial queue \"" + label +
                           "\" from work running on it would wait for itself forever")
                              .c_str());
        std::unique_lock lock(mutex);
        if (owner == Owner::none) {
            owner = Owner::running;
            return;
        }
        Turn turn;
        items.push_back({nullptr, &turn});
        ++waitingTurns;
        if (owner == Owner::scheduled) {
            owner = Owner::running;
            turn.grant = Turn::Grant::drainToTurn;
        }
        for (;;) {
            turn.granted.wait(lock, [&] { return turn.grant != Turn::Grant::none; });
            if (turn.grant == Turn::Grant::atTurn) return;
            turn.grant = Turn::Grant::none;
            if (drain(lock, &turn) == DrainEnd::reachedOwnTurn) return;
            // An earlier caller's turn came first and owns the queue now; it hands back later.
        }
    }

    // Gives the queue to the next waiting caller (to run what is queued ahead of it first), to a
    // drain job when nobody waits, or leaves it idle.
    void endSync() {
        bool needsJob = false;
        {
            std::lock_guard lock(mutex);
            if (items.empty()) {
                owner = Owner::none;
            } else if (Turn* turn = items.front().turn) {
                items.pop_front();
                --waitingTurns;
                grant(*turn, Turn::Grant::atTurn);
            } else if (waitingTurns > 0) {
                auto next = std::find_if(items.begin(), items.end(),
                                         [](const Item& item) { return item.turn != nullptr; });
                grant(*next->turn, Turn::Grant::drainToTurn);
            } else {
                owner = Owner::scheduled;
                needsJob = true;
            }
        }
        if (needsJob) submitDrainJob();
    }

    void async(DispatchQueue::Work work) {
        if (concurrent) {
            ThreadPool::shared().submit(
                qualityOfService, [self = shared_from_this(), work = std::move(work)]() mutable {
                    Holding holding(*self);
                    runWork(work);
                });
            return;
        }
        bool needsJob = false;
        {
            std::lock_guard lock(mutex);
            items.push_back({std::move(work)});
            if (owner == Owner::none) {
                owner = Owner::scheduled;
                needsJob = true;
            }
        }
        if (needsJob) submitDrainJob();
    }
};

QueueTurn::QueueTurn(QueueState& queue) : queue_(queue), held_{&queue, nullptr} {
    if (!queue_.concurrent) queue_.beginSync();
    held_.outer = heldQueues;
    heldQueues = &held_;
}

QueueTurn::~QueueTurn() {
    heldQueues = held_.outer;
    if (!queue_.concurrent) queue_.endSync();
}

}  // namespace internal

DispatchQueue::DispatchQueue(std::string label, QualityOfService qualityOfService,
                             Attributes attributes)
    : state_(std::make_shared<internal::QueueState>(std::move(label), qualityOfService,
                                                    attributes == Attributes::concurrent)) {}

const std::string& DispatchQueue::label() const {
    return state_->label;
}

QualityOfService DispatchQueue::qualityOfService() const {
    return state_->qualityOfService;
}

bool DispatchQueue::isConcurrent() const {
    return state_->concurrent;
}

void DispatchQueue::async(Work work) const {
    state_->async(std::move(work));
}

std::optional<std::string> DispatchQueue::currentLabel() {
    if (internal::heldQueues == nullptr) return std::nullopt;
    return internal::heldQueues->queue->label;
}

}  // namespace quod
