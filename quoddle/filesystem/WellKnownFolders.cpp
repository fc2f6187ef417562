#include "quoddle/filesystem/WellKnownFolders.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "quoddle/filesystem/File.h"
#include "quoddle/filesystem/FileManager.h"
#include "quoddle/runtime/Bundle.h"
#include "quoddle/runtime/InfoPlist.h"
#include "quoddle/runtime/StringFormat.h"
#include "quoddle/runtime/SystemLog.h"

namespace quod {
namespace {

// The home folder the user domain is relative to: $HOME, as "~" expands.
std::string home() {
    return standardizingPath("~");
}

std::string applicationName() {
    if (const auto& info = InfoPlist::main()) return info->executable;
    return internal::runningExecutablePath().filename().string();
}

std::string bundleIdentifier() {
    if (const auto& info = InfoPlist::main()) return info->identifier;
    return applicationName();
}

Url dataHome() {
    return internal::xdgBaseDirectory(std::getenv("XDG_DATA_HOME"), home(), ".local/share");
}

}  // namespace

namespace internal {

Url xdgBaseDirectory(const char* variable, std::string_view home,
                     std::string_view defaultRelative) {
    if (variable != nullptr && *variable == '/') return Url::fileURL(variable, true);
    return Url::fileURL(home, true).appendingPathComponent(defaultRelative, true);
}

std::optional<Url> userDirectory(std::string_view userDirsFile, std::string_view key,
                                 std::string_view home) {
    std::optional<Url> found;
    while (!userDirsFile.empty()) {
        const std::size_t end = userDirsFile.find('\n');
        std::string_view line = userDirsFile.substr(0, end);
        userDirsFile.remove_prefix(end == std::string_view::npos ? userDirsFile.size() : end + 1);

        const std::size_t start = line.find_first_not_of(" \t");
        if (start == std::string_view::npos) continue;
        line.remove_prefix(start);
        if (!line.starts_with(key) || !line.substr(key.size()).starts_with("=\"")) continue;
        line.remove_prefix(key.size() + 2);

        std::string value;
        bool closed = false;
        for (std::size_t i = 0; i < line.size() && !closed; ++i) {
            if (line[i] == '\\' && i + 1 < line.size()) {
                value += line[++i];
            } else if (line[i] == '"') {
                closed = true;
            } else {
                value += line[i];
            }
        }
        if (!closed) continue;
        if (value == "$HOME" || value.starts_with("$HOME/")) {
            found = Url::fileURL(std::string(home) + value.substr(5), true);
        } else if (value.starts_with('/')) {
            found = Url::fileURL(value, true);
        }  // anything else is not a folder we can use; a later line may still set the key
    }
    return found;
}

Url applicationSupportFolder(const Url& dataHome, const Url& library) {
    if (FileManager::createDirectory(dataHome, true)) return dataHome;
    const std::string reason = std::error_code(errno, std::generic_category()).message();
    systemLog(formatString("File manager error: %@", {dataHome.path() + ": " + reason}));
    return library.appendingPathComponent("Application Support", true);
}

Url currentAppSupportFolder(const Url& library, std::string_view applicationName) {
    Url folder = library.appendingPathComponent(applicationName, true);
    if (!FileManager::createDirectory(folder, true))
        systemLog("Could not create application support folder");
    return folder;
}

}  // namespace internal

const Url& User::library() {
    static const Url folder = dataHome();
    return folder;
}

const Url& User::caches() {
    static const Url folder =
        internal::xdgBaseDirectory(std::getenv("XDG_CACHE_HOME"), home(), ".cache");
    return folder;
}

const Url& User::appCaches() {
    static const Url folder = [] {
        Url made = caches().appendingPathComponent(bundleIdentifier(), true);
        (void)FileManager::createDirectory(made, true);  // not reported, as promised
        return made;
    }();
    return folder;
}

const Url& User::documents() {
    static const Url folder = [] {
        const Url config =
            internal::xdgBaseDirectory(std::getenv("XDG_CONFIG_HOME"), home(), ".config");
        const auto file =
            FileManager::textContents(config.appendingPathComponent("user-dirs.dirs", false));
        if (file) {
            if (auto configured = internal::userDirectory(*file, "XDG_DOCUMENTS_DIR", home()))
                return *configured;
        }
        return Url::fileURL(home(), true).appendingPathComponent("Documents", true);
    }();
    return folder;
}

const Url& User::applicationSupport() {
    static const Url folder = internal::applicationSupportFolder(dataHome(), library());
    return folder;
}

const Url& NonSandboxedUser::library() {
    static const Url folder =
        File::nonSandboxedHomeFolderURL().appendingPathComponent(".local/share", true);
    return folder;
}

const Url& NonSandboxedUser::currentAppApplicationSupport() {
    static const Url folder = internal::currentAppSupportFolder(library(), applicationName());
    return folder;
}

const Url& Local::library() {
    static const Url folder = Url::fileURL("/usr/local/share", true);
    return folder;
}

const Url& Local::applications() {
    static const Url folder = library().appendingPathComponent("applications", true);
    return folder;
}

const Url& System::library() {
    static const Url folder = Url::fileURL("/usr/share", true);
    return folder;
}

const Url& System::iconResources() {
    static const Url folder = library().appendingPathComponent("icons", true);
    return folder;
}

const Url& System::applications() {
    static const Url folder = library().appendingPathComponent("applications", true);
    return folder;
}

}  // namespace quod
