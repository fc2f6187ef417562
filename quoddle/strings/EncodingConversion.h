// Bytes in a given encoding to document text and back, through ICU's converters.
//
// Conversion is strict and quiet. Bytes that are not valid in the encoding, or that it maps to no
// character, make `decodeText` answer no value; a character that the encoding cannot represent (an
// unpaired surrogate included) makes `encodeText` answer no value. Nothing is replaced or dropped
// along the way.
// Encodings without a converter here answer no value as well: 0, unknown numbers,
// `Encodings::unknownCharsetName`, NextStep, Non-lossy ASCII and some Mac scripts (and any whose
// converter the installed ICU data lacks). `isConvertible` tells in advance, for a menu.
//
// Byte-order marks:
//   - Decoding UTF-8, UTF-16 or UTF-32 of either byte order drops one leading mark: it marks the
//     file, it is not part of the text.
//   - `Encodings::utf16` and `Encodings::utf32` take the byte order from a leading mark and default
//     to big-endian without one; encoding to them writes a mark and this machine's byte order.
//   - The little- and big-endian forms never write a mark.
//
//   if (auto text = decodeText(bytes, Text::detectEncoding(bytes))) view.setString(*text);
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/strings/Data.h"
#include "quoddle/strings/StringEncoding.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT bool isConvertible(EncodingNumber encoding);

[[nodiscard]] QUODDLE_EXPORT std::optional<std::u16string> decodeText(
    std::span<const std::uint8_t> bytes, EncodingNumber encoding);

[[nodiscard]] QUODDLE_EXPORT std::optional<Data> encodeText(std::u16string_view text,
                                                            EncodingNumber encoding);

}  // namespace quod
