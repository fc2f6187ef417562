#include "quoddle/filesystem/SecureURL.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <cstddef>
#include <string>
#include <utility>

#include "quoddle/filesystem/FileManager.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/runtime/SystemLog.h"

namespace quod {
namespace {

constexpr std::array<uint8_t, 4> magic{'Q', 'D', 'L', 'B'};
constexpr uint8_t version = 1;
constexpr uint8_t directoryFlag = 0x01;
constexpr std::size_t headerSize = magic.size() + 1 + 1 + 4;  // magic, version, flags, length
constexpr std::size_t maximumPathBytes = PATH_MAX - 1;        // what the kernel takes, sans NUL

std::atomic<int> closedScopes{0};

bool isUsablePath(std::string_view path) {
    return !path.empty() && path.front() == '/' && path.size() <= maximumPathBytes &&
           path.find('\0') == std::string_view::npos;
}

// Where a sandboxed platform grants and withdraws access; on Linux the path is reachable as it is.
bool startAccessingSecurityScopedResource(const Url&) {
    return true;
}
void stopAccessingSecurityScopedResource(const Url&) {
    ++closedScopes;
}

std::optional<Url> resolveBookmarkData(std::span<const uint8_t> data) {
    if (data.size() < headerSize || !std::equal(magic.begin(), magic.end(), data.begin()) ||
        data[4] != version || (data[5] & ~directoryFlag) != 0)
        return std::nullopt;
    uint32_t length = 0;
    for (std::size_t i = 0; i < 4; ++i)
        length |= uint32_t{data[6 + i]} << (8 * i);
    if (data.size() - headerSize != length) return std::nullopt;
    const std::string path(data.begin() + headerSize, data.end());
    if (!isUsablePath(path)) return std::nullopt;
    return Url::fileURL(path, (data[5] & directoryFlag) != 0);
}

}  // namespace

std::optional<SecureURL> SecureURL::fromKey(std::string_view key) {
    const auto defaults = UserDefaults::standard();
    const auto value = defaults->objectForKey(key);
    if (!value) return std::nullopt;
    const Data* data = value->as<Data>();
    auto restored = data ? fromData(*data) : std::nullopt;
    if (!restored) defaults->removeObject(key);  // a broken entry would only fail again
    return restored;
}

std::optional<SecureURL> SecureURL::fromData(std::span<const uint8_t> data) {
    auto url = resolveBookmarkData(data);
    if (!url) return std::nullopt;
    SecureURL restored(std::move(*url));
    restored.hasStartedAccessing_ = startAccessingSecurityScopedResource(restored.url_);
    return restored;
}

std::optional<Data> SecureURL::bookmark() const {
    const std::string& path = url_.path();
    if (!isUsablePath(path) || !FileManager::fileExists(url_)) return std::nullopt;
    Data data(magic.begin(), magic.end());
    data.push_back(version);
    data.push_back(url_.hasDirectoryPath() ? directoryFlag : 0);
    const auto length = static_cast<uint32_t>(path.size());
    for (std::size_t i = 0; i < 4; ++i)
        data.push_back(static_cast<uint8_t>(length >> (8 * i)));
    data.insert(data.end(), path.begin(), path.end());
    return data;
}

void SecureURL::saveBookmark(std::string_view key) const {
    if (auto data = bookmark()) {
        UserDefaults::standard()->setObject(key, PlistValue(std::move(*data)));
    } else {
        systemLog("Couldn't save secure bookmark to defaults");
    }
}

SecureURL::SecureURL(SecureURL&& other) noexcept
    : hasStartedAccessing_(std::exchange(other.hasStartedAccessing_, false)),
      url_(std::move(other.url_)) {}

SecureURL& SecureURL::operator=(SecureURL&& other) noexcept {
    if (this != &other) {
        stopAccessing();
        hasStartedAccessing_ = std::exchange(other.hasStartedAccessing_, false);
        url_ = std::move(other.url_);
    }
    return *this;
}

SecureURL::~SecureURL() {
    stopAccessing();
}

void SecureURL::stopAccessing() {
    if (!hasStartedAccessing_) return;
    stopAccessingSecurityScopedResource(url_);
    hasStartedAccessing_ = false;
}

namespace internal {

int closedSecurityScopeCount() {
    return closedScopes.load();
}

}  // namespace internal
}  // namespace quod
