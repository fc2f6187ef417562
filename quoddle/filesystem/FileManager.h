// File-system questions and the few changes the framework makes, on file URLs.
//
// This stands in for the platform's file manager. Every function is a plain system call or two,
// keeps no state and fails quietly: false, or an absent value.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/filesystem/Url.h"

namespace quod {

// Options of a folder listing, bit values as the platform defines them.
enum class DirectoryEnumerationOptions : uint32_t {
    none = 0,
    skipsSubdirectoryDescendants = 1,  // a listing never descends anyway; kept for the value
    skipsPackageDescendants = 2,       // no packages on Linux: has no effect
    skipsHiddenFiles = 4,              // names beginning with "."
};

[[nodiscard]] constexpr DirectoryEnumerationOptions operator|(DirectoryEnumerationOptions a,
                                                              DirectoryEnumerationOptions b) {
    return DirectoryEnumerationOptions(static_cast<uint32_t>(a) | static_cast<uint32_t>(b));
}
[[nodiscard]] constexpr bool contains(DirectoryEnumerationOptions options,
                                      DirectoryEnumerationOptions option) {
    return (static_cast<uint32_t>(options) & static_cast<uint32_t>(option)) != 0;
}

class QUODDLE_EXPORT FileManager {
  public:
    // Whether something is at the URL's path, following symbolic links: a dangling link is not.
    [[nodiscard]] static bool fileExists(const Url& atURL);

    // Whether the path names a folder now (links followed).
    [[nodiscard]] static bool isDirectory(const Url& url);

    // The entries of a folder, "." and ".." left out, in the order the file system returns them.
    // Each entry is a directory URL exactly when it is a folder itself; a symbolic link is a plain
    // entry even when it points at a folder, so walking the listing never follows a link (and so
    // never loops). Absent when the folder cannot be read.
    [[nodiscard]] static std::optional<std::vector<Url>> contentsOfDirectory(
        const Url& url, DirectoryEnumerationOptions options);

    // The file's content when it is well-formed UTF-8 text; absent when it cannot be read (missing,
    // a folder, no permission) or is not UTF-8. An empty file is "".
    [[nodiscard]] static std::optional<std::string> textContents(const Url& url);

    // Makes the folder; with `withIntermediateDirectories` its missing parents too, and a folder
    // that is already there counts as success. False when it could not be made, and errno then
    // says why.
    static bool createDirectory(const Url& url, bool withIntermediateDirectories);

    // $TMPDIR when it names a folder, else /tmp, as a directory URL.
    [[nodiscard]] static Url temporaryDirectory();
};

}  // namespace quod
