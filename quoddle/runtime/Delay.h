// Runs a closure on the main thread after a delay.
//
// `Delay(seconds, closure)` returns at once; `closure` runs on RunLoop::main() once `seconds`
// (monotonic clock) have passed, whatever thread called Delay. It always runs later, never inside
// the call, even for a delay of zero or less (then it runs in the main loop's next turn). It runs
// only while the host drives the main loop.
#pragma once

#include "quoddle/Export.h"
#include "quoddle/runtime/UniqueFunction.h"

namespace quod {

QUODDLE_EXPORT void Delay(double seconds, UniqueFunction<void()> closure);

}  // namespace quod
