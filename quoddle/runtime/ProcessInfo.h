// Facts about the running process and the machine it runs on.
//
// `isAppleSilicon()` is true exactly when the machine field of uname(2) contains "arm64": what
// the kernel reports for the running process, so a translated process answers for what it is
// translated to. A failing uname, or a field that is not ASCII, gives false. Linux on 64-bit Arm
// reports "aarch64" and therefore answers false: the question is about one maker's hardware.
#pragma once

#include <string_view>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT ProcessInfo {
  public:
    [[nodiscard]] static const ProcessInfo& processInfo();

    [[nodiscard]] bool isAppleSilicon() const;

    // The rule above, for a machine field read up to its terminating zero.
    [[nodiscard]] static bool isAppleSiliconMachine(std::string_view machine);

  private:
    ProcessInfo() = default;
};

}  // namespace quod
