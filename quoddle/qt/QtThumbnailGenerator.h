// Thumbnails from Qt's image readers (PNG, JPEG, GIF, BMP and whatever image plugins are
// installed), for the core's thumbnail cache (interface/QuickLook.h).
//
// The reader decides from the file's contents, not its name, whether it is an image. Large
// images are scaled while they are read where the format allows (JPEG decodes at a fraction of
// its size), then smoothly to fit; the orientation tag is applied. The text chunks go into the
// PNG as Qt writes them (short texts plain, long ones compressed), with the original's width and
// height added as "Thumb::Image::Width" and "Thumb::Image::Height". Reentrant: any thread.
#pragma once

#include "quoddle/interface/ThumbnailGenerator.h"

namespace quod {

class QtThumbnailGenerator : public ThumbnailGenerator {
  public:
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> pngData(
        const std::string& path, int size, std::span<const TextChunk> text) const override;
};

}  // namespace quod
