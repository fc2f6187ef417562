// Raw bytes and the two views of them the framework shows or compares: hex text and a SHA-256
// digest.
//
// hexString writes two lower-case digits per byte with no separator ({0x00, 0xAB} -> "00ab"; no
// bytes -> ""). sha256Digest gives the 32-byte digest, or no value when the crypto library cannot
// set up or run the digest (a broken installation, never the bytes themselves).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "quoddle/Export.h"

namespace quod {

using Data = std::vector<std::uint8_t>;

[[nodiscard]] QUODDLE_EXPORT std::string hexString(std::span<const std::uint8_t> bytes);

[[nodiscard]] QUODDLE_EXPORT std::optional<Data> sha256Digest(std::span<const std::uint8_t> bytes);

}  // namespace quod
