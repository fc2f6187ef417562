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
//   2. Well-formed UTF-8 without NUL bytes is UTF-8 (plain ASCII included), unless it is 7-bit text
//      with the escape sequences of ISO-2022-JP, -KR or -CN and decodes in that encoding.
//   3. UTF-16 or UTF-32 without a mark, told by NUL bytes that keep to one side of each unit.
//   4. The statistics. Every candidate that can decode the bytes (single-byte encodings must define
//      every byte present anywhere in the input; the multibyte ones, Windows code pages 932, 949
//      and 950, Big 5 HKSCS and GB 18030, must decode up to 64 KB from where the evidence starts,
//      and the whole input before they are answered) is scored on that sample by how much its
//      decoding reads like real text of a language in its script (EncodingStatistics.h).
//      A single-byte candidate that reads a present byte as a C1 control (the ISO 8859 encodings
//      at 0x80 to 0x9F) is out. Candidates are compared only on the characters where their
//      decodings differ, each against the rarer ones with its lead in prior counted. Encodings that
//      decode the sample identically are one answer, the superset's (windows-1252 for text that
//      ISO Latin 1 decodes the same way). The best is answered only when it is confident: it reads
//      like text and clearly beats every different decoding. Input shorter than 10 bytes is too
//      little to judge.
//   5. Well-formed UTF-8 (with NULs) that is not placed is UTF-8; anything else, and empty input,
//      answers 0: better no answer than a wrong one that saving would write back.
//
// `Text::EncodingScan` gives both answers for bytes that arrive in pieces (a large file read window
// by window), whenever a first look settles them.
//
// `Text::encodingCandidates(from)` is step 4 laid open, for a user who wants to see why: every
// candidate that decodes the bytes, best first, each with its average cost per character outside
// ASCII (lower reads more like real text); it runs the statistics whatever steps 1 to 3 would say.
//
// Both functions are pure and may run on any thread. They never read past the end of the bytes,
// and their time grows linearly with the size: two passes at most (the UTF-8 check, then one search
// for both keywords, or one histogram of bytes), a scan of the declared value, and the bounded
// sample.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/strings/StringEncoding.h"

namespace quod::Text {

[[nodiscard]] QUODDLE_EXPORT EncodingNumber guessEncoding(std::span<const std::uint8_t> from);

[[nodiscard]] QUODDLE_EXPORT EncodingNumber detectEncoding(std::span<const std::uint8_t> from);

struct EncodingCandidate {
    EncodingNumber encoding;
    double costPerCharacter;
};

[[nodiscard]] QUODDLE_EXPORT std::vector<EncodingCandidate> encodingCandidates(
    std::span<const std::uint8_t> from);

// guessEncoding and detectEncoding for bytes that arrive in pieces, for a host that reads a large
// file window by window and must not hold it whole. Feed every piece in order, then ask: each
// answer is the function's answer on all the bytes, when the pieces could settle it, and no value
// when only all the bytes at once can (detection that needs the statistics or the decoding of the
// whole text, such as ISO-2022 text; a declared name that runs on for more than a kilobyte).
// A scan keeps a few kilobytes at most, whatever the size of the input.
class QUODDLE_EXPORT EncodingScan {
  public:
    EncodingScan();
    EncodingScan(EncodingScan&&) noexcept;
    EncodingScan& operator=(EncodingScan&&) noexcept;
    ~EncodingScan();

    void append(std::span<const std::uint8_t> piece);

    [[nodiscard]] std::optional<EncodingNumber> guessedEncoding() const;
    [[nodiscard]] std::optional<EncodingNumber> detectedEncoding() const;
    // Whether all the bytes so far are well-formed UTF-8 (a sequence cut off at the end is not).
    [[nodiscard]] bool isWellFormedUtf8() const;
    [[nodiscard]] std::uint64_t size() const;
    // The first four bytes, or all of fewer: where a byte-order mark would be.
    [[nodiscard]] std::span<const std::uint8_t> firstBytes() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quod::Text
