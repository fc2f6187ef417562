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

// One configured collator per thread and locale: collators are costly to open and not meant to be
// shared between threads.
UCollator* collatorFor(const icu::Locale& locale) {
    struct Cached {
        icu::Locale locale;
        CollatorHandle collator;
    };
    thread_local std::vector<Cached> cache;
    for (const Cached& cached : cache) {
        if (cached.locale == locale) return cached.collator.get();
    }
    UErrorCode status = U_ZERO_ERROR;
    CollatorHandle collator(ucol_open(locale.getName(), &status));
    QUOD_PRECONDITION(U_SUCCESS(status) && collator != nullptr, "ICU collation data missing");
    // Case-insensitive at first, then accents, then case (lower first), digits numerically, and
    // punctuation as significant as letters.
    const std::pair<UColAttribute, UColAttributeValue> attributes[] = {
        {UCOL_NUMERIC_COLLATION, UCOL_ON},  {UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE},
        {UCOL_STRENGTH, UCOL_TERTIARY},     {UCOL_CASE_LEVEL, UCOL_ON},
        {UCOL_NORMALIZATION_MODE, UCOL_ON},
    };
    for (const auto& [attribute, value] : attributes) {
        ucol_setAttribute(collator.get(), attribute, value, &status);
    }
    QUOD_PRECONDITION(U_SUCCESS(status), "ICU collator rejected its configuration");
    cache.push_back({locale, std::move(collator)});
    return cache.back().collator.get();
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

// Orders two strings that collate the same: "a1" before "a01", then by code units.
std::weak_ordering breakTie(std::u16string_view a, std::u16string_view b) {
    if (a == b) return std::weak_ordering::equivalent;
    const auto runsA = digitRunLengths(a);
    const auto runsB = digitRunLengths(b);
    for (std::size_t k = 0; k < std::min(runsA.size(), runsB.size()); ++k) {
        if (runsA[k] != runsB[k]) return runsA[k] <=> runsB[k];
    }
    return a.compare(b) < 0 ? std::weak_ordering::less : std::weak_ordering::greater;
}

std::weak_ordering fromCollation(UCollationResult result) {
    if (result == UCOL_LESS) return std::weak_ordering::less;
    if (result == UCOL_GREATER) return std::weak_ordering::greater;
    return std::weak_ordering::equivalent;
}

}  // namespace

std::weak_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b,
                                            const icu::Locale& locale) {
    const auto collated = fromCollation(
        ucol_strcoll(collatorFor(locale), a.data(), icuLength(a), b.data(), icuLength(b)));
    return collated != 0 ? collated : breakTie(a, b);
}

std::vector<std::size_t> localizedStandardOrder(const std::vector<std::u16string_view>& strings,
                                                SortOrder order, const icu::Locale& locale) {
    UCollator* collator = collatorFor(locale);
    // All keys in one arena: key i is keys[offsets[i], offsets[i + 1]).
    std::vector<uint8_t> keys;
    std::vector<std::size_t> offsets{0};
    offsets.reserve(strings.size() + 1);
    for (const std::u16string_view text : strings) {
        const std::size_t at = keys.size();
        keys.resize(at + text.size() * 4 + 16);
        int32_t needed = ucol_getSortKey(collator, text.data(), icuLength(text), keys.data() + at,
                                         static_cast<int32_t>(keys.size() - at));
        if (static_cast<std::size_t>(needed) > keys.size() - at) {
            keys.resize(at + static_cast<std::size_t>(needed));
            needed =
                ucol_getSortKey(collator, text.data(), icuLength(text), keys.data() + at, needed);
        }
        keys.resize(at + static_cast<std::size_t>(needed));
        offsets.push_back(keys.size());
    }
    const auto compareAt = [&](std::size_t i, std::size_t j) -> std::weak_ordering {
        const std::size_t lengthI = offsets[i + 1] - offsets[i];
        const std::size_t lengthJ = offsets[j + 1] - offsets[j];
        const int bytes = std::memcmp(keys.data() + offsets[i], keys.data() + offsets[j],
                                      std::min(lengthI, lengthJ));
        if (bytes != 0) return bytes < 0 ? std::weak_ordering::less : std::weak_ordering::greater;
        if (lengthI != lengthJ) return lengthI <=> lengthJ;
        return breakTie(strings[i], strings[j]);
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
