#include "quoddle/strings/Data.h"

#include <openssl/evp.h>

#include <array>

namespace quod {
namespace {

// Both digits of every byte value, so each byte costs one lookup and two stores.
constexpr std::array<std::array<char, 2>, 256> hexPairs = [] {
    constexpr char digits[] = "0123456789abcdef";
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < pairs.size(); ++byte) {
        pairs[byte] = {digits[byte >> 4], digits[byte & 0xF]};
    }
    return pairs;
}();

}  // namespace

std::string hexString(std::span<const std::uint8_t> bytes) {
    std::string hex(bytes.size() * 2, '\0');
    char* out = hex.data();
    for (const std::uint8_t byte : bytes) {
        *out++ = hexPairs[byte][0];
        *out++ = hexPairs[byte][1];
    }
    return hex;
}

std::optional<Data> sha256Digest(std::span<const std::uint8_t> bytes) {
    Data digest(EVP_MAX_MD_SIZE);
    unsigned int length = 0;
    const int succeeded =
        EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha256(), nullptr);
    if (succeeded != 1) {
        return std::nullopt;
    }
    digest.resize(length);
    return digest;
}

}  // namespace quod
