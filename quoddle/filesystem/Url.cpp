#include "quoddle/filesystem/Url.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "quoddle/strings/PathStrings.h"

namespace quod {
namespace {

std::string withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return std::string(path);
}

std::string absolute(std::string_view path) {
    if (path.empty() || path.front() == '/') return std::string(path);
    std::error_code error;
    std::string full = std::filesystem::current_path(error).string();
    if (error) full.clear();  // no current folder: the root
    if (full.empty() || full.back() != '/') full.push_back('/');
    full.append(path);
    return full;
}

bool isDirectoryOnDisk(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

Url Url::fileURL(std::string_view path) {
    if (path.empty()) return {};
    std::string full = absolute(path);
    const bool trailingSlash = full.size() > 1 && full.back() == '/';
    std::string trimmed = withoutTrailingSlashes(full);
    const bool isDirectory = trailingSlash || trimmed == "/" || isDirectoryOnDisk(trimmed);
    return Url(std::move(trimmed), isDirectory);
}

Url Url::fileURL(std::string_view path, bool isDirectory) {
    if (path.empty()) return {};
    std::string trimmed = withoutTrailingSlashes(absolute(path));
    return Url(std::move(trimmed), isDirectory || trimmed == "/");
}

std::string Url::lastPathComponent() const {
    return quod::lastPathComponent(path_);
}

Url Url::deletingLastPathComponent() const {
    if (path_.empty() || path_ == "/") return *this;
    const size_t slash = path_.rfind('/');
    if (slash == std::string::npos || slash == 0) return Url("/", true);
    return Url(withoutTrailingSlashes(std::string_view(path_).substr(0, slash)), true);
}

Url Url::appendingPathComponent(std::string_view component) const {
    Url result = appendingPathComponent(component, false);
    result.isDirectory_ =
        (!component.empty() && component.back() == '/') || isDirectoryOnDisk(result.path_);
    return result;
}

Url Url::appendingPathComponent(std::string_view component, bool isDirectory) const {
    if (path_.empty()) return {};
    std::string joined = path_;
    while (!component.empty() && component.front() == '/')
        component.remove_prefix(1);
    if (joined.back() != '/' && !component.empty()) joined += '/';
    joined += component;
    return Url(withoutTrailingSlashes(joined), isDirectory || (component.empty() && isDirectory_));
}

Url Url::standardized() const {
    if (path_.empty()) return {};
    return Url(standardizingPath(path_), isDirectory_);
}

std::string Url::absoluteString() const {
    if (path_.empty()) return {};
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string text = "file://";
    for (const unsigned char c : path_) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') ||
                           std::string_view("/-._~!$&'()*+,;=:@").find(static_cast<char>(c)) !=
                               std::string_view::npos;
        if (plain) {
            text += static_cast<char>(c);
        } else {
            text += '%';
            text += hex[c >> 4];
            text += hex[c & 0xF];
        }
    }
    if (isDirectory_ && path_ != "/") text += '/';
    return text;
}

std::string standardizingPath(std::string_view path) {
    if (path.empty()) return {};
    std::string expanded;
    if (path == "~" || path.starts_with("~/")) {
        std::string home = homeFolder();
        expanded = (home.empty() ? "/" : home) + std::string(path.substr(1));
    } else {
        expanded = std::string(path);
    }
    const bool isAbsolute = expanded.front() == '/';
    std::vector<std::string_view> kept;
    std::string_view rest = expanded;
    while (!rest.empty()) {
        const size_t slash = rest.find('/');
        const std::string_view component = rest.substr(0, slash);
        rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash + 1);
        if (component.empty() || component == ".") continue;
        if (component == "..") {
            if (!kept.empty() && kept.back() != "..") {
                kept.pop_back();
                continue;
            }
            if (isAbsolute) continue;  // the root's parent is the root
        }
        kept.push_back(component);
    }
    if (kept.empty()) return isAbsolute ? "/" : ".";
    std::string result;
    for (const std::string_view component : kept) {
        if (isAbsolute || !result.empty()) result += '/';
        result += component;
    }
    return result;
}

}  // namespace quod
