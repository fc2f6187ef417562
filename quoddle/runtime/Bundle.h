// A bundle: a folder that holds an application's Info.plist (and whatever else it ships).
//
// This stands in for the platform's bundle object. `Bundle(path)` names a folder; nothing is read
// until asked, and a folder that does not exist is still a bundle, one without an Info.plist.
//
// `Bundle::main()` is the running program's bundle, found once from the executable's location
// (/proc/self/exe) and never looked up again:
//   1. the executable's folder, when it holds an Info.plist (a program run from its build tree
//      or from a self-contained folder such as /opt/quillmere/);
//   2. else <prefix>/share/<executable name>/ when that holds an Info.plist (an installed
//      /usr/bin/quillmere with /usr/share/quillmere/Info.plist);
//   3. else the executable's folder, a bundle without an Info.plist.
#pragma once

#include <filesystem>
#include <utility>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT Bundle {
  public:
    explicit Bundle(std::filesystem::path bundlePath) : bundlePath_(std::move(bundlePath)) {}

    [[nodiscard]] static const Bundle& main();

    [[nodiscard]] const std::filesystem::path& bundlePath() const { return bundlePath_; }
    [[nodiscard]] std::filesystem::path infoPlistPath() const { return bundlePath_ / "Info.plist"; }

  private:
    std::filesystem::path bundlePath_;
};

namespace internal {

// The running program's file, symbolic links resolved; empty if the system does not say.
[[nodiscard]] const std::filesystem::path& runningExecutablePath();

// Where Bundle::main() is for an executable at `executable` (the rule above).
[[nodiscard]] std::filesystem::path mainBundlePath(const std::filesystem::path& executable);

}  // namespace internal
}  // namespace quod
