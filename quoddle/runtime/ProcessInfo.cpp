#include "quoddle/runtime/ProcessInfo.h"

#include <sys/utsname.h>

#include <algorithm>
#include <cstring>

namespace quod {

const ProcessInfo& ProcessInfo::processInfo() {
    static const ProcessInfo info;
    return info;
}

bool ProcessInfo::isAppleSiliconMachine(std::string_view machine) {
    const bool ascii = std::all_of(machine.begin(), machine.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    return ascii && machine.find("arm64") != std::string_view::npos;
}

bool ProcessInfo::isAppleSilicon() const {
    utsname names{};
    if (uname(&names) != 0) return false;
    return isAppleSiliconMachine(
        std::string_view(names.machine, strnlen(names.machine, sizeof names.machine)));
}

}  // namespace quod
