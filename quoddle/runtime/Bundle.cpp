#include "quoddle/runtime/Bundle.h"

#include <system_error>

namespace quod {
namespace internal {

const std::filesystem::path& runningExecutablePath() {
    static const std::filesystem::path* const path = [] {
        std::error_code error;
        auto* found =
            new std::filesystem::path(std::filesystem::read_symlink("/proc/self/exe", error));
        if (error) found->clear();
        return found;
    }();
    return *path;
}

std::filesystem::path mainBundlePath(const std::filesystem::path& executable) {
    const std::filesystem::path folder = executable.parent_path();
    std::error_code error;
    if (std::filesystem::is_regular_file(folder / "Info.plist", error)) return folder;
    const std::filesystem::path shared = folder.parent_path() / "share" / executable.filename();
    if (std::filesystem::is_regular_file(shared / "Info.plist", error)) return shared;
    return folder;
}

}  // namespace internal

const Bundle& Bundle::main() {
    static const Bundle* const bundle =
        new Bundle(internal::mainBundlePath(internal::runningExecutablePath()));
    return *bundle;
}

}  // namespace quod
