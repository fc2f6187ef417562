#include "quoddle/interface/PngText.h"

#include <gio/gio.h>

#include <algorithm>
#include <string_view>

#include "quoddle/interface/GLibPointers.h"

namespace quod::internal {
namespace {

constexpr std::uint8_t signature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t maximumTextLength = std::size_t{1} << 20;

std::uint32_t bigEndian(std::span<const std::uint8_t> bytes) {
    return (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
           (std::uint32_t{bytes[2]} << 8) | std::uint32_t{bytes[3]};
}

std::string latin1ToUtf8(std::span<const std::uint8_t> bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const std::uint8_t byte : bytes) {
        if (byte < 0x80) {
            text += static_cast<char>(byte);
        } else {
            text += static_cast<char>(0xC0 | (byte >> 6));
            text += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return text;
}

std::optional<std::string> inflate(std::span<const std::uint8_t> compressed) {
    const GObjectPointer<GZlibDecompressor> decompressor(
        g_zlib_decompressor_new(G_ZLIB_COMPRESSOR_FORMAT_ZLIB));
    std::string text;
    char buffer[4096];
    std::size_t offset = 0;
    for (;;) {
        gsize read = 0;
        gsize written = 0;
        GError* error = nullptr;
        const GConverterResult result = g_converter_convert(
            G_CONVERTER(decompressor.get()), compressed.data() + offset, compressed.size() - offset,
            buffer, sizeof buffer, G_CONVERTER_INPUT_AT_END, &read, &written, &error);
        if (result == G_CONVERTER_ERROR) {
            g_error_free(error);
            return std::nullopt;
        }
        offset += read;
        text.append(buffer, written);
        if (text.size() > maximumTextLength) return std::nullopt;
        if (result == G_CONVERTER_FINISHED) return text;
        if (read == 0 && written == 0) return std::nullopt;
    }
}

// The bytes up to the next NUL and what follows it; no value without a NUL.
std::optional<std::pair<std::span<const std::uint8_t>, std::span<const std::uint8_t>>> splitAtNul(
    std::span<const std::uint8_t> bytes) {
    const auto nul = std::ranges::find(bytes, std::uint8_t{0});
    if (nul == bytes.end()) return std::nullopt;
    const auto length = static_cast<std::size_t>(nul - bytes.begin());
    return std::pair(bytes.first(length), bytes.subspan(length + 1));
}

std::optional<std::pair<std::string, std::string>> textChunk(std::string_view type,
                                                             std::span<const std::uint8_t> data) {
    const auto keyword = splitAtNul(data);
    if (!keyword) return std::nullopt;
    std::string key = latin1ToUtf8(keyword->first);
    std::span<const std::uint8_t> rest = keyword->second;
    if (type == "tEXt") return std::pair(std::move(key), latin1ToUtf8(rest));
    if (type == "zTXt") {
        // One byte of compression method (0, zlib), then the compressed Latin-1 text.
        if (rest.empty() || rest[0] != 0) return std::nullopt;
        const auto text = inflate(rest.subspan(1));
        if (!text) return std::nullopt;
        return std::pair(std::move(key),
                         latin1ToUtf8(std::span(reinterpret_cast<const std::uint8_t*>(text->data()),
                                                text->size())));
    }
    // iTXt: compression flag, compression method, language tag, translated keyword, UTF-8 text.
    if (rest.size() < 2) return std::nullopt;
    const bool compressed = rest[0] != 0;
    if (compressed && rest[1] != 0) return std::nullopt;
    const auto language = splitAtNul(rest.subspan(2));
    if (!language) return std::nullopt;
    const auto translatedKeyword = splitAtNul(language->second);
    if (!translatedKeyword) return std::nullopt;
    const std::span<const std::uint8_t> text = translatedKeyword->second;
    if (!compressed) return std::pair(std::move(key), std::string(text.begin(), text.end()));
    auto inflated = inflate(text);
    if (!inflated) return std::nullopt;
    return std::pair(std::move(key), std::move(*inflated));
}

}  // namespace

std::optional<std::vector<std::pair<std::string, std::string>>> pngText(
    std::span<const std::uint8_t> bytes) {
    if (bytes.size() < sizeof signature ||
        !std::ranges::equal(bytes.first(sizeof signature), std::span(signature))) {
        return std::nullopt;
    }
    std::vector<std::pair<std::string, std::string>> chunks;
    std::span<const std::uint8_t> rest = bytes.subspan(sizeof signature);
    while (rest.size() >= 12) {
        const std::uint32_t length = bigEndian(rest);
        if (length > rest.size() - 12) return std::nullopt;
        const std::string_view type(reinterpret_cast<const char*>(rest.data() + 4), 4);
        const std::span<const std::uint8_t> data = rest.subspan(8, length);
        if (type == "IEND") return chunks;
        if (type == "tEXt" || type == "zTXt" || type == "iTXt") {
            auto chunk = textChunk(type, data);
            if (!chunk) return std::nullopt;
            chunks.push_back(std::move(*chunk));
        }
        rest = rest.subspan(12 + std::size_t{length});
    }
    return std::nullopt;
}

}  // namespace quod::internal
