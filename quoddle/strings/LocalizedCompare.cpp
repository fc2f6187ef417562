#include "quoddle/strings/LocalizedCompare.h"

#include <unicode/ucol.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <numeric>

#include "quoddle/base/Precondition.h"

namespace quod {
namespace {

struct CollatorCloser {
    void operator()(UCollator* collator) const { ucol_close(collator); }
};
using CollatorHandle = std::unique_ptr<UCollator, CollatorCloser>;

// Whether ICU normalises a text before collating it. Text whose units all lie below U+0300 (ASCII,
// Latin-1, most of Latin Extended) holds no combining mark, so it is in the canonically ordered
// form ("FCD") that ICU collates correctly without normalising, which saves it a quarter of the
// time on keys.
enum class Normalizing { always, never };

// One configured collator per thread, locale and normalisation mode: collators are costly to open
// and not meant to be shared between threads.
UCollator* collatorFor(const icu::Locale& locale, Normalizing normalizing = Normalizing::always) {
    struct Cached {
        icu::Locale locale;
        Normalizing normalizing;
        CollatorHandle collator;
    };
    thread_local std::vector<Cached> cache;
    for (const Cached& cached : cache) {
        if (cached.locale == locale && cached.normalizing == normalizing) {
            return cached.collator.get();
        }
    }
    UErrorCode status = U_ZERO_ERROR;
    CollatorHandle collator(ucol_open(locale.getName(), &status));
    QUOD_PRECONDITION(U_SUCCESS(status) && collator != nullptr, "ICU collation data missing");
    // Case-insensitive at first, then accents, then case (lower first), digits numerically, and
    // punctuation as significant as letters.
    const std::pair<UColAttribute, UColAttributeValue> attributes[] = {
        {UCOL_NUMERIC_COLLATION, UCOL_ON},
        {UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE},
        {UCOL_STRENGTH, UCOL_TERTIARY},
        {UCOL_CASE_LEVEL, UCOL_ON},
        {UCOL_NORMALIZATION_MODE, normalizing == Normalizing::always ? UCOL_ON : UCOL_OFF},
    };
    for (const auto& [attribute, value] : attributes) {
        ucol_setAttribute(collator.get(), attribute, value, &status);
    }
    QUOD_PRECONDITION(U_SUCCESS(status), "ICU collator rejected its configuration");
    cache.push_back({locale, normalizing, std::move(collator)});
    return cache.back().collator.get();
}

bool isBelowCombiningMarks(std::u16string_view text) {
    return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x300; });
}

int32_t icuLength(std::u16string_view text) {
    QUOD_PRECONDITION(text.size() <= static_cast<std::size_t>(INT32_MAX), "text too long for ICU");
    return static_cast<int32_t>(text.size());
}

bool isAsciiDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

// Lengths of the ASCII digit runs of a string, in order.
std::vector<std::size_t> digitRunLengths(std::u16string_view text) {
    std::vector<std::size_t> lengths;
    for (std::size_t i = 0; i < text.size();) {
        if (!isAsciiDigit(text[i])) {
            ++i;
            continue;
        }
        const std::size_t start = i;
        while (i < text.size() && isAsciiDigit(text[i]))
            ++i;
        lengths.push_back(i - start);
    }
    return lengths;
}

std::weak_ordering fromCollation(UCollationResult result) {
    if (result == UCOL_LESS) return std::weak_ordering::less;
    if (result == UCOL_GREATER) return std::weak_ordering::greater;
    return std::weak_ordering::equivalent;
}

}  // namespace

std::weak_ordering localizedStandardTieBreak(std::u16string_view a, std::u16string_view b) {
    if (a == b) return std::weak_ordering::equivalent;
    const auto runsA = digitRunLengths(a);
    const auto runsB = digitRunLengths(b);
    for (std::size_t k = 0; k < std::min(runsA.size(), runsB.size()); ++k) {
        if (runsA[k] != runsB[k]) return runsA[k] <=> runsB[k];
    }
    return a.compare(b) < 0 ? std::weak_ordering::less : std::weak_ordering::greater;
}

std::size_t localizedStandardKey(std::u16string_view text, std::uint8_t* key, std::size_t capacity,
                                 const icu::Locale& locale) {
    UCollator* collator =
        collatorFor(locale, isBelowCombiningMarks(text) ? Normalizing::never : Normalizing::always);
    const auto room = static_cast<int32_t>(std::min<std::size_t>(capacity, INT32_MAX));
    return static_cast<std::size_t>(
        ucol_getSortKey(collator, text.data(), icuLength(text), key, room));
}

std::weak_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b,
                                            const icu::Locale& locale) {
    const auto collated = fromCollation(
        ucol_strcoll(collatorFor(locale), a.data(), icuLength(a), b.data(), icuLength(b)));
    return collated != 0 ? collated : localizedStandardTieBreak(a, b);
}

std::vector<std::size_t> localizedStandardOrder(const std::vector<std::u16string_view>& strings,
                                                SortOrder order, const icu::Locale& locale) {
    // All keys in one arena: key i is keys[offsets[i], offsets[i + 1]).
    std::vector<uint8_t> keys;
    std::vector<std::size_t> offsets{0};
    offsets.reserve(strings.size() + 1);
    for (const std::u16string_view text : strings) {
        const std::size_t at = keys.size();
        keys.resize(at + text.size() * 4 + 16);
        std::size_t needed = localizedStandardKey(text, keys.data() + at, keys.size() - at, locale);
        if (needed > keys.size() - at) {
            keys.resize(at + needed);
            needed = localizedStandardKey(text, keys.data() + at, needed, locale);
        }
        keys.resize(at + needed);
        offsets.push_back(keys.size());
    }
    const auto compareAt = [&](std::size_t i, std::size_t j) -> std::weak_ordering {
        const std::size_t lengthI = offsets[i + 1] - offsets[i];
        const std::size_t lengthJ = offsets[j + 1] - offsets[j];
        const int bytes = std::memcmp(keys.data() + offsets[i], keys.data() + offsets[j],
                                      std::min(lengthI, lengthJ));
        if (bytes != 0) return bytes < 0 ? std::weak_ordering::less : std::weak_ordering::greater;
        if (lengthI != lengthJ) return lengthI <=> lengthJ;
        return localizedStandardTieBreak(strings[i], strings[j]);
    };
    std::vector<std::size_t> indexes(strings.size());
    std::iota(indexes.begin(), indexes.end(), 0);
    if (order == SortOrder::ascending) {
        std::stable_sort(indexes.begin(), indexes.end(),
                         [&](std::size_t i, std::size_t j) { return compareAt(i, j) < 0; });
    } else {
        std::stable_sort(indexes.begin(), indexes.end(),
                         [&](std::size_t i, std::size_t j) { return compareAt(i, j) > 0; });
    }
    return indexes;
}

}  // namespace quod
