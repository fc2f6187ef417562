// The text chunks of a PNG file (tEXt, zTXt and iTXt), which the thumbnail cache keeps its
// facts about a thumbnail in.
//
// `pngText(bytes)` answers every chunk's keyword and text, in file order, as UTF-8 (tEXt and
// zTXt are Latin-1 and converted; compressed texts are inflated, up to 1 MiB each). Only a whole
// PNG answers: the signature, chunks whose lengths fit, and the IEND chunk at the end; anything
// else (a torn or foreign file) gives no value, as does a text chunk that cannot be decoded.
// Checksums are not verified: the cache only needs to know the thumbnail is complete.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace quod::internal {

[[nodiscard]] std::optional<std::vector<std::pair<std::string, std::string>>> pngText(
    std::span<const std::uint8_t> bytes);

}  // namespace quod::internal
