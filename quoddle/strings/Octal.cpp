#include "quoddle/strings/Octal.h"

#include <unicode/ubrk.h>
#include <unicode/utext.h>

#include <array>
#include <limits>
#include <memory>
#include <vector>

#include "quoddle/base/Precondition.h"

namespace quod::Octal {
namespace {

struct BreakIteratorCloser {
    void operator()(UBreakIterator* iterator) const { ubrk_close(iterator); }
};
struct TextCloser {
    void operator()(UText* text) const { utext_close(text); }
};

// The user-perceived characters of UTF-8 text, as slices of it. ICU walks the UTF-8 directly, so
// the boundaries are byte offsets; ill-formed bytes count as characters of their own.
std::vector<std::string_view> characters(std::string_view text) {
    std::vector<std::string_view> result;
    if (text.empty()) return result;
    // ICU's break iterators count in 32 bits. Only the last characters of a text ever matter here,
    // so of a text too long for ICU the last megabyte stands for it, from a character's first byte.
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int32_t>::max())) {
        std::size_t start = text.size() - 1'000'000;
        for (int step = 0; step < 3 && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80;
             ++step) {
            ++start;
        }
        text.remove_prefix(start);
    }
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UText, TextCloser> utf8(
        utext_openUTF8(nullptr, text.data(), static_cast<int64_t>(text.size()), &status));
    const std::unique_ptr<UBreakIterator, BreakIteratorCloser> iterator(
        ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status));
    ubrk_setUText(iterator.get(), utf8.get(), &status);
    QUOD_PRECONDITION(U_SUCCESS(status), "ICU break iteration data missing");
    int32_t start = ubrk_first(iterator.get());
    for (int32_t end = ubrk_next(iterator.get()); end != UBRK_DONE;
         start = end, end = ubrk_next(iterator.get())) {
        result.push_back(
            text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)));
    }
    return result;
}

// The digit's value, or no value for anything that is not exactly one octal digit.
std::optional<int> octalDigit(std::string_view character) {
    if (character.size() != 1 || character[0] < '0' || character[0] > '7') return std::nullopt;
    return character[0] - '0';
}

// Both table columns, indexed by digit; a character that is no digit reads as row 0.
constexpr std::array<std::string_view, 8> permissionColumn{"---", "--x", "-w-", "-wx",
                                                           "r--", "r-x", "rw-", "rwx"};
constexpr std::array<std::string_view, 8> maskColumn{"rwx", "rw-", "r-x", "r--",
                                                     "-wx", "-w-", "--x", "---"};
constexpr std::array<std::string_view, 8> digits{"0", "1", "2", "3", "4", "5", "6", "7"};

}  // namespace

std::string_view title(UserClass userClass) {
    switch (userClass) {
        case UserClass::user:
            return "user";
        case UserClass::group:
            return "group";
        case UserClass::other:
            return "other";
    }
    QUOD_PRECONDITION(false, "not a user class");
    return {};
}

std::string preparedString(std::string_view from) {
    const std::vector<std::string_view> parts = characters(from);
    if (parts.size() >= 4) {
        const auto lastThree =
            static_cast<std::size_t>(parts[parts.size() - 3].data() - from.data());
        return std::string(from.substr(lastThree));
    }
    // Counted again after each zero: a zero in front of a combining mark joins it into one
    // character, and the string is then still short.
    std::string prepared(from);
    while (characters(prepared).size() < 3) {
        prepared.insert(prepared.begin(), '0');
    }
    return prepared;
}

std::string displayString(std::string_view from, Mode mode) {
    constexpr std::array<std::string_view, 3> prefixes{"u=", ",g=", ",o="};
    const std::string prepared = preparedString(from);
    std::string display;
    const std::vector<std::string_view> parts = characters(prepared);
    for (std::size_t i = 0; i < parts.size() && i < prefixes.size(); ++i) {
        display += prefixes[i];
        display += mode == Mode::permission ? permission(parts[i]) : mask(parts[i]);
    }
    return display;
}

std::string_view permission(std::string_view character) {
    return permissionColumn[static_cast<std::size_t>(octalDigit(character).value_or(0))];
}

std::string_view mask(std::string_view character) {
    return maskColumn[static_cast<std::size_t>(octalDigit(character).value_or(0))];
}

std::string_view maskCharacter(Attribute from) {
    // A mask digit withholds what it sets: the inverse of the rights, as bits r=4, w=2, x=1.
    const int granted = (from.read ? 4 : 0) | (from.write ? 2 : 0) | (from.execute ? 1 : 0);
    return digits[static_cast<std::size_t>(7 - granted)];
}

Attribute attribute(std::string_view from) {
    const int withheld = octalDigit(from).value_or(7);
    return {(withheld & 4) == 0, (withheld & 2) == 0, (withheld & 1) == 0};
}

std::string fromInt(int64_t value) {
    // The magnitude as unsigned, so that the lowest value has one too.
    uint64_t magnitude =
        value < 0 ? uint64_t{0} - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    std::string reversed;
    do {
        reversed.push_back(static_cast<char>('0' + (magnitude & 7)));
        magnitude >>= 3;
    } while (magnitude != 0);
    if (value < 0) reversed.push_back('-');
    return std::string(reversed.rbegin(), reversed.rend());
}

std::optional<int64_t> toInt(std::string_view from) {
    bool negative = false;
    if (!from.empty() && (from[0] == '+' || from[0] == '-')) {
        negative = from[0] == '-';
        from.remove_prefix(1);
    }
    if (from.empty()) return std::nullopt;
    // Accumulated as a negative number, whose range holds one value more than the positive one.
    constexpr int64_t lowest = std::numeric_limits<int64_t>::min();
    int64_t value = 0;
    for (const char c : from) {
        const std::optional<int> digit = octalDigit(std::string_view(&c, 1));
        if (!digit || value < (lowest + *digit) / 8) return std::nullopt;
        value = value * 8 - *digit;
    }
    if (negative) return value;
    if (value == lowest) return std::nullopt;
    return -value;
}

}  // namespace quod::Octal
