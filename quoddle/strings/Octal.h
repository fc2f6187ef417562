// POSIX permission digits (the 755 of chmod) and what they mean, in two senses: a permission mode,
// where a set bit grants a right, and a creation mask (umask), where a set bit withholds it.
//
// A digit string is read as the last three characters of what the user typed, padded with leading
// zeros (`preparedString`): "4755" becomes "755" (the set-id and sticky digit is dropped), "7"
// becomes "007" and "" becomes "000". Its characters stand for user, group and other, in that
// order. Each character reads through this table, and any character that is not an octal digit
// takes the last row: no rights as a permission, all rights as a mask.
//
//   digit   permission   mask      (mask: the rights a mask digit leaves)
//   7       rwx          ---
//   6       rw-          --x
//   5       r-x          -w-
//   4       r--          -wx
//   3       -wx          r--
//   2       -w-          r-x
//   1       --x          rw-
//   other   ---          rwx
//
//   Octal::displayString("755", Octal::Mode::permission) == "u=rwx,g=r-x,o=r-x"
//   Octal::displayString("022", Octal::Mode::mask)       == "u=rwx,g=r-x,o=r-x"
//   Octal::displayString("8", Octal::Mode::permission)   == "u=---,g=---,o=---"
//
// Strings are UTF-8, and a character is what the user sees as one (a grapheme cluster): "7"
// followed by a combining accent is one character, and not the digit 7. A `character` argument is
// one such character; text that is not exactly one octal digit takes the last row.
//
// `maskCharacter` and `attribute` translate between a mask digit and the rights it leaves, and are
// inverses of each other. `fromInt` and `toInt` print and read base-8 numbers ("755" is 493).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod::Octal {

enum class Mode { mask, permission };

// The raw values are part of the interface (see userClassFromRawValue): never renumber them.
enum class UserClass : int { user = 0, group = 1, other = 2 };

// The class with that raw value; no value for anything but 0, 1 and 2.
[[nodiscard]] constexpr std::optional<UserClass> userClassFromRawValue(int64_t rawValue) {
    if (rawValue < 0 || rawValue > 2) return std::nullopt;
    return static_cast<UserClass>(rawValue);
}

// "user", "group" or "other".
[[nodiscard]] QUODDLE_EXPORT std::string_view title(UserClass userClass);

// The three rights of one user class.
struct Attribute {
    bool read = false;
    bool write = false;
    bool execute = false;

    // The key names of the three rights.
    struct Name {
        static constexpr std::string_view read = "read";
        static constexpr std::string_view write = "write";
        static constexpr std::string_view execute = "execute";
    };

    friend bool operator==(const Attribute&, const Attribute&) = default;
};

inline constexpr Attribute defaultAttribute{true, true, true};

// The rights that a creation mask leaves, per user class.
struct Mask {
    Attribute user;
    Attribute group;
    Attribute other;

    friend bool operator==(const Mask&, const Mask&) = default;
};

[[nodiscard]] QUODDLE_EXPORT std::string preparedString(std::string_view from);

[[nodiscard]] QUODDLE_EXPORT std::string displayString(std::string_view from, Mode mode);

// The permission column of the table for one character.
[[nodiscard]] QUODDLE_EXPORT std::string_view permission(std::string_view character);

// The mask column of the table for one character.
[[nodiscard]] QUODDLE_EXPORT std::string_view mask(std::string_view character);

// The mask digit ("0" to "7") that leaves exactly these rights.
[[nodiscard]] QUODDLE_EXPORT std::string_view maskCharacter(Attribute from);

// The rights a mask digit leaves; a character that is not an octal digit leaves none.
[[nodiscard]] QUODDLE_EXPORT Attribute attribute(std::string_view from);

// Base 8, a leading minus sign for negative values, no prefix: 493 -> "755", -8 -> "-10".
[[nodiscard]] QUODDLE_EXPORT std::string fromInt(int64_t value);

// The value of an optionally signed ("+" or "-") run of octal digits, or no value for anything
// else (empty text, other characters, white space) and for values outside int64_t.
[[nodiscard]] QUODDLE_EXPORT std::optional<int64_t> toInt(std::string_view from);

}  // namespace quod::Octal
