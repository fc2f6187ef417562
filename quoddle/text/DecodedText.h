// A document file's bytes turned into text, and the text turned back into bytes the same way.
//
// The encoding is decided as a host opening a document decides it: what the bytes declare
// (`Text::guessEncoding`: an HTML, CSS or XML declaration) when they decode in it, else what the
// bytes suggest (`Text::detectEncoding`). Decoding is strict: bytes that do not decode in the
// chosen encoding give no value, never replacement characters, so a document is never silently
// damaged on its way in. Empty bytes are an empty UTF-8 text. `decodeDocumentAs` reads the bytes in
// an encoding the user named, and `settledUtf8Encoding` tells a host that reads a large file in
// windows when the same choice is UTF-8.
//
// A byte-order mark is not part of the text: decoding records the one the bytes began with, and
// `writeDocument` writes it back in front, so an unchanged text is written back byte for byte.
//
// `writeDocument` hands the bytes to `write` in pieces (a text of hundreds of megabytes is never
// copied whole into UTF-8). It answers false, before handing over a single byte, when a character
// of the text cannot be written in the encoding (a Latin-1 document that gained a Greek letter).
// Line endings are written as they stand; converting them is the caller's choice.
//
//   auto file = FileBytes::read(path);
//   std::optional<DecodedText> document = file ? decodeDocument(file->bytes()) : std::nullopt;
//   ...
//   writeDocument(view.textStorage(), document->encoding, document->byteOrderMark, sink);
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "quoddle/Export.h"
#include "quoddle/strings/Data.h"
#include "quoddle/strings/EncodingDetection.h"
#include "quoddle/strings/StringEncoding.h"
#include "quoddle/text/TextStorage.h"

namespace quod {

struct DecodedText {
    TextStorage storage;
    EncodingNumber encoding = Encodings::utf8;
    Data byteOrderMark;  // as the bytes began, written back unchanged
};

[[nodiscard]] QUODDLE_EXPORT std::optional<DecodedText> decodeDocument(
    std::span<const std::uint8_t> bytes);
// The user's chosen encoding first ("open documents with this encoding"): `preferred` when the
// bytes decode whole in it, else the choice above, so a file the choice cannot read still opens.
// `Encodings::none` as `preferred` is the plain `decodeDocument`.
[[nodiscard]] QUODDLE_EXPORT std::optional<DecodedText> decodeDocument(
    std::span<const std::uint8_t> bytes, EncodingNumber preferred);

// How decodeDocument reads a document's bytes.
struct DocumentEncoding {
    EncodingNumber encoding = Encodings::utf8;
    Data byteOrderMark;
};

// For a host that reads a large document in windows (FileBytes::readInWindows) and has run all of
// it through a Text::EncodingScan: how decodeDocument would read the bytes, when the scan settles
// that and the answer is UTF-8, whose windows decode on their own once cut at a character's
// start. No value otherwise: read the whole bytes with decodeDocument then, which also says when
// they cannot be read at all.
[[nodiscard]] QUODDLE_EXPORT std::optional<DocumentEncoding> settledUtf8Encoding(
    const Text::EncodingScan& scan);

// The bytes read in `encoding` and no other, as when a user names the encoding: no value when they
// do not decode in it. A mark at their start is kept out of the text as above.
[[nodiscard]] QUODDLE_EXPORT std::optional<DecodedText> decodeDocumentAs(
    std::span<const std::uint8_t> bytes, EncodingNumber encoding);

using ByteSink = std::function<void(std::span<const std::uint8_t>)>;

[[nodiscard]] QUODDLE_EXPORT bool writeDocument(const TextStorage& text, EncodingNumber encoding,
                                                std::span<const std::uint8_t> byteOrderMark,
                                                const ByteSink& write);

}  // namespace quod
