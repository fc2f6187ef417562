// The thumbnail cache's reader of PNG text chunks, over PNG files put together here chunk by
// chunk: every kind of text chunk, and nothing from a file that is cut short or damaged.
#include <gio/gio.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "quoddle/interface/PngText.h"

namespace quod::internal {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Texts = std::vector<std::pair<std::string, std::string>>;

std::string zlib(const std::string& text) {
    GZlibCompressor* const compressor = g_zlib_compressor_new(G_ZLIB_COMPRESSOR_FORMAT_ZLIB, -1);
    std::string compressed(text.size() + 64, '\0');
    gsize read = 0;
    gsize written = 0;
    g_converter_convert(G_CONVERTER(compressor), text.data(), text.size(), compressed.data(),
                        compressed.size(), G_CONVERTER_INPUT_AT_END, &read, &written, nullptr);
    g_object_unref(compressor);
    compressed.resize(written);
    return compressed;
}

// A chunk as PNG lays it out; the checksum is left zero, as the reader does not look at it.
void chunk(Bytes& png, const char* type, const std::string& data) {
    const auto length = static_cast<std::uint32_t>(data.size());
    for (const int shift : {24, 16, 8, 0})
        png.push_back(static_cast<std::uint8_t>(length >> shift));
    png.insert(png.end(), type, type + 4);
    png.insert(png.end(), data.begin(), data.end());
    png.insert(png.end(), 4, 0);
}

Bytes thumbnail() {
    Bytes png{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    using namespace std::string_literals;
    chunk(png, "IHDR", std::string(13, '\0'));
    chunk(png, "tEXt", "Thumb::MTime\0"s + "1700000000");
    chunk(png, "zTXt", "Thumb::URI\0\0"s + zlib("file:///home/me/caf\xe9.png"));
    chunk(png, "IDAT", "not looked at");
    chunk(png, "iTXt", "Software\0\0\0"s + "en\0"s + "\0"s + "Quoddle \u2713");
    chunk(png, "iTXt", "Comment\0\1\0"s + "\0"s + "\0"s + zlib("gut \u00fcberlegt"));
    chunk(png, "IEND", "");
    return png;
}

TEST(PngText, ReadsEveryKindOfTextChunkInFileOrder) {
    EXPECT_EQ(pngText(thumbnail()), (Texts{{"Thumb::MTime", "1700000000"},
                                           {"Thumb::URI", "file:///home/me/caf\u00e9.png"},
                                           {"Software", "Quoddle \u2713"},
                                           {"Comment", "gut \u00fcberlegt"}}));
}

TEST(PngText, OnlyAWholeUndamagedFileAnswers) {
    const Bytes whole = thumbnail();
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(pngText(std::span(whole).first(length))) << length << " bytes";

    Bytes notPng = whole;
    notPng[1] = 'Q';
    EXPECT_FALSE(pngText(notPng));

    Bytes badCompression{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    chunk(badCompression, "zTXt", std::string("Key\0\0", 5) + "no zlib stream here");
    chunk(badCompression, "IEND", "");
    EXPECT_FALSE(pngText(badCompression));

    Bytes noKeyword{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    chunk(noKeyword, "tEXt", "no terminating zero");
    chunk(noKeyword, "IEND", "");
    EXPECT_FALSE(pngText(noKeyword));
}

}  // namespace
}  // namespace quod::internal
