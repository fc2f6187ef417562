// Fuzzes Text::EncodingScan against the functions it stands in for: the input, fed in pieces of a
// size its first byte chooses, must get the answers guessEncoding and detectEncoding give for all
// of it whenever the scan gives one; and plain UTF-8, or any input too short to hold a declared
// value the scan gives up on, must get one. Large inputs go in pieces of a megabyte.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/EncodingDetection.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::span<const std::uint8_t> bytes(data + 1, size - 1);
    const std::size_t piece = bytes.size() > 64 * 1024 ? std::size_t{1} << 20 : data[0] % 31 + 1;
    quod::Text::EncodingScan scan;
    for (std::size_t at = 0; at < bytes.size(); at += piece)
        scan.append(bytes.subspan(at, std::min(piece, bytes.size() - at)));

    const auto guessed = scan.guessedEncoding();
    if (guessed && *guessed != quod::Text::guessEncoding(bytes)) __builtin_trap();
    if (!guessed && bytes.size() <= 1024) __builtin_trap();
    const auto detected = scan.detectedEncoding();
    if (detected && *detected != quod::Text::detectEncoding(bytes)) __builtin_trap();
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const bool wellFormed = quod::toUtf16IfValid(text).has_value();
    if (scan.isWellFormedUtf8() != wellFormed) __builtin_trap();
    const bool plain = wellFormed && text.find('\0') == std::string_view::npos &&
                       text.find('\x1B') == std::string_view::npos;
    if (plain && !detected) __builtin_trap();
    return 0;
}
