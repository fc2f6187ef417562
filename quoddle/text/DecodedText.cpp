#include "quoddle/text/DecodedText.h"

#include <algorithm>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/EncodingConversion.h"
#include "quoddle/strings/EncodingDetection.h"
#include "quoddle/strings/Utf8Scan.h"

namespace quod {
namespace {

// The marks that survive decoding only as knowledge that they were there. The byte-order-neutral
// UTF-16 and UTF-32 are missing on purpose: encodeText writes their mark itself.
std::span<const std::uint8_t> byteOrderMarkOf(EncodingNumber encoding) {
    static constexpr std::uint8_t utf8[] = {0xEF, 0xBB, 0xBF};
    static constexpr std::uint8_t utf16LittleEndian[] = {0xFF, 0xFE};
    static constexpr std::uint8_t utf16BigEndian[] = {0xFE, 0xFF};
    static constexpr std::uint8_t utf32LittleEndian[] = {0xFF, 0xFE, 0x00, 0x00};
    static constexpr std::uint8_t utf32BigEndian[] = {0x00, 0x00, 0xFE, 0xFF};
    switch (encoding) {
        case Encodings::utf8:
            return utf8;
        case Encodings::utf16LittleEndian:
            return utf16LittleEndian;
        case Encodings::utf16BigEndian:
            return utf16BigEndian;
        case Encodings::utf32LittleEndian:
            return utf32LittleEndian;
        case Encodings::utf32BigEndian:
            return utf32BigEndian;
        default:
            return {};
    }
}

// `knownWellFormed`: the detectors answer UTF-8 only for well-formed bytes, except for a file
// that starts with the UTF-8 mark, so a second scan of a large file is spared.
std::optional<DecodedText> decodeAs(std::span<const std::uint8_t> bytes, EncodingNumber encoding,
                                    bool knownWellFormed) {
    DecodedText decoded;
    decoded.encoding = encoding;
    const auto mark = byteOrderMarkOf(encoding);
    if (!mark.empty() && bytes.size() >= mark.size() &&
        std::equal(mark.begin(), mark.end(), bytes.begin())) {
        decoded.byteOrderMark.assign(mark.begin(), mark.end());
    }
    if (encoding == Encodings::utf8) {
        // Straight into the storage, once the bytes are known to be well-formed: the decoder's
        // replacement characters must never come into play.
        const auto text = bytes.subspan(decoded.byteOrderMark.size());
        const bool wellFormed = (knownWellFormed && decoded.byteOrderMark.empty()) ||
                                internal::scanUtf8(text).wellFormed;
        if (!wellFormed) return std::nullopt;
        decoded.storage =
            TextStorage::fromUtf8({reinterpret_cast<const char*>(text.data()), text.size()});
        return decoded;
    }
    if (!isConvertible(encoding)) return std::nullopt;
    auto text = decodeText(bytes, encoding);
    if (!text) return std::nullopt;
    decoded.storage = TextStorage(*text);
    return decoded;
}

}  // namespace

std::optional<DecodedText> decodeDocument(std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) return DecodedText{};
    const EncodingNumber declared = Text::guessEncoding(bytes);
    if (declared != Encodings::none) {
        if (auto decoded = decodeAs(bytes, declared, true)) return decoded;
    }
    const EncodingNumber detected = Text::detectEncoding(bytes);
    if (detected == Encodings::none || detected == declared) return std::nullopt;
    return decodeAs(bytes, detected, true);
}

std::optional<DecodedText> decodeDocument(std::span<const std::uint8_t> bytes,
                                          EncodingNumber preferred) {
    if (!bytes.empty()) {
        if (auto decoded = decodeDocumentAs(bytes, preferred)) return decoded;
    }
    return decodeDocument(bytes);
}

std::optional<DecodedText> decodeDocumentAs(std::span<const std::uint8_t> bytes,
                                            EncodingNumber encoding) {
    if (encoding == Encodings::none) return std::nullopt;
    if (bytes.empty()) {
        DecodedText empty;
        empty.encoding = encoding;
        return empty;
    }
    return decodeAs(bytes, encoding, false);
}

std::optional<DocumentEncoding> settledUtf8Encoding(const Text::EncodingScan& scan) {
    if (scan.size() == 0) return DocumentEncoding{};
    // The choices decodeDocument makes, in its order, as far as the scan can tell them.
    const auto utf8 = [&scan]() -> std::optional<DocumentEncoding> {
        // A mark is only known to be followed by well-formed text when all of it is.
        if (!scan.isWellFormedUtf8()) return std::nullopt;
        const auto mark = byteOrderMarkOf(Encodings::utf8);
        const auto first = scan.firstBytes();
        DocumentEncoding chosen;
        if (first.size() >= mark.size() && std::equal(mark.begin(), mark.end(), first.begin()))
            chosen.byteOrderMark.assign(mark.begin(), mark.end());
        return chosen;
    };
    const auto declared = scan.guessedEncoding();
    if (!declared) return std::nullopt;
    if (*declared == Encodings::utf8) return utf8();
    // Whether the bytes decode in another declared encoding takes decoding all of them.
    if (*declared != Encodings::none && isConvertible(*declared)) return std::nullopt;
    const auto detected = scan.detectedEncoding();
    if (!detected || *detected != Encodings::utf8 || *detected == *declared) return std::nullopt;
    return utf8();
}

bool writeDocument(const TextStorage& text, EncodingNumber encoding,
                   std::span<const std::uint8_t> byteOrderMark, const ByteSink& write) {
    if (encoding != Encodings::utf8) {
        // Encoded whole first, so that a character the encoding lacks is found before a byte
        // goes out.
        const auto encoded = encodeText(text.string(), encoding);
        if (!encoded) return false;
        write(byteOrderMark);
        write(*encoded);
        return true;
    }
    // UTF-8 cannot fail, so it goes out in slices: a copy of a large text in UTF-16 and another
    // in UTF-8 would cost more than all the rest of a save.
    write(byteOrderMark);
    constexpr int64_t slice = 1 << 20;
    for (int64_t start = 0; start < text.length();) {
        int64_t end = std::min(text.length(), start + slice);
        // A surrogate pair stays in one slice, or the encoder would see two unpaired halves.
        if (end < text.length() && (text.characterAtIndex(end - 1) & 0xFC00) == 0xD800) --end;
        const std::string utf8 = toUtf8(text.substringWithRange({start, end - start}));
        write({reinterpret_cast<const std::uint8_t*>(utf8.data()), utf8.size()});
        start = end;
    }
    return true;
}

}  // namespace quod
