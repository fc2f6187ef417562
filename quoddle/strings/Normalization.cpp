#include "quoddle/strings/Normalization.h"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "quoddle/base/Precondition.h"

namespace quod {

namespace {

const icu::Normalizer2& composer() {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
    QUOD_PRECONDITION(U_SUCCESS(status) && nfc != nullptr, "ICU normalisation data missing");
    return *nfc;
}

// A read-only alias: ICU reads the caller's units in place.
icu::UnicodeString alias(std::u16string_view text) {
    QUOD_PRECONDITION(text.size() <= static_cast<std::size_t>(INT32_MAX), "text too long for ICU");
    return icu::UnicodeString(false, text.data(), static_cast<int32_t>(text.size()));
}

// No character below U+0300 combines with the one before it, so text of those alone is composed
// already: most lines of most documents are answered here, without ICU.
bool isBelowCombiningMarks(std::u16string_view text) {
    return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x300; });
}

// In UTF-8 the same characters are the bytes below 0xCC: U+0300 is CC 80, and lead bytes C2 to CB
// and continuation bytes (80 to BF) encode only characters below it.
// Eight bytes at a time: a byte is 0xCC or more when its high bit is set and its low seven bits
// reach 0x4C, which adding 0x34 carries into the high bit (never into the next byte).
bool isBelowCombiningMarks(std::string_view utf8) {
    const char* bytes = utf8.data();
    const std::size_t size = utf8.size();
    std::uint64_t combining = 0;
    std::size_t i = 0;
    for (; i + 8 <= size; i += 8) {
        std::uint64_t word;
        std::memcpy(&word, bytes + i, sizeof word);
        combining |= ((word & 0x7F7F'7F7F'7F7F'7F7Fu) + 0x3434'3434'3434'3434u) & word;
    }
    for (; i < size; ++i)
        combining |= static_cast<unsigned char>(bytes[i]) >= 0xCC ? 0x80u : 0u;
    return (combining & 0x8080'8080'8080'8080u) == 0;
}

icu::StringPiece piece(std::string_view utf8) {
    QUOD_PRECONDITION(utf8.size() <= static_cast<std::size_t>(INT32_MAX), "text too long for ICU");
    return {utf8.data(), static_cast<int32_t>(utf8.size())};
}

bool passesQuickCheck(const icu::UnicodeString& source) {
    UErrorCode status = U_ZERO_ERROR;
    const int32_t normalPrefix = composer().spanQuickCheckYes(source, status);
    return U_SUCCESS(status) && normalPrefix == source.length();
}

}  // namespace

std::u16string canonicalComposition(std::u16string_view text) {
    if (isBelowCombiningMarks(text)) return std::u16string(text);
    const icu::UnicodeString source = alias(text);
    if (passesQuickCheck(source)) return std::u16string(text);
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString composed = composer().normalize(source, status);
    QUOD_PRECONDITION(U_SUCCESS(status), "normalisation failed");
    return {composed.getBuffer(), static_cast<std::size_t>(composed.length())};
}

bool isCanonicalComposition(std::u16string_view text) {
    if (isBelowCombiningMarks(text)) return true;
    const icu::UnicodeString source = alias(text);
    return passesQuickCheck(source) || canonicalComposition(text) == text;
}

std::string canonicalComposition(std::string_view utf8) {
    if (isCanonicalComposition(utf8)) return std::string(utf8);
    std::string composed;
    icu::StringByteSink<std::string> sink(&composed, static_cast<int32_t>(utf8.size()));
    UErrorCode status = U_ZERO_ERROR;
    composer().normalizeUTF8(0, piece(utf8), sink, nullptr, status);
    QUOD_PRECONDITION(U_SUCCESS(status), "normalisation failed");
    return composed;
}

bool isCanonicalComposition(std::string_view utf8) {
    if (isBelowCombiningMarks(utf8)) return true;
    UErrorCode status = U_ZERO_ERROR;
    const bool composed = composer().isNormalizedUTF8(piece(utf8), status);
    QUOD_PRECONDITION(U_SUCCESS(status), "normalisation failed");
    return composed;
}

}  // namespace quod
