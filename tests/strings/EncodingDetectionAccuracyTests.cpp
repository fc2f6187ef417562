// How often detectEncoding names an encoding that gives the text back, per family of encodings and
// per size, over translated messages in 20 languages (data/detection-samples.tsv) encoded into
// every legacy encoding their language is written in. The floors are what the detector reaches
// today, less a little: a change that makes a family worse fails here.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/EncodingConversion.h"
#include "quoddle/strings/EncodingDetection.h"

namespace quod {
namespace {

struct Sample {
    std::string family;
    std::vector<EncodingNumber> encodings;
    std::u16string text;
};

std::vector<Sample> samples() {
    std::ifstream file(QUODDLE_STRINGS_TEST_DATA "/detection-samples.tsv");
    std::vector<Sample> read;
    std::string line;
    while (std::getline(file, line)) {
        if (line.starts_with('#')) continue;
        std::istringstream fields(line);
        std::string family, language, numbers, text;
        std::getline(fields, family, '\t');
        std::getline(fields, language, '\t');
        std::getline(fields, numbers, '\t');
        std::getline(fields, text);
        Sample sample{family, {}, {}};
        std::istringstream list(numbers);
        for (std::string number; std::getline(list, number, ',');)
            sample.encodings.push_back(std::stoull(number));
        std::string unescaped;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '\\' && i + 1 < text.size()) {
                unescaped += text[i + 1] == 'n' ? '\n' : text[i + 1];
                ++i;
            } else {
                unescaped += text[i];
            }
        }
        sample.text = toUtf16(unescaped);
        read.push_back(std::move(sample));
    }
    return read;
}

// The longest start of the text whose encoding fits in `size` bytes.
std::optional<Data> encodedPrefix(std::u16string_view text, EncodingNumber encoding,
                                  std::size_t size) {
    std::size_t length = std::min(text.size(), size);
    while (length > 0) {
        // Never split a surrogate pair.
        if (length < text.size() && text[length] >= 0xDC00 && text[length] <= 0xDFFF) --length;
        const auto bytes = encodeText(text.substr(0, length), encoding);
        if (!bytes) return std::nullopt;
        if (bytes->size() <= size) return bytes;
        length -= std::max<std::size_t>(1, (bytes->size() - size) / 2);
    }
    return std::nullopt;
}

TEST(DetectEncodingAccuracy, EveryFamilyAndSizeKeepsItsFloor) {
    const std::vector<Sample> all = samples();
    ASSERT_GE(all.size(), 20u);
    // family -> size -> (right, tried)
    std::map<std::string, std::map<std::size_t, std::pair<int, int>>> results;
    for (const Sample& sample : all) {
        for (const EncodingNumber encoding : sample.encodings) {
            for (const std::size_t size : {100u, 1000u}) {
                const auto bytes = encodedPrefix(sample.text, encoding, size);
                ASSERT_TRUE(bytes) << sample.family << " " << encoding;
                const auto original = decodeText(*bytes, encoding);
                const auto detected = Text::detectEncoding(*bytes);
                auto& [right, tried] = results[sample.family][size];
                right += decodeText(*bytes, detected) == original ? 1 : 0;
                ++tried;
            }
        }
    }
    const std::map<std::string, double> floors = {
        {"Western", 0.8},  {"Central European", 0.8}, {"Cyrillic", 0.85}, {"Greek", 0.5},
        {"Turkish", 1.0},  {"Arabic", 1.0},           {"Hebrew", 1.0},    {"Baltic", 0.75},
        {"Japanese", 1.0}, {"Chinese", 1.0},          {"Korean", 1.0},
    };
    for (const auto& [family, floor] : floors) {
        ASSERT_TRUE(results.contains(family)) << family;
        for (const auto& [size, counts] : results[family]) {
            const auto [right, tried] = counts;
            EXPECT_GE(right, floor * tried)
                << family << " at " << size << " bytes: " << right << " of " << tried;
        }
    }
}

TEST(DetectEncodingAccuracy, MostlyAsciiTextIsRightOrUnanswered) {
    std::string english;
    while (english.size() < 2000)
        english += "The file was saved in the format that the older program wrote. ";
    for (const char* word : {"caf\xE9", "na\xEFve", "Z\xFCrich", "\xA9 2023"}) {
        const std::string text = english + word + " " + english;
        const Data bytes(text.begin(), text.end());
        const EncodingNumber detected = Text::detectEncoding(bytes);
        if (detected != Encodings::none) {
            EXPECT_EQ(decodeText(bytes, detected), decodeText(bytes, Encodings::isoLatin1)) << word;
        }
    }
}

}  // namespace
}  // namespace quod
