#include "quoddle/interface/QuickLook.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

#include "quoddle/base/FileBytes.h"
#include "quoddle/base/FileReplacement.h"
#include "quoddle/filesystem/WellKnownFolders.h"
#include "quoddle/interface/GLibPointers.h"
#include "quoddle/interface/PngText.h"
#include "quoddle/interface/ThumbnailGenerator.h"

namespace quod::Interface {
namespace {

using quod::internal::GString;

struct SizeFolder {
    std::string_view name;
    int pixels;
};

constexpr SizeFolder sizeFolders[] = {
    {"normal", 128}, {"large", 256}, {"x-large", 512}, {"xx-large", 1024}};

SizeFolder sizeFolder(double side) {
    for (const SizeFolder& folder : sizeFolders) {
        if (side <= folder.pixels) return folder;
    }
    return sizeFolders[std::size(sizeFolders) - 1];
}

std::optional<long long> integer(std::string_view text) {
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

bool isCurrent(const std::string& thumbnail, std::string_view uri, const struct stat& file) {
    const auto bytes = FileBytes::read(thumbnail);
    if (!bytes) return false;
    const auto chunks = internal::pngText(bytes->bytes());
    if (!chunks) return false;
    bool uriMatches = false;
    bool timeMatches = false;
    for (const auto& [key, value] : *chunks) {
        if (key == "Thumb::URI") {
            uriMatches = value == uri;
        } else if (key == "Thumb::MTime") {
            timeMatches = integer(value) == static_cast<long long>(file.st_mtime);
        } else if (key == "Thumb::Size" && integer(value) != static_cast<long long>(file.st_size)) {
            return false;
        }
    }
    return uriMatches && timeMatches;
}

// Makes `path` and the folders above it that are missing, each private to the user.
bool makePrivateFolders(const std::string& path) {
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string folder = path.substr(0, slash);
        if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return false;
        if (slash == std::string::npos) break;
    }
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool write(const std::string& target, std::span<const std::uint8_t> png) {
    // Replacing would keep an older thumbnail's mode, which another writer may have made
    // readable to others.
    if (::unlink(target.c_str()) != 0 && errno != ENOENT) return false;
    auto file = FileReplacement::replacing(target, FileReplacement::NewFilePermissions::ownerOnly);
    return file && file->write(png) && file->commit();
}

}  // namespace

std::optional<Url> quickLookImageURL(const Url& url, double width, double height) {
    // Negated so that NaN fails too.
    if (url.isEmpty() || !(width > 0 && height > 0) || !std::isfinite(width) ||
        !std::isfinite(height)) {
        return std::nullopt;
    }
    const double side = std::max(width, height);

    const std::string path = url.standardized().path();
    struct stat file {};
    if (::stat(path.c_str(), &file) != 0 || !S_ISREG(file.st_mode) ||
        ::access(path.c_str(), R_OK) != 0) {
        return std::nullopt;
    }
    const std::string cache = User::caches().path() + "/thumbnails";
    if (path.starts_with(cache + "/")) return std::nullopt;

    const GString uri(g_filename_to_uri(path.c_str(), nullptr, nullptr));
    if (!uri) return std::nullopt;
    const GString digest(g_compute_checksum_for_string(G_CHECKSUM_MD5, uri.get(), -1));
    const SizeFolder size = sizeFolder(side);
    const std::string folder = cache + "/" + std::string(size.name);
    const std::string thumbnail = folder + "/" + digest.get() + ".png";
    if (isCurrent(thumbnail, uri.get(), file)) return Url::fileURL(thumbnail, false);

    const auto generator = ThumbnailGenerator::installed();
    if (!generator) return std::nullopt;
    const ThumbnailGenerator::TextChunk text[] = {
        {"Thumb::URI", uri.get()},
        {"Thumb::MTime", std::to_string(static_cast<long long>(file.st_mtime))},
        {"Thumb::Size", std::to_string(static_cast<long long>(file.st_size))},
        {"Software", "Quoddle"},
    };
    const auto png = generator->pngData(path, size.pixels, text);
    if (!png || !makePrivateFolders(folder) || !write(thumbnail, *png)) return std::nullopt;
    return Url::fileURL(thumbnail, false);
}

}  // namespace quod::Interface
