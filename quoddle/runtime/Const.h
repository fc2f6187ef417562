// Shared constants of the runtime: the labels of the framework's queues.
//
// Labels show up in debuggers and in DispatchQueue::currentLabel(); hosts and tools match on
// them, so they are kept exactly. Other subsystems add their own groups to `Const`
// (Const::UniChar, Const::Miscellaneous).
#pragma once

#include <string_view>

namespace quod::Const::QueueLabel {

inline constexpr std::string_view threadSafe = "com.fernholt.PropertyWrapper.ThreadSafe";
inline constexpr std::string_view limitInterval = "com.fernholt.limit.interval";
inline constexpr std::string_view background = "com.fernholt.backgroundqueue";
inline constexpr std::string_view singleFolderMonitor = "com.fernholt.SingleFolderMonitor";

}  // namespace quod::Const::QueueLabel
