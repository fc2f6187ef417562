#include "quoddle/filesystem/UrlQueries.h"

#include <optional>

#include "quoddle/runtime/Localize.h"
#include "quoddle/strings/PathStrings.h"

namespace quod {
namespace {

// What follows `folder` in `path` ("" for the folder itself), or no value when `path` is not
// inside it. Both are standardised.
std::optional<std::string_view> below(std::string_view path, std::string_view folder) {
    if (folder.empty() || !path.starts_with(folder)) return std::nullopt;
    std::string_view rest = path.substr(folder.size());
    if (rest.empty()) return rest;
    if (rest.front() != '/') return std::nullopt;
    return rest.substr(1);
}

std::string joined(std::string_view head, std::string_view rest) {
    std::string text(head);
    if (!rest.empty()) {
        text += '/';
        text += rest;
    }
    return text;
}

}  // namespace

bool equalTo(const Url& a, const Url& b) {
    return standardizingPath(a.path()) == standardizingPath(b.path());
}

bool isUbiquitous(const Url&) {
    return false;
}

std::string localizedDisplayPath(const Url& url, bool lastComponent,
                                 std::string_view ubiquitousPath) {
    const std::string path = standardizingPath(url.path());
    if (lastComponent) return lastPathComponent(path);
    if (!ubiquitousPath.empty()) {
        if (const auto rest = below(path, standardizingPath(ubiquitousPath)))
            return joined(Localize::string("Cloud Documents"), *rest);
    }
    // A home folder of "/" would turn every path into "~/...", which shortens nothing.
    if (const std::string home = standardizingPath("~"); home != "/") {
        if (const auto rest = below(path, home)) return joined("~", *rest);
    }
    return path;
}

}  // namespace quod
