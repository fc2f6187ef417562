// A per-identifier quiet-period limiter: run a closure unless it was asked for too recently.
//
// `Limit::interval(identifier, duration, closure)` runs `closure` when the identifier has never
// been seen, or when strictly more than `duration` seconds have passed since the identifier's
// previous call, and in every case (run or not) records now as the identifier's time. A burst of
// calls closer together than `duration` therefore runs the closure once, at its start, and again
// only after a pause longer than `duration`: the window counts from the last call, not from the
// last run. Identifiers are exact strings and are limited independently. A zero duration skips
// only a call in the same clock tick as the one before it; a negative one skips nothing.
//
// Times come from the monotonic clock, so a change of the wall clock neither releases nor blocks
// a closure. The table of times lives for the process and never forgets an identifier.
//
// All of it, the closure included, runs inside one turn on the serial queue labelled
// "com.fernholt.limit.interval", on the caller's thread; the call returns once the closure, if it
// ran, has finished. Every identifier shares that queue: a slow closure delays every other
// `Limit::interval` call in the process. A closure that calls `Limit::interval` itself would wait
// for its own turn forever; that stops the process (see DispatchQueue::sync).
#pragma once

#include <functional>
#include <string_view>

#include "quoddle/Export.h"

namespace quod::Limit {

QUODDLE_EXPORT void interval(std::string_view identifier, double duration,
                             const std::function<void()>& closure);

}  // namespace quod::Limit
