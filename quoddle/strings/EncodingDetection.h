// Which text encoding a file's bytes are in: first what the file declares, then, when it declares
// nothing, what the bytes suggest.
//
// `Text::guessEncoding(from)` reads declarations only, and reads them exactly as the applications
// built on this framework always have, so that a file keeps opening in the same encoding:
//   1. Bytes that are not well-formed UTF-8 answer 0 at once; nothing is searched.
//   2. Text of fewer than 10 UTF-16 units answers 0.
//   3. If "charset=" occurs (in any letter case), its first occurrence decides. The value starts
//      after the "=", one double quote there is skipped, and it runs up to the first of the five
//      delimiters  " ' space / >  . That name goes through `encodingForIanaCharsetName`, whose
//      answer is final, `Encodings::unknownCharsetName` included. An empty value, or a value that
//      the text ends in, answers 0 without looking for "encoding=": so  charset='utf-8'  is 0.
//   4. Otherwise the first "encoding=" decides. Its value starts one character after the "=",
//      whatever that character is (normally the opening quote), and runs up to the next "?>";
//      one leading and one trailing double quote, then one leading and one trailing apostrophe are
//      stripped. So  <?xml version="1.0" encoding="UTF-16"?>  is UTF-16, while a standalone
//      attribute after the encoding leaves a name that is not found. No "?>", or nothing before it,
//      answers 0.
//   5. Anything else answers 0. A byte-order mark alone decides nothing here, not even the UTF-8
//      one: the test for marks that this step once made can no longer succeed, and its answer, 0,
//      is kept. `detectEncoding` is the function that reads marks.
// Letter case is ignored the way Unicode case folding ignores it. For these ASCII keywords that
// means ASCII letters in either case, plus U+017F (long s) standing for the s of "charset".
//
// `Text::detectEncoding(from)` is what a host calls when guessEncoding answers 0. In order:
//   1. A byte-order mark: UTF-8; UTF-32 little- or big-endian; UTF-16 little- or big-endian. The
//      answer names the byte order (`Encodings::utf16LittleEndian`, ...).
//   2. Well-formed UTF-8 without NUL bytes is UTF-8 (plain ASCII included).
//   3. ICU's charset detector, shown up to 64 KB of the bytes from the first one that is not
//      UTF-8 on (where the evidence starts). Its most confident guess counts that rates at least
//      20 on ICU's 0 to 100 scale and names an encoding the IANA-name conversion knows; UTF-8 is
//      never taken for bytes already found not to be UTF-8. This is also where UTF-16 or UTF-32
//      text without a mark is recognised: such text can be well-formed UTF-8, full of NULs.
//   4. Well-formed UTF-8 that the detector does not place is UTF-8; anything else, and empty
//      input, answers 0.
//
// Both functions are pure and may run on any thread. They never read past the end of the bytes,
// and their time grows linearly with the size: two passes at most (the UTF-8 check, then one search
// for both keywords, or a search for NULs), a scan of the declared value, and the bounded sample.
#pragma once

#include <cstdint>
#include <span>

#include "quoddle/Export.h"
#include "quoddle/strings/StringEncoding.h"

namespace quod::Text {

[[nodiscard]] QUODDLE_EXPORT EncodingNumber guessEncoding(std::span<const std::uint8_t> from);

[[nodiscard]] QUODDLE_EXPORT EncodingNumber detectEncoding(std::span<const std::uint8_t> from);

}  // namespace quod::Text
