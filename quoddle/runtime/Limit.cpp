#include "quoddle/runtime/Limit.h"

#include <chrono>
#include <string>
#include <unordered_map>

#include "quoddle/runtime/Const.h"
#include "quoddle/runtime/DispatchQueue.h"

namespace quod::Limit {
namespace {

using Clock = std::chrono::steady_clock;

struct StringHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
        return std::hash<std::string_view>{}(text);
    }
};

struct Limiter {
    DispatchQueue queue{std::string(Const::QueueLabel::limitInterval),
                        QualityOfService::unspecified};
    std::unordered_map<std::string, Clock::time_point, StringHash, std::equal_to<>> lastCalls;
};

Limiter& limiter() {
    static Limiter* const shared = new Limiter;
    return *shared;
}

}  // namespace

void interval(std::string_view identifier, double duration, const std::function<void()>& closure) {
    Limiter& shared = limiter();
    shared.queue.sync([&] {
        const Clock::time_point now = Clock::now();
        auto found = shared.lastCalls.find(identifier);
        // The time is stored before the closure runs, so it is stored even if the closure throws.
        if (found == shared.lastCalls.end()) {
            shared.lastCalls.emplace(identifier, now);
            closure();
            return;
        }
        const double elapsed = std::chrono::duration<double>(now - found->second).count();
        found->second = now;
        if (elapsed > duration) closure();
    });
}

}  // namespace quod::Limit
