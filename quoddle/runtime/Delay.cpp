#include "quoddle/runtime/Delay.h"

#include <chrono>
#include <cmath>
#include <utility>

#include "quoddle/runtime/RunLoop.h"

namespace quod {

void Delay(double seconds, UniqueFunction<void()> closure) {
    using std::chrono::nanoseconds;
    // Not-a-number and delays beyond the clock's range wait forever rather than wrap around.
    nanoseconds delay = nanoseconds::max();
    if (seconds <= 0) {
        delay = nanoseconds::zero();
    } else if (seconds < 9.0e9) {  // about 285 years, inside nanoseconds' range
        delay = std::chrono::duration_cast<nanoseconds>(std::chrono::duration<double>(seconds));
    }
    RunLoop::main().postAfter(delay, std::move(closure));
}

}  // namespace quod
