#include "quoddle/preferences/DataItem.h"

#include <array>
#include <cstdint>
#include <random>
#include <string_view>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/LocalizedCompare.h"

namespace quod::internal {

std::string makeUuidString() {
    // One generator per thread, seeded with 256 bits from the system's entropy source: cheap enough
    // for loading thousands of items, and no lock. The identities only tell items apart within one
    // run, so a non-cryptographic generator with a full-entropy seed is enough.
    thread_local std::mt19937_64 generator = [] {
        std::random_device entropy;
        std::array<std::uint32_t, 8> seed{};
        for (auto& word : seed)
            word = entropy();
        std::seed_seq sequence(seed.begin(), seed.end());
        return std::mt19937_64(sequence);
    }();
    std::array<std::uint8_t, 16> bytes{};
    for (std::size_t i = 0; i < bytes.size(); i += 8) {
        const std::uint64_t random = generator();
        for (std::size_t k = 0; k < 8; ++k)
            bytes[i + k] = static_cast<std::uint8_t>(random >> (8 * k));
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // RFC 4122 variant

    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
        text.push_back(digits[bytes[i] >> 4]);
        text.push_back(digits[bytes[i] & 0x0F]);
    }
    return text;
}

std::vector<std::size_t> localizedOrder(const std::vector<const std::string*>& names,
                                        const icu::Locale& locale) {
    std::vector<std::u16string> converted;
    converted.reserve(names.size());
    for (const std::string* name : names)
        converted.push_back(toUtf16(*name));
    const std::vector<std::u16string_view> views(converted.begin(), converted.end());
    return localizedStandardOrder(views, SortOrder::ascending, locale);
}

}  // namespace quod::internal
