// Text encodings as the platform numbers them, and the list an encoding menu shows.
//
// An encoding is carried as the platform's string-encoding number (`EncodingNumber`), never as a
// name: the numbers are stored in users' preferences and in menu tags, so they are exactly the
// platform's, including the odd ones (UTF-16 big-endian is 0x90000100). 0 means "no encoding
// determined"; no real encoding has it.
//
// `Misc::allStringEncodings()` is the menu: every encoding the platform offers, as (display name,
// number) pairs sorted the way a file browser sorts names ("Unicode (UTF-7)" before
// "Unicode (UTF-16)"). It is built on first use, in the current locale's order, and never changes
// afterwards; any thread may ask for it first. The display names are the platform's English ones.
//
//   for (const StringEncoding& entry : Misc::allStringEncodings())
//       menu.addItem(entry.name, entry.tag);
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"

namespace quod {

using EncodingNumber = std::uint64_t;

// The platform's named encodings.
namespace Encodings {
inline constexpr EncodingNumber none = 0;
inline constexpr EncodingNumber ascii = 1;
inline constexpr EncodingNumber nextstep = 2;
inline constexpr EncodingNumber japaneseEUC = 3;
inline constexpr EncodingNumber utf8 = 4;
inline constexpr EncodingNumber isoLatin1 = 5;
inline constexpr EncodingNumber symbol = 6;
inline constexpr EncodingNumber nonLossyASCII = 7;
inline constexpr EncodingNumber shiftJIS = 8;
inline constexpr EncodingNumber isoLatin2 = 9;
// UTF-16 with a byte-order mark; `utf16` is the same encoding.
inline constexpr EncodingNumber unicode = 10;
inline constexpr EncodingNumber utf16 = unicode;
inline constexpr EncodingNumber windowsCP1251 = 11;
inline constexpr EncodingNumber windowsCP1252 = 12;
inline constexpr EncodingNumber windowsCP1253 = 13;
inline constexpr EncodingNumber windowsCP1254 = 14;
inline constexpr EncodingNumber windowsCP1250 = 15;
inline constexpr EncodingNumber iso2022JP = 21;
inline constexpr EncodingNumber macOSRoman = 30;
inline constexpr EncodingNumber utf16BigEndian = 0x9000'0100;
inline constexpr EncodingNumber utf16LittleEndian = 0x9400'0100;
inline constexpr EncodingNumber utf32 = 0x8C00'0100;
inline constexpr EncodingNumber utf32BigEndian = 0x9800'0100;
inline constexpr EncodingNumber utf32LittleEndian = 0x9C00'0100;
// Not an encoding: what the platform's IANA-name conversion answers for a name it does not know
// (its invalid id pushed through the number conversion), and so what a declaration of an unknown
// charset yields. Hosts treat it like any number they have no converter for.
inline constexpr EncodingNumber unknownCharsetName = 0xFFFF'FFFF;
}  // namespace Encodings

// One entry of an encoding menu: the display name and the encoding's number as the item's tag.
struct StringEncoding {
    std::string name;
    int64_t tag = 0;

    friend bool operator==(const StringEncoding&, const StringEncoding&) = default;
};

namespace Misc {

[[nodiscard]] QUODDLE_EXPORT const std::vector<StringEncoding>& allStringEncodings();

}  // namespace Misc

// The platform's display name of an encoding, such as "Western (ISO Latin 1)"; empty for a number
// that has none (0, unknown numbers, and a few real encodings the platform leaves unnamed).
[[nodiscard]] QUODDLE_EXPORT std::string_view localizedEncodingName(EncodingNumber encoding);

namespace Const::Miscellaneous {
// The extended file attribute in which the platform records a saved text file's encoding.
inline constexpr std::string_view textEncodingAttributeName = "com.apple.TextEncoding";
}  // namespace Const::Miscellaneous

}  // namespace quod
