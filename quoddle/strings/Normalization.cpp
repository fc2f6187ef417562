#include "quoddle/strings/Normalization.h"

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>

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

}  // namespace quod
