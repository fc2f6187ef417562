// How urgent the work of a queue is; the thread pool starts more urgent work first.
//
// The levels are the platform's, most urgent first. `standard` is the platform's "default" (a
// keyword here); `unspecified` is a queue that states no preference and is scheduled with it.
// Levels order the start of work only: a running task is never preempted and threads keep the
// scheduling priority of the process.
#pragma once

namespace quod {

enum class QualityOfService {
    userInteractive,
    userInitiated,
    standard,
    utility,
    background,
    unspecified,
};

}  // namespace quod
