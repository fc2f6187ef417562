// The process's one shared concurrent queue for background work.
//
// Made on first use, labelled "com.fernholt.backgroundqueue", quality of service `standard` (the
// platform's default); work sent to it may run in parallel and finish in any order.
//
//     Background().async([path] { index(path); });
#pragma once

#include "quoddle/Export.h"
#include "quoddle/runtime/DispatchQueue.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT const DispatchQueue& Background();

}  // namespace quod
