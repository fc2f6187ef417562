#include "quoddle/strings/EncodingDetection.h"

#include <unicode/ucsdet.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoddle/strings/IanaCharsetNames.h"
#include "quoddle/strings/Utf8Scan.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace quod::Text {
namespace {

constexpr std::size_t shortestText = 10;  // UTF-16 units

constexpr std::array<std::uint8_t, 3> utf8ByteOrderMark{0xEF, 0xBB, 0xBF};

template <std::size_t size>
bool startsWith(std::span<const std::uint8_t> bytes, const std::array<std::uint8_t, size>& prefix) {
    return bytes.size() >= size && std::equal(prefix.begin(), prefix.end(), bytes.begin());
}

constexpr char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Where `letters` (lower-case ASCII) end right before `end` in the text, case folded: the offset of
// their first byte, or no value. The only non-ASCII character that folds to one of the letters of
// our keywords is U+017F, LATIN SMALL LETTER LONG S (UTF-8 C5 BF), which folds to s.
std::optional<std::size_t> lettersEndingAt(std::string_view text, std::size_t end,
                                           std::string_view letters) {
    std::size_t at = end;
    for (auto letter = letters.rbegin(); letter != letters.rend(); ++letter) {
        if (at >= 1 && lowered(text[at - 1]) == *letter) {
            at -= 1;
        } else if (*letter == 's' && at >= 2 && text.substr(at - 2, 2) == "\xC5\xBF") {
            at -= 2;
        } else {
            return std::nullopt;
        }
    }
    return at;
}

// Where the first "charset=" and the first "encoding=" end (the offset just past the "="), in
// well-formed UTF-8 text with letter case ignored. The first "charset=" decides on its own, so the
// scan stops there; "encoding=" is only needed when there is none.
struct Keywords {
    std::optional<std::size_t> charsetEnd;
    std::optional<std::size_t> encodingEnd;
};

// Both keywords in one pass, however many "=" the text holds. Only an "=" right after a t or a g
// can end one, so the scan looks for those pairs sixteen bytes at a time and matches the rest of
// the keyword backwards from each pair it finds. Occurrences of one keyword cannot overlap, so the
// first "=" that completes it ends its first occurrence.
Keywords findKeywords(std::string_view text) {
    Keywords found;
    // Whether the "=" at `equals` ends a keyword; true when the scan can stop.
    const auto visit = [&](std::size_t equals) {
        const char before = lowered(text[equals - 1]);
        if (before == 't' && lettersEndingAt(text, equals, "charset")) {
            found.charsetEnd = equals + 1;
            return true;
        }
        if (before == 'g' && !found.encodingEnd && lettersEndingAt(text, equals, "encoding")) {
            found.encodingEnd = equals + 1;
        }
        return false;
    };
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t size = text.size();
    std::size_t i = 1;  // the position of the "=", which needs a letter before it
#if defined(__SSE2__)
    const __m128i equalsSign = _mm_set1_epi8('=');
    const __m128i t = _mm_set1_epi8('t');
    const __m128i g = _mm_set1_epi8('g');
    const __m128i lowerCaseBit = _mm_set1_epi8(0x20);
    for (; i + 16 <= size; i += 16) {
        const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
        const __m128i before = _mm_or_si128(
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i - 1)), lowerCaseBit);
        const __m128i pairs =
            _mm_and_si128(_mm_cmpeq_epi8(here, equalsSign),
                          _mm_or_si128(_mm_cmpeq_epi8(before, t), _mm_cmpeq_epi8(before, g)));
        for (auto lanes = static_cast<unsigned>(_mm_movemask_epi8(pairs)); lanes != 0;
             lanes &= lanes - 1) {
            if (visit(i + static_cast<std::size_t>(std::countr_zero(lanes)))) return found;
        }
    }
#endif
    for (; i < size; ++i) {
        if (text[i] == '=' && visit(i)) return found;
    }
    return found;
}

constexpr bool endsCharsetValue(char c) {
    return c == '"' || c == '\'' || c == ' ' || c == '/' || c == '>';
}

// The name declared by "charset=", or no value when the declaration counts as absent.
std::optional<std::string_view> charsetValue(std::string_view text, std::size_t valueStart) {
    if (valueStart < text.size() && text[valueStart] == '"') ++valueStart;
    const auto end = std::find_if(text.begin() + static_cast<std::ptrdiff_t>(valueStart),
                                  text.end(), endsCharsetValue);
    const auto endOffset = static_cast<std::size_t>(end - text.begin());
    if (end == text.end() || endOffset == valueStart) return std::nullopt;
    return text.substr(valueStart, endOffset - valueStart);
}

std::size_t utf8SequenceLength(std::uint8_t lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return 4;
}

// The name declared by "encoding=" (whose "=" ends just before `keywordEnd`), or no value.
std::optional<std::string_view> xmlEncodingValue(std::string_view text, std::size_t keywordEnd) {
    // One UTF-16 unit after the "=" is skipped unseen, so there must be one.
    if (keywordEnd >= text.size()) return std::nullopt;
    // That unit is a whole character, except for a character outside the BMP: then only its first
    // surrogate is skipped and the second one starts the value. Keeping the whole character in the
    // value gives the same outcome, a value that cannot name an encoding.
    const auto lead = static_cast<std::uint8_t>(text[keywordEnd]);
    const std::size_t skipped = lead >= 0xF0 ? 0 : utf8SequenceLength(lead);
    const std::size_t valueStart = keywordEnd + skipped;
    const std::size_t end = text.find("?>", valueStart);
    if (end == std::string_view::npos || end == valueStart) return std::nullopt;
    std::string_view value = text.substr(valueStart, end - valueStart);
    for (const char quote : {'"', '\''}) {
        if (value.starts_with(quote)) value.remove_prefix(1);
        if (value.ends_with(quote)) value.remove_suffix(1);
    }
    return value;
}

// The last step of the guess compares characters 1 to 6, then 1 to 4, of the buffer's textual
// description with the hex digits of a byte-order mark. That description used to list the bytes in
// hex; today it is the byte count and the word "bytes" ("3 bytes"), so no comparison can succeed
// and the step answers 0. Applications rely on that answer, so the step stays as it is.
EncodingNumber byteOrderMarkStage(std::span<const std::uint8_t> bytes) {
    if (bytes.size() <= 2) return Encodings::none;
    const std::string description = std::to_string(bytes.size()) + " bytes";
    if (description.substr(1, 6) == "efbbbf") return Encodings::utf8;
    const std::string digits = description.substr(1, 4);
    if (digits == "feff" || digits == "fffe") return Encodings::unicode;
    return Encodings::none;
}

std::optional<EncodingNumber> encodingOfByteOrderMark(std::span<const std::uint8_t> bytes) {
    if (startsWith(bytes, utf8ByteOrderMark)) return Encodings::utf8;
    // UTF-32's little-endian mark begins with UTF-16's, so it is tested first.
    if (startsWith(bytes, std::array<std::uint8_t, 4>{0xFF, 0xFE, 0x00, 0x00})) {
        return Encodings::utf32LittleEndian;
    }
    if (startsWith(bytes, std::array<std::uint8_t, 4>{0x00, 0x00, 0xFE, 0xFF})) {
        return Encodings::utf32BigEndian;
    }
    if (startsWith(bytes, std::array<std::uint8_t, 2>{0xFF, 0xFE})) {
        return Encodings::utf16LittleEndian;
    }
    if (startsWith(bytes, std::array<std::uint8_t, 2>{0xFE, 0xFF})) {
        return Encodings::utf16BigEndian;
    }
    return std::nullopt;
}

struct DetectorCloser {
    void operator()(UCharsetDetector* detector) const { ucsdet_close(detector); }
};
using DetectorHandle = std::unique_ptr<UCharsetDetector, DetectorCloser>;

// ICU's detector takes its byte statistics from the first 8 KB it is shown; only its UTF
// recognisers read further. So it sees a bounded sample, which starts at the first byte that is
// not UTF-8: in a file that opens with plain ASCII, that is where the evidence is, and English
// before it only pulls the guess towards Latin-1. The start is rounded down to a multiple of 4, so
// that UTF-16 and UTF-32 units keep their alignment.
constexpr std::size_t sampleSize = 64 * 1024;
// Below this, ICU's guesses are noise: it rates any text 10 for UTF-16 and random bytes below 20.
constexpr int32_t leastConfidence = 20;

std::optional<EncodingNumber> icuDetection(std::span<const std::uint8_t> bytes,
                                           const internal::Utf8Scan& scan) {
    const std::size_t start = scan.wellFormed ? 0 : scan.wellFormedBytes & ~std::size_t{3};
    const auto sample = bytes.subspan(start, std::min(sampleSize, bytes.size() - start));

    UErrorCode status = U_ZERO_ERROR;
    const DetectorHandle detector(ucsdet_open(&status));
    ucsdet_setText(detector.get(), reinterpret_cast<const char*>(sample.data()),
                   static_cast<int32_t>(sample.size()), &status);
    int32_t count = 0;
    const UCharsetMatch** matches = ucsdet_detectAll(detector.get(), &count, &status);
    // Without ICU's data there is simply no detection.
    if (U_FAILURE(status)) return std::nullopt;
    // The matches come most confident first.
    for (int32_t i = 0; i < count; ++i) {
        const int32_t confidence = ucsdet_getConfidence(matches[i], &status);
        const char* name = ucsdet_getName(matches[i], &status);
        if (U_FAILURE(status) || confidence < leastConfidence) break;
        const EncodingNumber encoding = encodingForIanaCharsetName(name);
        // ICU also names encodings the platform does not know ("IBM420_rtl"), and it offers UTF-8
        // for short texts it cannot place, even when they are not UTF-8.
        if (encoding == Encodings::unknownCharsetName) continue;
        if (encoding == Encodings::utf8 && !scan.wellFormed) continue;
        return encoding;
    }
    return std::nullopt;
}

}  // namespace

EncodingNumber guessEncoding(std::span<const std::uint8_t> from) {
    const internal::Utf8Scan scan = internal::scanUtf8(from);
    if (!scan.wellFormed) return Encodings::none;
    if (scan.utf16Length < shortestText) return Encodings::none;

    const std::string_view text(reinterpret_cast<const char*>(from.data()), from.size());
    const Keywords keywords = findKeywords(text);
    // A "charset=" that was found leaves at least its own 8 units, so the text cannot end inside
    // the keyword: the declaration decides, even when it turns out to be empty.
    if (keywords.charsetEnd) {
        if (const auto name = charsetValue(text, *keywords.charsetEnd)) {
            return encodingForIanaCharsetName(*name);
        }
        return byteOrderMarkStage(from);
    }
    if (keywords.encodingEnd) {
        if (const auto name = xmlEncodingValue(text, *keywords.encodingEnd)) {
            return encodingForIanaCharsetName(*name);
        }
    }
    return byteOrderMarkStage(from);
}

EncodingNumber detectEncoding(std::span<const std::uint8_t> from) {
    if (from.empty()) return Encodings::none;
    if (const auto marked = encodingOfByteOrderMark(from)) return *marked;
    const internal::Utf8Scan scan = internal::scanUtf8(from);
    if (scan.wellFormed && std::memchr(from.data(), 0, from.size()) == nullptr) {
        return Encodings::utf8;
    }
    if (const auto detected = icuDetection(from, scan)) return *detected;
    return scan.wellFormed ? Encodings::utf8 : Encodings::none;
}

}  // namespace quod::Text
