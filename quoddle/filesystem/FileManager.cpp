#include "quoddle/filesystem/FileManager.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>

#include "quoddle/base/FileDescriptor.h"
#include "quoddle/strings/Utf8Scan.h"

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

std::optional<std::string> FileManager::textContents(const Url& url) {
    if (url.isEmpty()) return std::nullopt;
    const FileDescriptor file(::open(url.path().c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.valid()) return std::nullopt;
    std::string text;
    char chunk[65536];
    for (;;) {
        const ssize_t count = ::read(file.get(), chunk, sizeof chunk);
        if (count == 0) break;
        if (count < 0) {
            if (errno == EINTR) continue;
            return std::nullopt;  // EISDIR for a folder
        }
        text.append(chunk, static_cast<std::size_t>(count));
    }
    const auto bytes = std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    if (!internal::scanUtf8(bytes).wellFormed) return std::nullopt;
    return text;
}

bool FileManager::createDirectory(const Url& url, bool withIntermediateDirectories) {
    if (url.isEmpty()) return false;
    if (withIntermediateDirectories) {
        const Url parent = url.deletingLastPathComponent();
        if (parent != url && !isDirectory(parent) && !createDirectory(parent, true)) return false;
    }
    if (::mkdir(url.path().c_str(), 0777) == 0) return true;
    if (!withIntermediateDirectories || errno != EEXIST) return false;
    if (isDirectory(url)) return true;
    errno = ENOTDIR;  // a file stands where the folder must go
    return false;
}

Url FileManager::temporaryDirectory() {
    if (const char* variable = std::getenv("TMPDIR"); variable && *variable == '/') {
        const Url folder = Url::fileURL(variable, true);
        if (isDirectory(folder)) return folder;
    }
    return Url::fileURL("/tmp", true);
}

}  // namespace quod
