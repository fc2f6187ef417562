#include "quoddle/strings/PathStrings.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace quod {

std::string homeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return home;
    }
    return internal::passwordDatabaseHomeFolder();
}

namespace internal {

std::string passwordDatabaseHomeFolder() {
    // The reentrant lookup, since any thread may ask.
    const long suggested = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(suggested > 0 ? static_cast<std::size_t>(suggested) : 16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr || found->pw_dir == nullptr) {
        return {};
    }
    return found->pw_dir;
}

}  // namespace internal

std::string lastPathComponent(std::string_view path) {
    if (path.empty()) {
        return {};
    }
    const std::size_t last = path.find_last_not_of('/');
    if (last == std::string_view::npos) {
        return "/";
    }
    const std::string_view trimmed = path.substr(0, last + 1);
    // With no slash left, rfind gives npos and npos + 1 is 0: the whole string.
    return std::string(trimmed.substr(trimmed.rfind('/') + 1));
}

std::string shortenHomeFolder(std::string_view s) {
    return shortenHomeFolder(s, homeFolder());
}

std::string shortenHomeFolder(std::string_view s, std::string_view home) {
    const std::size_t last = home.find_last_not_of('/');
    if (last == std::string_view::npos) {
        return std::string(s);
    }
    home = home.substr(0, last + 1);

    std::string result;
    result.reserve(s.size());
    std::size_t from = 0;
    for (std::size_t at = s.find(home); at != std::string_view::npos; at = s.find(home, from)) {
        result.append(s.substr(from, at - from));
        result += '~';
        from = at + home.size();
    }
    result.append(s.substr(from));
    return result;
}

}  // namespace quod
