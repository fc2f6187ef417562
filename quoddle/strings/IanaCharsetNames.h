// The platform's conversion of an IANA charset name ("utf-8", "ISO-8859-1", "Shift_JIS") to its
// string-encoding number, reproduced rule for rule, quirks included: documents declare charsets by
// these names, and the numbers they turn into end up in users' preferences.
//
// Letter case never matters. Beyond that the spelling does, as on the platform:
//   - The platform's own table comes first: its exact names (the "utf-*" family, "us-ascii",
//     "euc-jp", "shift_jis", Mac script names such as "greek"), each also with an "x-mac-" prefix;
//     any name beginning with "macintosh"; "iso-8859-<N>" for N from 1 to 16; "cp<N>" and
//     "windows-<N>" for the Windows code pages it knows. The numbers are read as C's strtol reads
//     them, so trailing text is ignored: "ISO-8859-8-I" is ISO 8859-8.
//   - Then ICU's alias table, compared in ICU's loose form (letters and digits only), so "utf8",
//     "UTF_8" and "latin1" are found. A name that is exactly "windows-<N>" never gets this far,
//     and one that begins with the standard name of the converter it finds is passed over, as on
//     the platform: "euc-jp-2007" is not found while "EUC_JP_2007" is EUC-JP. (The data records
//     this for the EUC-JP converter, the one case known.)
//   - Last, any name beginning with "ms950" is code page 950.
// So "Shift_JIS" is 0x80000A01 while "ShiftJIS" and "cp932" are 8, and "UTF-16LE" is 0x94000100
// while "UTF16LE" is 10 (UTF-16 with a byte-order mark).
//
// A name the platform would not find answers `Encodings::unknownCharsetName` (0xFFFFFFFF), never 0.
// So do names it cannot hand over as a C string: one with a character outside ASCII or longer than
// 99 bytes. A NUL ends the name, as it would end a C string.
#pragma once

#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/strings/StringEncoding.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT EncodingNumber encodingForIanaCharsetName(std::string_view name);

}  // namespace quod
