#include "quoddle/strings/Normalization.h"

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <cstdint>

#include "quoddle/base/Precondition.h"

namespace quod {

std::u16string canonicalComposition(std::u16string_view text) {
    QUOD_PRECONDITION(text.size() <= static_cast<std::size_t>(INT32_MAX), "text too long for ICU");
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
    QUOD_PRECONDITION(U_SUCCESS(status), "ICU normalisation data missing");
    // A read-only alias: the quick check and the normaliser read the caller's units in place.
    const icu::UnicodeString source(false, text.data(), static_cast<int32_t>(text.size()));
    const int32_t normalPrefix = nfc->spanQuickCheckYes(source, status);
    if (U_SUCCESS(status) && normalPrefix == source.length()) return std::u16string(text);
    status = U_ZERO_ERROR;
    const icu::UnicodeString composed = nfc->normalize(source, status);
    QUOD_PRECONDITION(U_SUCCESS(status), "normalisation failed");
    return {composed.getBuffer(), static_cast<std::size_t>(composed.length())};
}

}  // namespace quod
