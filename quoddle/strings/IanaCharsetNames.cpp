#include "quoddle/strings/IanaCharsetNames.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "quoddle/strings/EncodingTables.h"

namespace quod {
namespace {

// The platform copies the name into a 100-byte C string buffer before looking at it.
constexpr std::size_t longestName = 99;

constexpr bool isAsciiDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isAsciiLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool startsWithIgnoringCase(std::string_view text, std::string_view lowerCasePrefix) {
    return text.size() >= lowerCasePrefix.size() &&
           std::equal(lowerCasePrefix.begin(), lowerCasePrefix.end(), text.begin(),
                      [](char p, char t) { return p == lowered(t); });
}

// The number at the start of `text` as C's strtol reads it in base 10: white space, an optional
// sign, digits; anything after them is ignored, no digits read as 0, and too many saturate.
int64_t leadingDecimal(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r')))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        negative = text[i] == '-';
        ++i;
    }
    // Accumulate as a negative number, whose range holds one more value than the positive one.
    constexpr int64_t lowest = std::numeric_limits<int64_t>::min();
    int64_t value = 0;
    for (; i < text.size() && isAsciiDigit(text[i]); ++i) {
        const int digit = text[i] - '0';
        if (value < (lowest + digit) / 10) {
            value = lowest;
        } else {
            value = value * 10 - digit;
        }
    }
    if (negative) return value;
    return value == lowest ? std::numeric_limits<int64_t>::max() : -value;
}

// The platform's core table numbers ISO 8859 part N as 0x200 + N; turned into a string-encoding
// number that is 0x80000000 | 0x200 + N, except for the two parts that have small numbers.
EncodingNumber isoLatinEncoding(int64_t part) {
    if (part == 1) return Encodings::isoLatin1;
    if (part == 2) return Encodings::isoLatin2;
    return 0x8000'0000u | (0x200u + static_cast<EncodingNumber>(part));
}

std::optional<EncodingNumber> codePageEncoding(int64_t number) {
    // The platform keeps only the low 16 bits of the number it read.
    const auto codePage = static_cast<std::uint16_t>(number);
    if (codePage >= 28591 && codePage <= 28606) return isoLatinEncoding(codePage - 28590);
    if (const auto* row = internal::findCodePage(codePage)) return row->encoding;
    return std::nullopt;
}

// The first step: the platform's own table and its prefix rules.
std::optional<EncodingNumber> platformTableEncoding(std::string_view name) {
    if (startsWithIgnoringCase(name, "iso-8859-")) {
        const int64_t part = leadingDecimal(name.substr(9));
        if (part >= 1 && part <= 16) return isoLatinEncoding(part);
        return std::nullopt;
    }
    if (startsWithIgnoringCase(name, "cp")) return codePageEncoding(leadingDecimal(name.substr(2)));
    if (startsWithIgnoringCase(name, "windows-")) {
        return codePageEncoding(leadingDecimal(name.substr(8)));
    }
    if (startsWithIgnoringCase(name, "macintosh")) return Encodings::macOSRoman;
    if (startsWithIgnoringCase(name, "x-mac-")) name.remove_prefix(6);
    std::string lowerCase(name);
    std::transform(lowerCase.begin(), lowerCase.end(), lowerCase.begin(), lowered);
    const auto* row = internal::findExactCharsetName(lowerCase);
    // MacRoman's core number is 0, which this table lookup reads as "not found": "x-mac-macintosh"
    // is unknown although "macintosh" is not.
    if (row == nullptr || row->encoding == Encodings::macOSRoman) return std::nullopt;
    return row->encoding;
}

// "windows-" and a non-zero decimal number, nothing else: the platform answers these from its
// code-page list alone and never asks ICU.
bool isWindowsCodePageName(std::string_view name) {
    if (!startsWithIgnoringCase(name, "windows-")) return false;
    const std::string_view digits = name.substr(8);
    return !digits.empty() && std::all_of(digits.begin(), digits.end(), isAsciiDigit) &&
           digits.find_first_not_of('0') != std::string_view::npos;
}

// ICU's loose form of a converter name: lower-case letters and digits only, and a 0 dropped when a
// digit follows it and no non-zero digit precedes it since the last letter or punctuation
// ("ibm-037" -> "ibm37", "macos-0_2" -> "macos02", while "cp1008" keeps its zeros).
std::string icuKey(std::string_view name) {
    std::string key;
    bool afterDigit = false;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char c = name[i];
        if (c == '0') {
            const bool digitFollows = i + 1 < name.size() && isAsciiDigit(name[i + 1]);
            if (!afterDigit && digitFollows) continue;
        } else if (isAsciiDigit(c)) {
            afterDigit = true;
        } else if (isAsciiLetter(c)) {
            afterDigit = false;
        } else {
            afterDigit = false;
            continue;
        }
        key.push_back(lowered(c));
    }
    return key;
}

// The second step: ICU's aliases, through the results the platform derives from them.
std::optional<EncodingNumber> icuAliasEncoding(std::string_view name) {
    const auto* row = internal::findCharsetKey(icuKey(name));
    if (row == nullptr) return std::nullopt;
    const std::string_view skipped = row->skippedWhenNameBeginsWith;
    if (!skipped.empty() && startsWithIgnoringCase(name, skipped)) return std::nullopt;
    return row->encoding;
}

}  // namespace

EncodingNumber encodingForIanaCharsetName(std::string_view name) {
    const bool convertsToCString =
        name.size() <= longestName &&
        std::all_of(name.begin(), name.end(), [](char c) { return (c & 0x80) == 0; });
    if (!convertsToCString) return Encodings::unknownCharsetName;
    name = name.substr(0, name.find('\0'));

    if (const auto encoding = platformTableEncoding(name)) return *encoding;
    if (isWindowsCodePageName(name)) return Encodings::unknownCharsetName;
    if (const auto encoding = icuAliasEncoding(name)) return *encoding;
    if (startsWithIgnoringCase(name, "ms950")) return *codePageEncoding(950);
    return Encodings::unknownCharsetName;
}

}  // namespace quod
