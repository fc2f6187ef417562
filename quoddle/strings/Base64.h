// Base-64 of a string's UTF-8 bytes, in place.
//
// toBase64 writes standard base-64 (alphabet A-Z a-z 0-9 + /, "=" padding) on one line.
// fromBase64 accepts only what toBase64 could have written: a length that is a multiple of four,
// nothing but the standard alphabet, and at most two "=" that come last. Whitespace, line breaks
// and the URL-safe "-" and "_" are rejected. When the text is not such base-64, or the bytes are
// not well-formed UTF-8, the string becomes empty: a paste of garbage decodes to nothing rather
// than to replacement characters.
#pragma once

#include <string>

#include "quoddle/Export.h"

namespace quod {

QUODDLE_EXPORT void toBase64(std::u16string& s);

QUODDLE_EXPORT void fromBase64(std::u16string& s);

}  // namespace quod
