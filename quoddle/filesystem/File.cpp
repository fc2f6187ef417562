#include "quoddle/filesystem/File.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <span>

#include "quoddle/filesystem/FileManager.h"
#include "quoddle/preferences/DataItem.h"  // makeUuidString
#include "quoddle/strings/PathStrings.h"
#include "quoddle/strings/Utf8Scan.h"

namespace quod {
namespace {

struct GObjectRelease {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using GObjectPointer = std::unique_ptr<T, GObjectRelease>;

struct GFreeRelease {
    void operator()(gpointer memory) const { g_free(memory); }
};
using OwnedGString = std::unique_ptr<gchar, GFreeRelease>;

// The content type of the file, from its name and content; of the name alone when it cannot be
// read. GIO always answers something ("application/octet-stream" at worst).
OwnedGString contentType(const Url& url) {
    const GObjectPointer<GFile> file(g_file_new_for_path(url.path().c_str()));
    const GObjectPointer<GFileInfo> info(
        g_file_query_info(file.get(), G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE,
                          G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
    if (info) {
        if (const char* type = g_file_info_get_content_type(info.get()))
            return OwnedGString(g_strdup(type));
    }
    return OwnedGString(g_content_type_guess(url.lastPathComponent().c_str(), nullptr, 0, nullptr));
}

// The .desktop file of an application; empty when it has none.
std::string desktopFile(GAppInfo* application) {
    if (application == nullptr || !G_IS_DESKTOP_APP_INFO(application)) return {};
    const char* path = g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(application));
    return path ? path : "";
}

std::optional<std::string> nameOfApplicationAt(const Url& application) {
    return internal::removingPercentEncoding(application.lastPathComponent());
}

// The application whose .desktop file is the answer, after the text-editor rule; null for none.
GObjectPointer<GAppInfo> defaultApplication(const Url& url) {
    if (url.isEmpty()) return nullptr;
    const OwnedGString type = contentType(url);
    GObjectPointer<GAppInfo> application(g_app_info_get_default_for_type(type.get(), FALSE));
    const std::string file = desktopFile(application.get());
    if (file.empty()) return nullptr;
    const auto name = nameOfApplicationAt(Url::fileURL(file, false));
    if (name && name->find("Quillmere") != std::string::npos)
        application.reset(g_app_info_get_default_for_uri_scheme("https"));
    if (desktopFile(application.get()).empty()) return nullptr;
    return application;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The framework counts time from 2001-01-01 00:00:00 UTC, as property lists do; in Unix seconds:
constexpr double referenceDateInUnixSeconds = 978307200.0;

}  // namespace

std::optional<Url> File::defaultAppURL(const Url& url) {
    const auto application = defaultApplication(url);
    if (!application) return std::nullopt;
    return Url::fileURL(desktopFile(application.get()), false);
}

std::optional<std::string> File::defaultAppName(const Url& url) {
    const auto application = defaultAppURL(url);
    if (!application) return std::nullopt;
    return nameOfApplicationAt(*application);
}

std::optional<std::string> File::defaultLocalizedAppName(const Url& url) {
    const auto application = defaultApplication(url);
    if (!application) return std::nullopt;
    const char* name = g_app_info_get_display_name(application.get());
    if (name == nullptr) return std::nullopt;
    return std::string(name);
}

bool File::isReadOnlyVolume(const Url& url) {
    struct statvfs volume {};
    if (url.isEmpty() || ::statvfs(url.path().c_str(), &volume) != 0) return false;
    return (volume.f_flag & ST_RDONLY) != 0;
}

const Url& File::nonSandboxedHomeFolderURL() {
    static const Url home = [] {
        std::string path = internal::passwordDatabaseHomeFolder();
        if (path.empty()) {
            const char* variable = std::getenv("HOME");
            path = variable && *variable == '/' ? variable : "/";
        }
        return Url::fileURL(path, true);
    }();
    return home;
}

const std::string& File::nonSandboxedHomeFolderPath() {
    return nonSandboxedHomeFolderURL().path();
}

Url File::temporaryURL() {
    using namespace std::chrono;
    const double seconds = duration<double>(system_clock::now().time_since_epoch()).count() -
                           referenceDateInUnixSeconds;
    char digits[32];
    const auto written = std::to_chars(std::begin(digits), std::end(digits), seconds);
    std::string name = "QDL-" + std::to_string(::getpid()) + "-";
    name.append(digits, written.ptr);
    return internal::unusedLocation(FileManager::temporaryDirectory(), name);
}

namespace internal {

Url unusedLocation(const Url& folder, std::string_view name) {
    Url location = folder.appendingPathComponent(name, false);
    // lstat, not the exists test: a dangling link is something there, and a file written at this
    // location would follow it somewhere else.
    struct stat status {};
    if (::lstat(location.path().c_str(), &status) != 0) return location;
    return folder.appendingPathComponent(makeUuidString(), false);
}

std::optional<std::string> removingPercentEncoding(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        if (i + 2 >= text.size()) return std::nullopt;
        const int high = hexValue(text[i + 1]);
        const int low = hexValue(text[i + 2]);
        if (high < 0 || low < 0) return std::nullopt;
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    const auto bytes =
        std::span(reinterpret_cast<const std::uint8_t*>(decoded.data()), decoded.size());
    if (!scanUtf8(bytes).wellFormed) return std::nullopt;
    return decoded;
}

}  // namespace internal
}  // namespace quod
