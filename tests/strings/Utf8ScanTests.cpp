#include <gtest/gtest.h>

#include <random>
#include <string>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/Data.h"
#include "quoddle/strings/Utf8Scan.h"

namespace quod {
namespace {

internal::Utf8Scan scan(std::string_view text) {
    return internal::scanUtf8(Data(text.begin(), text.end()));
}

// The scan against the framework's decoder, on random texts built from ASCII runs (long enough
// for the block-wise skip), well-formed sequences of every length, and the bytes that break them.
TEST(Utf8Scan, AgreesWithTheDecoder) {
    const std::string_view pieces[] = {
        "a",
        "abcdefghijklmnopq",
        std::string_view("\0", 1),
        "\xC3\xA9",
        "\xE2\x82\xAC",
        "\xF0\x9F\x98\x80",
        "\xEF\xBB\xBF",
        "\xC3",
        "\xE2\x82",
        "\xF0\x9F\x98",
        "\x80",
        "\xBF",
        "\xC0\xAF",
        "\xC1\xBF",
        "\xE0\x80\xAF",
        "\xED\xA0\x80",
        "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80",
        "\xFF",
    };
    std::mt19937 random(8);
    for (int round = 0; round < 20'000; ++round) {
        std::string text;
        // Up to a few hundred bytes, so that texts cross the 32-byte blocks of the vector scan.
        const int count = static_cast<int>(random() % 60);
        for (int i = 0; i < count; ++i) {
            // Mostly well-formed pieces, so that the interesting byte comes late in the text.
            const std::size_t pick =
                random() % 4 == 0 ? random() % std::size(pieces) : random() % 7;
            text += pieces[pick];
        }
        const internal::Utf8Scan result = scan(text);
        const std::optional<std::u16string> decoded = toUtf16IfValid(text);
        ASSERT_EQ(result.wellFormed, decoded.has_value()) << testing::PrintToString(text);
        if (decoded) {
            EXPECT_EQ(result.wellFormedBytes, text.size());
            EXPECT_EQ(result.utf16Length, decoded->size());
        } else {
            // The prefix before the stop decodes, and one more byte never does.
            const std::string_view prefix(text.data(), result.wellFormedBytes);
            const auto prefixDecoded = toUtf16IfValid(prefix);
            ASSERT_TRUE(prefixDecoded.has_value()) << testing::PrintToString(text);
            EXPECT_EQ(result.utf16Length, prefixDecoded->size());
            EXPECT_FALSE(toUtf16IfValid(text.substr(0, result.wellFormedBytes + 1)).has_value())
                << testing::PrintToString(text);
        }
    }
}

}  // namespace
}  // namespace quod
