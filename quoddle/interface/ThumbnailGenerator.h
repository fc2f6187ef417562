// Makes the picture of a thumbnail: the one step of thumbnailing that needs an image library.
//
// The core reads and writes the thumbnail cache itself (Interface::quickLookImageURL,
// QuickLook.h) but cannot decode images, so the process holds one installed generator, which
// the toolkit layer provides: QtPlatform::install() installs one that reads with Qt's image
// readers. Until one is installed, `installed()` is null and thumbnails that are not already in
// the cache are not made. Installing and reading are thread-safe; a generator is called from
// whatever thread asked for the thumbnail, so it must be safe to call from any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT ThumbnailGenerator {
  public:
    using TextChunk = std::pair<std::string, std::string>;

    virtual ~ThumbnailGenerator() = default;

    // PNG data of the image in the file at `path`, scaled to fit in `size` × `size` pixels with
    // its proportions kept (an image that fits already keeps its size: thumbnails are never
    // enlarged), turned upright as its orientation tag says, and carrying each of `text` as a
    // PNG text chunk (key, UTF-8 value). No value for a file that is not an image the generator
    // can read.
    [[nodiscard]] virtual std::optional<std::vector<std::uint8_t>> pngData(
        const std::string& path, int size, std::span<const TextChunk> text) const = 0;

    [[nodiscard]] static std::shared_ptr<const ThumbnailGenerator> installed();
    // Null uninstalls.
    static void install(std::shared_ptr<const ThumbnailGenerator> generator);
};

}  // namespace quod
