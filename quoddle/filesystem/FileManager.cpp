#include "quoddle/filesystem/FileManager.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace quod {

bool FileManager::fileExists(const Url& atURL) {
    struct stat status {};
    return !atURL.isEmpty() && ::stat(atURL.path().c_str(), &status) == 0;
}

bool FileManager::isDirectory(const Url& url) {
    struct stat status {};
    return !url.isEmpty() && ::stat(url.path().c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::optional<std::vector<Url>> FileManager::contentsOfDirectory(
    const Url& url, DirectoryEnumerationOptions options) {
    if (url.isEmpty()) return std::nullopt;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(url.path().c_str()), ::closedir);
    if (!folder) return std::nullopt;
    const bool skipHidden = contains(options, DirectoryEnumerationOptions::skipsHiddenFiles);
    std::vector<Url> entries;
    errno = 0;
    while (const dirent* entry = ::readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (skipHidden && name.front() == '.') continue;
        bool isFolder = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN) {  // some file systems do not fill the type in
            struct stat status {};
            isFolder = ::fstatat(::dirfd(folder.get()), entry->d_name, &status,
                                 AT_SYMLINK_NOFOLLOW) == 0 &&
                       S_ISDIR(status.st_mode);
        }
        entries.push_back(url.appendingPathComponent(name, isFolder));
    }
    if (errno != 0) return std::nullopt;
    return entries;
}

bool FileManager::createDirectory(const Url& url, bool withIntermediateDirectories) {
    if (url.isEmpty()) return false;
    if (withIntermediateDirectories) {
        const Url parent = url.deletingLastPathComponent();
        if (parent != url && !isDirectory(parent) && !createDirectory(parent, true)) return false;
    }
    if (::mkdir(url.path().c_str(), 0777) == 0) return true;
    return withIntermediateDirectories && errno == EEXIST && isDirectory(url);
}

Url FileManager::temporaryDirectory() {
    if (const char* variable = std::getenv("TMPDIR"); variable && *variable == '/') {
        const Url folder = Url::fileURL(variable, true);
        if (isDirectory(folder)) return folder;
    }
    return Url::fileURL("/tmp", true);
}

}  // namespace quod
