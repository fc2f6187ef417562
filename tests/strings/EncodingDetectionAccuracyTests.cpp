// How often detectEncoding names an encoding that gives the text back, per family of encodings and
// per size. The text is translated messages read at test time from the message catalogues that
// every Debian system installs (packages of priority "required", and gettext, which the build
// needs): the tree ships none of it, and it is never the detector's training text. Each language's
// messages are encoded into every legacy encoding that language is written in. The floors are what
// the detector reaches on them, less a little: a change that makes a family worse fails here.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/EncodingConversion.h"
#include "quoddle/strings/EncodingDetection.h"

namespace quod {
namespace {

constexpr const char* packages[] = {
    "coreutils", "grep",          "sed",       "tar",    "findutils",     "diffutils",       "bash",
    "dpkg",      "libapt-pkg6.0", "Linux-PAM", "shadow", "gettext-tools", "gettext-runtime",
};

// Fewer languages than this means the machine lacks its catalogues, not that all is well.
constexpr std::size_t leastLanguages = 25;

constexpr EncodingNumber isoLatin9 = 0x8000'020F;
constexpr EncodingNumber koi8r = 0x8000'0A02;
constexpr EncodingNumber koi8u = 0x8000'0A08;
constexpr EncodingNumber isoCyrillic = 0x8000'0205;
constexpr EncodingNumber ibm866 = 0x8000'041B;
constexpr EncodingNumber isoGreek = 0x8000'0207;
constexpr EncodingNumber isoLatin5 = 0x8000'0209;
constexpr EncodingNumber windowsArabic = 0x8000'0506;
constexpr EncodingNumber windowsHebrew = 0x8000'0505;
constexpr EncodingNumber isoHebrew = 0x8000'0208;
constexpr EncodingNumber windowsBaltic = 0x8000'0507;
constexpr EncodingNumber isoLatin7 = 0x8000'020D;
constexpr EncodingNumber gb18030 = 0x8000'0632;
constexpr EncodingNumber big5 = 0x8000'0423;
constexpr EncodingNumber windowsKorean = 0x8000'0422;

struct Language {
    const char* family;
    const char* folder;
    std::vector<EncodingNumber> encodings;
};

const std::vector<Language>& languages() {
    using namespace Encodings;
    static const std::vector<Language> all = [] {
        std::vector<Language> built;
        for (const char* folder : {"de", "fr", "es", "it", "nl", "pt", "pt_BR", "sv", "da", "fi",
                                   "nb", "ca", "gl", "eu"}) {
            built.push_back({"Western", folder, {windowsCP1252, isoLatin1, isoLatin9}});
        }
        for (const char* folder : {"pl", "cs", "hu", "sk", "sl", "hr", "ro"}) {
            built.push_back({"Central European", folder, {windowsCP1250, isoLatin2}});
        }
        built.push_back({"Cyrillic", "ru", {windowsCP1251, koi8r, isoCyrillic, ibm866}});
        built.push_back({"Cyrillic", "uk", {windowsCP1251, koi8u}});
        built.push_back({"Cyrillic", "bg", {windowsCP1251, isoCyrillic}});
        built.push_back({"Cyrillic", "sr", {windowsCP1251}});
        built.push_back({"Greek", "el", {windowsCP1253, isoGreek}});
        built.push_back({"Turkish", "tr", {windowsCP1254, isoLatin5}});
        built.push_back({"Arabic", "ar", {windowsArabic}});
        built.push_back({"Hebrew", "he", {windowsHebrew, isoHebrew}});
        built.push_back({"Baltic", "lt", {windowsBaltic, isoLatin7}});
        built.push_back({"Baltic", "et", {windowsBaltic, isoLatin7}});
        built.push_back({"Japanese", "ja", {shiftJIS, iso2022JP}});
        built.push_back({"Chinese", "zh_CN", {gb18030}});
        built.push_back({"Chinese", "zh_TW", {big5}});
        built.push_back({"Korean", "ko", {windowsKorean}});
        return built;
    }();
    return all;
}

std::optional<std::uint32_t> word(const std::string& bytes, std::size_t at, bool littleEndian) {
    if (at + 4 > bytes.size()) return std::nullopt;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto byte = static_cast<std::uint8_t>(bytes[at + (littleEndian ? 3 - i : i)]);
        value = (value << 8) | byte;
    }
    return value;
}

// The translations of a compiled catalogue, in its order; the first form of a plural. Empty when
// the file is missing or not a catalogue.
std::vector<std::string> translations(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    std::vector<std::string> found;
    const auto magic = word(bytes, 0, true);
    if (!magic || (*magic != 0x950412DE && *magic != 0xDE120495)) return found;
    const bool littleEndian = *magic == 0x950412DE;
    const auto count = word(bytes, 8, littleEndian);
    const auto table = word(bytes, 16, littleEndian);
    if (!count || !table) return found;
    for (std::uint32_t i = 0; i < *count; ++i) {
        const auto length = word(bytes, *table + 8 * std::size_t{i}, littleEndian);
        const auto offset = word(bytes, *table + 8 * std::size_t{i} + 4, littleEndian);
        if (!length || !offset || std::size_t{*offset} + *length > bytes.size()) break;
        std::string text = bytes.substr(*offset, *length);
        text = text.substr(0, text.find('\0'));
        // The header entry (the translation of the empty message) describes the catalogue.
        if (text.empty() || text.starts_with("Project-Id-Version") ||
            text.find('\r') != std::string::npos) {
            continue;
        }
        found.push_back(std::move(text));
    }
    return found;
}

// A language's messages, one a line, from every listed catalogue the machine has.
std::u16string messages(const char* folder) {
    std::string text;
    for (const char* package : packages) {
        const auto path = std::filesystem::path("/usr/share/locale") / folder / "LC_MESSAGES" /
                          (std::string(package) + ".mo");
        for (const std::string& message : translations(path))
            text += message + "\n";
    }
    return toUtf16(text);
}

// Up to `size` bytes of the messages in `encoding`, starting at `start`: whole lines that the
// encoding can write, skipping those it cannot. No value when too little text is left.
std::optional<Data> sample(std::u16string_view text, std::size_t start, EncodingNumber encoding,
                           std::size_t size) {
    Data bytes;
    while (start < text.size()) {
        const std::size_t lineEnd = text.find(u'\n', start);
        const std::size_t end = lineEnd == std::u16string_view::npos ? text.size() : lineEnd + 1;
        if (const auto line = encodeText(text.substr(start, end - start), encoding)) {
            if (bytes.size() + line->size() > size) break;
            bytes.insert(bytes.end(), line->begin(), line->end());
        }
        start = end;
    }
    if (bytes.size() < size / 2) return std::nullopt;
    return bytes;
}

TEST(DetectEncodingAccuracy, EveryFamilyAndSizeKeepsItsFloor) {
    constexpr std::size_t samplesPerCell = 4;
    // family -> size -> (right, tried)
    std::map<std::string, std::map<std::size_t, std::pair<int, int>>> results;
    std::size_t languagesFound = 0;
    for (const Language& language : languages()) {
        const std::u16string text = messages(language.folder);
        if (text.empty()) continue;  // no catalogue of this language here
        ++languagesFound;
        for (const EncodingNumber encoding : language.encodings) {
            for (const std::size_t size : {100u, 1000u}) {
                for (std::size_t i = 0; i < samplesPerCell; ++i) {
                    // Each sample starts on a line of its own quarter of the text.
                    const std::size_t start = text.find(u'\n', text.size() * i / samplesPerCell);
                    if (start == std::u16string::npos) continue;
                    const auto bytes = sample(text, start + 1, encoding, size);
                    if (!bytes) continue;
                    const auto detected = Text::detectEncoding(*bytes);
                    auto& [right, tried] = results[language.family][size];
                    right += decodeText(*bytes, detected) == decodeText(*bytes, encoding) ? 1 : 0;
                    ++tried;
                }
            }
        }
    }
    ASSERT_GE(languagesFound, leastLanguages) << "message catalogues missing";
    // What the detector reaches, less a little: short Central European text is where encodings
    // are hardest to tell apart (a few letters outside ASCII, read alike by ISO Latin 2 and
    // windows-1250 or by a Western encoding), so its floor is the lowest. Where a family has only
    // a handful of samples a size, the floor leaves room for one of them.
    const std::map<std::string, double> floors = {
        {"Western", 0.96},  {"Central European", 0.8}, {"Cyrillic", 0.93}, {"Greek", 0.8},
        {"Turkish", 0.85},  {"Arabic", 0.75},          {"Hebrew", 0.85},   {"Baltic", 0.9},
        {"Japanese", 0.85}, {"Chinese", 0.85},         {"Korean", 0.66},
    };
    for (const auto& [family, floor] : floors) {
        EXPECT_TRUE(results.contains(family)) << family << ": no catalogue found";
        for (const auto& [size, counts] : results[family]) {
            const auto [right, tried] = counts;
            std::cout << family << " at " << size << " bytes: " << right << " of " << tried << "\n";
            EXPECT_GE(right, floor * tried)
                << family << " at " << size << " bytes: " << right << " of " << tried;
        }
    }
}

TEST(DetectEncodingAccuracy, MostlyAsciiTextIsReadRight) {
    std::string english;
    while (english.size() < 2000)
        english += "The file was saved in the format that the older program wrote. ";
    for (const char* word : {"caf\xE9", "na\xEFve", "Z\xFCrich", "\xA9 2023"}) {
        const std::string text = english + word + " " + english;
        const Data bytes(text.begin(), text.end());
        const EncodingNumber detected = Text::detectEncoding(bytes);
        EXPECT_NE(detected, Encodings::none) << word;
        EXPECT_EQ(decodeText(bytes, detected), decodeText(bytes, Encodings::isoLatin1)) << word;
    }
}

}  // namespace
}  // namespace quod
