#include "quoddle/strings/EncodingDetection.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoddle/base/Utf.h"
#include "quoddle/base/internal/Avx2.h"
#include "quoddle/strings/EncodingConversion.h"
#include "quoddle/strings/EncodingStatistics.h"
#include "quoddle/strings/IanaCharsetNames.h"
#include "quoddle/strings/Utf8Scan.h"

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
// can end one, so the scan looks for those pairs (thirty-two bytes at a time where the processor
// can, from one "=" to the next elsewhere) and matches the rest of the keyword backwards from each
// pair it finds. Occurrences of one keyword cannot overlap, so the first "=" that completes it
// ends its first occurrence.
// Only "=" at `firstEquals` or later count, so that a scan over pieces can look again at the last
// bytes of one piece in front of the next without finding a keyword twice.
class KeywordSearch {
  public:
    explicit KeywordSearch(std::string_view text) : text_(text) {}

    Keywords run(std::size_t firstEquals) {
        std::size_t i = std::max<std::size_t>(firstEquals, 1);  // "=" needs a letter before it
#if QUOD_HAS_AVX2_PATH
        if (internal::hasAvx2()) i = pairsInBlocks(i);
        if (stopped_) return found_;
#endif
        while (i < text_.size()) {
            const std::size_t equals = text_.find('=', i);
            if (equals == std::string_view::npos || visit(equals)) break;
            i = equals + 1;
        }
        return found_;
    }

  private:
    // Whether the "=" at `equals` ends a keyword; true when the scan can stop.
    bool visit(std::size_t equals) {
        const char before = lowered(text_[equals - 1]);
        if (before == 't' && lettersEndingAt(text_, equals, "charset")) {
            found_.charsetEnd = equals + 1;
            return stopped_ = true;
        }
        if (before == 'g' && !found_.encodingEnd && lettersEndingAt(text_, equals, "encoding")) {
            found_.encodingEnd = equals + 1;
        }
        return false;
    }

#if QUOD_HAS_AVX2_PATH
    // Visits the pairs of whole blocks from `i`; answers where the blocks end.
    QUOD_AVX2_FUNCTION std::size_t pairsInBlocks(std::size_t i) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(text_.data());
        const __m256i equalsSign = _mm256_set1_epi8('=');
        const __m256i t = _mm256_set1_epi8('t');
        const __m256i g = _mm256_set1_epi8('g');
        const __m256i lowerCaseBit = _mm256_set1_epi8(0x20);
        for (; i + 32 <= text_.size(); i += 32) {
            const __m256i here = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + i));
            const __m256i before = _mm256_or_si256(
                _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + i - 1)), lowerCaseBit);
            const __m256i pairs = _mm256_and_si256(
                _mm256_cmpeq_epi8(here, equalsSign),
                _mm256_or_si256(_mm256_cmpeq_epi8(before, t), _mm256_cmpeq_epi8(before, g)));
            for (auto lanes = static_cast<unsigned>(_mm256_movemask_epi8(pairs)); lanes != 0;
                 lanes &= lanes - 1) {
                if (visit(i + static_cast<std::size_t>(std::countr_zero(lanes)))) return i;
            }
        }
        return i;
    }
#endif

    std::string_view text_;
    Keywords found_;
    bool stopped_ = false;
};

Keywords findKeywords(std::string_view text, std::size_t firstEquals = 1) {
    return KeywordSearch(text).run(firstEquals);
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
EncodingNumber byteOrderMarkStage(std::uint64_t size) {
    if (size <= 2) return Encodings::none;
    const std::string description = std::to_string(size) + " bytes";
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

// The encodings the statistics weigh, in the order that breaks a tie: where two decode the text
// identically, the one listed first is answered, so a superset comes before its subset
// (windows-1252 before ISO Latin 1, GB 18030 and the Windows code pages before what they extend).
// Each has a prior, a cost in levels that the text must overcome: the rarer encodings of a script
// pay more, so that a text too short to tell answers the common encoding or nothing.
struct Candidate {
    EncodingNumber encoding;
    internal::Script script;
    bool singleByte;
    int prior = 0;
};
using internal::Script;
constexpr Candidate candidates[] = {
    {Encodings::windowsCP1252, Script::latin, true},
    {Encodings::isoLatin1, Script::latin, true},
    {0x8000'020F, Script::latin, true},  // ISO Latin 9
    {Encodings::windowsCP1250, Script::latin, true, 8},
    {Encodings::isoLatin2, Script::latin, true, 8},
    {Encodings::windowsCP1254, Script::latin, true, 10},
    {0x8000'0209, Script::latin, true, 10},  // ISO Latin 5
    {0x8000'0507, Script::latin, true, 12},  // windows-1257
    {0x8000'020D, Script::latin, true, 12},  // ISO Latin 7
    {0x8000'0204, Script::latin, true, 14},  // ISO Latin 4
    {Encodings::windowsCP1251, Script::cyrillic, true},
    {0x8000'0A02, Script::cyrillic, true},     // KOI8-R
    {0x8000'0A08, Script::cyrillic, true, 4},  // KOI8-U
    {0x8000'0205, Script::cyrillic, true, 6},  // ISO 8859-5
    {0x8000'041B, Script::cyrillic, true, 6},  // IBM 866
    {0x8000'0007, Script::cyrillic, true, 8},  // Mac OS Cyrillic
    {Encodings::windowsCP1253, Script::greek, true},
    {0x8000'0207, Script::greek, true},                   // ISO 8859-7
    {0x8000'0506, Script::arabic, true},                  // windows-1256
    {0x8000'0206, Script::arabic, true},                  // ISO 8859-6
    {0x8000'0505, Script::hebrew, true},                  // windows-1255
    {0x8000'0208, Script::hebrew, true},                  // ISO 8859-8
    {Encodings::shiftJIS, Script::japanese, false},       // Windows code page 932
    {0x8000'0632, Script::simplifiedChinese, false},      // GB 18030
    {0x8000'0423, Script::traditionalChinese, false},     // Windows code page 950 (Big 5)
    {0x8000'0A06, Script::traditionalChinese, false, 4},  // Big 5 HKSCS
    {0x8000'0422, Script::korean, false},                 // Windows code page 949 (EUC-KR)
};
constexpr std::size_t candidateCount = std::size(candidates);

constexpr char16_t undefinedByte = 0xFFFF;
using ByteTable = std::array<char16_t, 256>;

constexpr bool isC1Control(char16_t c) {
    return c >= 0x80 && c <= 0x9F;
}

// What each byte decodes to in each single-byte candidate, taken from the converters themselves. A
// byte that decodes to a C1 control counts as undefined: nobody writes those characters, so the
// ISO 8859 encodings, which put them at 0x80 to 0x9F, are out as soon as such a byte occurs.
const std::array<ByteTable, candidateCount>& byteTables() {
    static const auto tables = [] {
        std::array<ByteTable, candidateCount> built{};
        for (std::size_t i = 0; i < candidateCount; ++i) {
            if (!candidates[i].singleByte) continue;
            for (int byte = 0; byte < 256; ++byte) {
                const std::uint8_t one[] = {static_cast<std::uint8_t>(byte)};
                const auto text = decodeText(one, candidates[i].encoding);
                built[i][byte] = text && text->size() == 1 && !isC1Control((*text)[0])
                                     ? (*text)[0]
                                     : undefinedByte;
            }
        }
        return built;
    }();
    return tables;
}

// The bytes the statistics read: at most 64 KB, from shortly before the first byte that is not
// UTF-8 (where the evidence starts). Both ends sit right after a byte below 0x30, which is a whole
// character in every multibyte candidate (their trail bytes are 0x30 and above), so the sample
// decodes as the whole text would.
constexpr std::size_t sampleSize = 64 * 1024;
constexpr std::size_t longestBackUp = 256;

std::span<const std::uint8_t> evidenceSample(std::span<const std::uint8_t> bytes,
                                             const internal::Utf8Scan& scan) {
    std::size_t start = scan.wellFormed ? 0 : scan.wellFormedBytes;
    const std::size_t lowest = start > longestBackUp ? start - longestBackUp : 0;
    while (start > lowest && bytes[start - 1] >= 0x30)
        --start;
    std::size_t end = std::min(bytes.size(), start + sampleSize);
    if (end < bytes.size()) {
        std::size_t cut = end;
        while (cut > start && bytes[cut - 1] >= 0x30)
            --cut;
        if (cut > start) end = cut;
    }
    return bytes.subspan(start, end - start);
}

std::array<bool, 256> bytesPresent(std::span<const std::uint8_t> bytes) {
    std::array<bool, 256> present{};
    for (const std::uint8_t byte : bytes)
        present[byte] = true;
    return present;
}

// A multibyte candidate whose decoding costs more than this per character is not that script's
// text: real text keeps to the characters the model knows, while other bytes read as Chinese,
// Japanese or Korean land on rare characters and symbols.
constexpr double ideographicCostLimit = 20.0;

constexpr bool isAsciiLetter(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

// The Latin letters in front of the sample, which the statistics do not read.
std::size_t latinLettersBefore(std::span<const std::uint8_t> bytes,
                               std::span<const std::uint8_t> sample) {
    const auto before = bytes.first(static_cast<std::size_t>(sample.data() - bytes.data()));
    return static_cast<std::size_t>(std::count_if(
        before.begin(), before.end(), [](std::uint8_t byte) { return isAsciiLetter(byte); }));
}

// Korean is written in Hangul with a few Chinese characters at most, and Japanese never goes far
// without kana; a decoding that reads mostly as Chinese characters in either is Chinese text read
// in the wrong encoding.
bool soundsLikeItsScript(std::u16string_view decoded, Script script) {
    if (script != Script::korean && script != Script::japanese) return true;
    std::size_t own = 0;
    std::size_t ideographs = 0;
    for (const char16_t c : decoded) {
        const bool hangul = c >= 0xAC00 && c <= 0xD7A3;
        const bool kana = c >= 0x3041 && c <= 0x30FF;
        own += (script == Script::korean ? hangul : kana) ? 1 : 0;
        ideographs += c >= 0x4E00 && c <= 0x9FFF ? 1 : 0;
    }
    // Kanji outnumber kana in terse Japanese (menus, names), so Japanese is only asked for some.
    return script == Script::korean ? ideographs <= own : own * 8 >= ideographs;
}

// Text in another script carries Latin words, but not eight Latin letters to every one of its own
// characters: a decoding with so few is a Latin text whose accented letters read as a Cyrillic word
// (Italian "è" as Russian "и") or happened to pair up into an ideograph or two.
bool mostlyOwnScript(std::u16string_view decoded, std::size_t latinBefore) {
    std::size_t latin = latinBefore;
    std::size_t own = 0;
    for (const char16_t c : decoded) {
        latin += isAsciiLetter(c) ? 1 : 0;
        own += c >= 0x80 ? 1 : 0;
    }
    return own * 8 >= latin;
}

// Fewer letters outside ASCII than a few words hold: too few to show a script of their own.
bool fewLetters(std::u16string_view decoded) {
    constexpr std::size_t fewest = 16;
    return std::count_if(decoded.begin(), decoded.end(), [](char16_t c) { return c >= 0x80; }) <
           static_cast<std::ptrdiff_t>(fewest);
}

struct Ranked {
    Candidate candidate;
    internal::TextScore score;
    std::u16string decoded;
    bool ideographic;
    bool outnumbered;  // a few letters of a script other than Latin among many Latin ones

    // 0 for plausible ideographic text, 1 for single-byte text, 2 for implausible ideographic text
    // and for a few Cyrillic, Greek, Arabic or Hebrew letters among many Latin ones.
    [[nodiscard]] int tier() const {
        if (candidate.singleByte) return outnumbered ? 2 : 1;
        return ideographic ? 0 : 2;
    }
};

// The single-byte candidates that define every byte present.
std::array<bool, candidateCount> definingCandidates(const std::array<bool, 256>& present) {
    std::array<bool, candidateCount> defining{};
    for (std::size_t i = 0; i < candidateCount; ++i) {
        if (!candidates[i].singleByte) continue;
        const ByteTable& table = byteTables()[i];
        defining[i] = true;
        for (int byte = 0; byte < 256 && defining[i]; ++byte) {
            defining[i] = !present[byte] || table[byte] != undefinedByte;
        }
    }
    return defining;
}

// For each single-byte candidate, the characters (sorted) that its bytes decode to where some other
// defining candidate decodes the same byte differently: the only ones that can tell them apart.
std::array<std::u16string, candidateCount> tellingCharacters(
    const std::array<bool, 256>& present, const std::array<bool, candidateCount>& defining) {
    const auto& tables = byteTables();
    std::array<std::u16string, candidateCount> telling;
    for (int byte = 0x80; byte < 256; ++byte) {
        if (!present[byte]) continue;
        std::optional<char16_t> first;
        bool differs = false;
        for (std::size_t i = 0; i < candidateCount; ++i) {
            if (!defining[i]) continue;
            if (!first) first = tables[i][byte];
            differs = differs || tables[i][byte] != *first;
        }
        if (!differs) continue;
        for (std::size_t i = 0; i < candidateCount; ++i) {
            if (defining[i]) telling[i].push_back(tables[i][byte]);
        }
    }
    for (std::u16string& characters : telling)
        std::sort(characters.begin(), characters.end());
    return telling;
}

// Every candidate that decodes the whole input (single-byte) or the sample (multibyte), best
// first: plausible ideographic decodings, then the single-byte ones, then the implausible ones
// (ideographic decodings beyond their limit or in the wrong script, a few non-Latin letters among
// many Latin ones); by their telling score within each tier, then in the candidates' order. Of
// decodings identical to a better one only the better one is kept.
std::vector<Ranked> rankCandidates(std::span<const std::uint8_t> bytes,
                                   const internal::Utf8Scan& scan) {
    const auto sample = evidenceSample(bytes, scan);
    const auto present = bytesPresent(bytes);
    const auto defining = definingCandidates(present);
    const auto telling = tellingCharacters(present, defining);
    const std::size_t latinBefore = latinLettersBefore(bytes, sample);
    std::vector<Ranked> ranked;
    for (std::size_t i = 0; i < candidateCount; ++i) {
        const Candidate& candidate = candidates[i];
        std::u16string decoded;
        if (candidate.singleByte) {
            if (!defining[i]) continue;
            const ByteTable& table = byteTables()[i];
            decoded.resize(sample.size());
            std::transform(sample.begin(), sample.end(), decoded.begin(),
                           [&table](std::uint8_t byte) { return table[byte]; });
        } else if (auto text = decodeText(sample, candidate.encoding)) {
            decoded = std::move(*text);
        } else {
            continue;
        }
        internal::TextScore score = internal::scoreText(decoded, candidate.script, telling[i]);
        score.total -= candidate.prior;
        score.tellingTotal -= candidate.prior;
        const bool ownScript = mostlyOwnScript(decoded, latinBefore);
        const bool ideographic = !candidate.singleByte &&
                                 score.costPerCharacter() <= ideographicCostLimit && ownScript &&
                                 soundsLikeItsScript(decoded, candidate.script);
        const bool outnumbered = candidate.singleByte && candidate.script != Script::latin &&
                                 !ownScript && fewLetters(decoded);
        ranked.push_back({candidate, score, std::move(decoded), ideographic, outnumbered});
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const Ranked& a, const Ranked& b) {
        if (a.tier() != b.tier()) return a.tier() < b.tier();
        return a.score.tellingTotal > b.score.tellingTotal;
    });
    std::vector<Ranked> distinct;
    for (Ranked& entry : ranked) {
        const bool repeated =
            std::any_of(distinct.begin(), distinct.end(),
                        [&](const Ranked& kept) { return kept.decoded == entry.decoded; });
        if (!repeated) distinct.push_back(std::move(entry));
    }
    return distinct;
}

// Confidence. The best decoding must read like real text (a cost per character within the limit:
// wrong decodings pay about two unseen pairs, 48, per character) and beat every different decoding
// by a clear margin, in levels summed over the sample. Raising either number answers more often
// and is wrong more often; text that fails them answers 0, and the host asks the user.
constexpr double plausibleCost = 36.0;
constexpr std::int64_t leastMargin = 10;

bool isConfident(const std::vector<Ranked>& ranked) {
    if (ranked.empty()) return false;
    const Ranked& best = ranked.front();
    if (best.score.characters == 0 || best.score.costPerCharacter() > plausibleCost) return false;
    if (best.tier() == 2) return false;
    // The prior already speaks for the common encoding; its lead counts towards the margin, so
    // that only a clearly better rare encoding stands in its way.
    return std::all_of(ranked.begin() + 1, ranked.end(), [&best](const Ranked& other) {
        if (other.tier() != best.tier()) return true;
        const int priorLead = std::max(0, other.candidate.prior - best.candidate.prior);
        return best.score.tellingTotal - other.score.tellingTotal + priorLead >= leastMargin;
    });
}

// Control characters other than white space (and escape, which terminals' colours use) are the
// mark of binary data. Text can hold a stray one, a page break or a separator, so only a density
// of them counts: more than one byte in 16 of the first 64 KB (random bytes have one in 8).
bool looksBinary(std::span<const std::uint8_t> bytes) {
    const auto head = bytes.first(std::min(bytes.size(), sampleSize));
    const auto controls = std::count_if(head.begin(), head.end(), [](std::uint8_t byte) {
        return (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r' && byte != '\f' &&
                byte != 0x1B) ||
               byte == 0x7F;
    });
    return static_cast<std::size_t>(controls) * 16 > head.size();
}

// ISO-2022 text is 7-bit, so it passes as ASCII; its escape sequences tell it apart.
std::optional<EncodingNumber> iso2022Encoding(std::span<const std::uint8_t> bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    struct Escape {
        std::string_view sequence;
        EncodingNumber encoding;
    };
    static constexpr Escape escapes[] = {
        {"\x1B$B", Encodings::iso2022JP},
        {"\x1B$@", Encodings::iso2022JP},
        {"\x1B$)C", 0x8000'0840},  // ISO-2022-KR
        {"\x1B$)A", 0x8000'0830},  // ISO-2022-CN
    };
    for (const Escape& escape : escapes) {
        if (text.find(escape.sequence) != std::string_view::npos &&
            decodeText(bytes, escape.encoding)) {
            return escape.encoding;
        }
    }
    return std::nullopt;
}

// UTF-16 or UTF-32 without a mark. Text in any script has spaces, digits and line ends, whose units
// hold NUL bytes, and those keep to one side of each unit; NULs scattered on both sides are binary
// data. What decodes must also be free of private use and unassigned code points, and of all but a
// few control characters.
std::optional<EncodingNumber> unmarkedUnicode(std::span<const std::uint8_t> bytes) {
    const auto sample = bytes.first(std::min(bytes.size(), sampleSize) & ~std::size_t{3});
    if (sample.empty()) return std::nullopt;
    std::array<std::size_t, 4> zeros{};
    for (std::size_t i = 0; i < sample.size(); ++i)
        zeros[i % 4] += sample[i] == 0 ? 1 : 0;
    const std::size_t units = sample.size() / 2;
    // Lopsided: at least one unit in 32 has a NUL on this side, and the other side a quarter as
    // many at most (Korean has syllables such as U+B300 whose low byte is NUL).
    const auto lopsided = [units](std::size_t here, std::size_t there) {
        return here * 32 >= units && there * 4 <= here;
    };
    std::optional<EncodingNumber> found;
    // Units of UTF-32 outside the supplementary planes have two NULs in a row, on the same side.
    const std::size_t quads = units / 2;
    const auto nearlyAll = [quads](std::size_t count) { return count * 10 >= quads * 9; };
    if (nearlyAll(zeros[2]) && nearlyAll(zeros[3]) && zeros[0] * 8 <= zeros[3]) {
        found = Encodings::utf32LittleEndian;
    } else if (nearlyAll(zeros[0]) && nearlyAll(zeros[1]) && zeros[3] * 8 <= zeros[0]) {
        found = Encodings::utf32BigEndian;
    } else if (lopsided(zeros[1] + zeros[3], zeros[0] + zeros[2])) {
        found = Encodings::utf16LittleEndian;
    } else if (lopsided(zeros[0] + zeros[2], zeros[1] + zeros[3])) {
        found = Encodings::utf16BigEndian;
    }
    if (!found) return std::nullopt;
    // Chinese text has NULs too, in characters such as U+5F00, and a few of them would pass for
    // the other byte order, which reads its characters as private use and unassigned code points.
    // Control characters are binary data only in numbers (text can hold a bell or a separator),
    // as for the legacy encodings.
    const auto text = decodeText(bytes, *found);
    if (!text) return std::nullopt;
    std::size_t controls = 0;
    const bool assigned = std::none_of(text->begin(), text->end(), [&controls](char16_t c) {
        controls += c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r' && c != u'\f' ? 1 : 0;
        return (c >= 0xE000 && c <= 0xF8FF) || u_charType(c) == U_UNASSIGNED;
    });
    return assigned && controls * 16 <= text->size() ? found : std::nullopt;
}

// UTF-16 without a mark whose text is Chinese, Japanese or Korean has hardly any NULs: only its
// line ends and spaces have them. Such text is told by what it decodes to in one byte order: every
// unit a character of those scripts, their punctuation or plain white space and ASCII, most of
// them of those scripts, and common characters at that (a wrong byte order lands on surrogates,
// private use and rare characters; a legacy 8-bit text's byte pairs do too).
bool isIdeographicUnit(char16_t c) {
    return (c >= 0x3000 && c <= 0x30FF) || (c >= 0x3400 && c <= 0x9FFF) ||
           (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0xFF01 && c <= 0xFFEF);
}

bool isPlainUnit(char16_t c) {
    return (c >= 0x20 && c < 0x7F) || c == u'\t' || c == u'\n' || c == u'\r' ||
           (c >= 0x2010 && c <= 0x2027) || c == 0x00B7;
}

std::optional<EncodingNumber> unmarkedIdeographicUtf16(std::span<const std::uint8_t> bytes) {
    if (bytes.size() % 2 != 0 || bytes.size() < 2 * shortestText) return std::nullopt;
    const auto sample = bytes.first(std::min(bytes.size(), sampleSize));
    std::optional<EncodingNumber> found;
    for (const EncodingNumber order : {Encodings::utf16LittleEndian, Encodings::utf16BigEndian}) {
        const auto text = decodeText(sample, order);
        if (!text || text->empty()) continue;
        std::size_t ideographic = 0;
        const bool allPlausible = std::all_of(text->begin(), text->end(), [&](char16_t c) {
            const bool own = isIdeographicUnit(c);
            ideographic += own ? 1 : 0;
            return own || isPlainUnit(c);
        });
        if (!allPlausible || ideographic * 2 < text->size()) continue;
        const bool common = std::any_of(
            std::begin(candidates), std::end(candidates), [&](const Candidate& candidate) {
                return !candidate.singleByte &&
                       internal::scoreText(*text, candidate.script, {}).costPerCharacter() <=
                           ideographicCostLimit;
            });
        if (!common) continue;
        if (found) return std::nullopt;  // both byte orders read well: too little to tell
        found = order;
    }
    if (found && !decodeText(bytes, *found)) return std::nullopt;
    return found;
}

// The guess for well-formed text of at least the shortest length, from what follows the first
// "charset=" and the first "encoding=" (to the end of the text, or far enough to hold the value's
// end). A "charset=" that was found leaves at least its own 8 units, so the text cannot end inside
// the keyword: the declaration decides, even when it turns out to be empty.
EncodingNumber declaredEncoding(std::optional<std::string_view> afterCharset,
                                std::optional<std::string_view> afterEncoding, std::uint64_t size) {
    if (afterCharset) {
        if (const auto name = charsetValue(*afterCharset, 0)) {
            return encodingForIanaCharsetName(*name);
        }
        return byteOrderMarkStage(size);
    }
    if (afterEncoding) {
        if (const auto name = xmlEncodingValue(*afterEncoding, 0)) {
            return encodingForIanaCharsetName(*name);
        }
    }
    return byteOrderMarkStage(size);
}

// The bytes after a declaration's keyword as they arrive, kept until they hold the value's end.
class DeclaredValue {
  public:
    // Values longer than this cannot be told from the first bytes; only the whole text can.
    static constexpr std::size_t longest = 1024;

    // `endsAt(bytes)`: the length of the value with its end, once `bytes` hold it.
    explicit DeclaredValue(std::optional<std::size_t> (*endsAt)(std::string_view))
        : endsAt_(endsAt) {}

    void begin() { found_ = true; }
    void take(std::span<const std::uint8_t> bytes) {
        if (!found_ || complete_ || tooLong_) return;
        const std::size_t room = longest - std::min(longest, bytes_.size());
        bytes_.append(reinterpret_cast<const char*>(bytes.data()), std::min(room, bytes.size()));
        if (const auto end = endsAt_(bytes_)) {
            bytes_.resize(*end);
            complete_ = true;
        } else if (bytes_.size() >= longest) {
            tooLong_ = true;
            bytes_.clear();
        }
    }

    [[nodiscard]] bool found() const { return found_; }
    [[nodiscard]] bool tooLong() const { return tooLong_; }
    // What follows the keyword: up to the value's end, or up to the end of the text.
    [[nodiscard]] std::optional<std::string_view> after() const {
        if (!found_) return std::nullopt;
        return std::string_view(bytes_);
    }

  private:
    std::optional<std::size_t> (*endsAt_)(std::string_view);
    std::string bytes_;
    bool found_ = false;
    bool complete_ = false;
    bool tooLong_ = false;
};

// A "charset=" value ends at its first delimiter, after one opening double quote.
std::optional<std::size_t> charsetValueEnd(std::string_view bytes) {
    const std::size_t start = !bytes.empty() && bytes.front() == '"' ? 1 : 0;
    for (std::size_t i = start; i < bytes.size(); ++i) {
        if (endsCharsetValue(bytes[i])) return i + 1;
    }
    return std::nullopt;
}

// An "encoding=" value ends at the first "?>" after the character that follows the "=".
std::optional<std::size_t> xmlEncodingValueEnd(std::string_view bytes) {
    if (bytes.empty()) return std::nullopt;
    const auto lead = static_cast<std::uint8_t>(bytes.front());
    const std::size_t end = bytes.find("?>", lead >= 0xF0 ? 0 : utf8SequenceLength(lead));
    if (end == std::string_view::npos) return std::nullopt;
    return end + 2;
}

// A keyword with its "=" takes at most this many bytes ("charſet=" with a long s).
constexpr std::size_t longestKeyword = 9;

}  // namespace

EncodingNumber guessEncoding(std::span<const std::uint8_t> from) {
    const internal::Utf8Scan scan = internal::scanUtf8(from);
    if (!scan.wellFormed) return Encodings::none;
    if (scan.utf16Length < shortestText) return Encodings::none;

    const std::string_view text(reinterpret_cast<const char*>(from.data()), from.size());
    const Keywords keywords = findKeywords(text);
    const auto after = [&text](std::optional<std::size_t> end) -> std::optional<std::string_view> {
        if (!end) return std::nullopt;
        return text.substr(*end);
    };
    return declaredEncoding(after(keywords.charsetEnd), after(keywords.encodingEnd), from.size());
}

EncodingNumber detectEncoding(std::span<const std::uint8_t> from) {
    if (from.empty()) return Encodings::none;
    if (const auto marked = encodingOfByteOrderMark(from)) return *marked;
    const internal::Utf8Scan scan = internal::scanUtf8(from);
    if (scan.wellFormed && std::memchr(from.data(), 0, from.size()) == nullptr) {
        if (std::memchr(from.data(), 0x1B, from.size()) != nullptr) {
            if (const auto iso2022 = iso2022Encoding(from)) return *iso2022;
        }
        return Encodings::utf8;
    }
    if (const auto unicode = unmarkedUnicode(from)) return *unicode;
    if (const auto unicode = unmarkedIdeographicUtf16(from)) return *unicode;
    // A few bytes are too little to tell one legacy encoding from another.
    if (from.size() < shortestText) return scan.wellFormed ? Encodings::utf8 : Encodings::none;
    if (looksBinary(from)) return scan.wellFormed ? Encodings::utf8 : Encodings::none;
    std::vector<Ranked> ranked = rankCandidates(from, scan);
    // The multibyte candidates were only tried on the sample; a longer text must decode whole.
    while (!ranked.empty() && !ranked.front().candidate.singleByte &&
           evidenceSample(from, scan).size() != from.size() &&
           !decodeText(from, ranked.front().candidate.encoding)) {
        ranked.erase(ranked.begin());
    }
    if (isConfident(ranked)) return ranked.front().candidate.encoding;
    return scan.wellFormed ? Encodings::utf8 : Encodings::none;
}

std::vector<EncodingCandidate> encodingCandidates(std::span<const std::uint8_t> from) {
    const internal::Utf8Scan scan = internal::scanUtf8(from);
    std::vector<EncodingCandidate> listed;
    for (const Ranked& entry : rankCandidates(from, scan)) {
        listed.push_back({entry.candidate.encoding, entry.score.costPerCharacter()});
    }
    return listed;
}

struct EncodingScan::State {
    std::uint64_t size = 0;
    std::array<std::uint8_t, 4> head{};  // the first bytes, where a byte-order mark would be
    std::size_t headSize = 0;
    bool wellFormed = true;
    std::uint64_t utf16Length = 0;
    std::string cutSequence;  // a UTF-8 sequence that the end of the last piece cut off
    bool hasNul = false;
    bool hasEscape = false;
    std::string lastBytes;  // where a keyword cut by the end of the last piece began
    DeclaredValue charset{charsetValueEnd};
    DeclaredValue encoding{xmlEncodingValueEnd};

    void checkUtf8(std::span<const std::uint8_t> piece) {
        if (!cutSequence.empty()) {
            const auto needed = static_cast<std::size_t>(
                internal::utf8Lead(static_cast<std::uint8_t>(cutSequence.front())).length);
            const std::size_t taken = std::min(needed - cutSequence.size(), piece.size());
            cutSequence.append(reinterpret_cast<const char*>(piece.data()), taken);
            piece = piece.subspan(taken);
            if (cutSequence.size() < needed) return;
            const internal::Utf8Scan joined = internal::scanUtf8(std::span(
                reinterpret_cast<const std::uint8_t*>(cutSequence.data()), cutSequence.size()));
            cutSequence.clear();
            if (!joined.wellFormed) {
                wellFormed = false;
                return;
            }
            utf16Length += joined.utf16Length;
        }
        const internal::Utf8Scan scan = internal::scanUtf8(piece);
        utf16Length += scan.utf16Length;
        if (scan.wellFormed) return;
        // A sequence that only the end of the piece cuts off waits for the next piece.
        const std::size_t at = scan.wellFormedBytes;
        const int length = internal::utf8Lead(piece[at]).length;
        if (length != 0 && at + static_cast<std::size_t>(length) > piece.size()) {
            cutSequence.assign(reinterpret_cast<const char*>(piece.data() + at), piece.size() - at);
        } else {
            wellFormed = false;
        }
    }

    // Where each keyword was first found, from the bytes before the piece and the piece. A keyword
    // ending in the piece's first bytes may have begun in the last piece; one ending further in
    // lies in this one.
    void findKeywordsIn(std::span<const std::uint8_t> piece) {
        const std::string_view bytes(reinterpret_cast<const char*>(piece.data()), piece.size());
        const std::size_t seamLength = std::min(bytes.size(), longestKeyword);
        const std::string seam = lastBytes + std::string(bytes.substr(0, seamLength));
        const auto note = [&](const Keywords& found, std::size_t offsetInPiece) {
            if (found.encodingEnd && !encoding.found()) {
                encoding.begin();
                encoding.take(piece.subspan(*found.encodingEnd - offsetInPiece));
            }
            if (found.charsetEnd) {
                charset.begin();
                charset.take(piece.subspan(*found.charsetEnd - offsetInPiece));
            }
            return found.charsetEnd.has_value();
        };
        // In the seam, offsets count from lastBytes' start: the piece starts at lastBytes.size().
        const std::size_t seamShift = lastBytes.size();
        if (!note(findKeywords(seam, seamShift), seamShift) && bytes.size() > seamLength) {
            note(findKeywords(bytes, seamLength), 0);
        }
        const std::string tail = lastBytes + std::string(bytes.substr(bytes.size() - seamLength));
        lastBytes = tail.substr(tail.size() - std::min(tail.size(), longestKeyword - 1));
    }
};

EncodingScan::EncodingScan() : state_(std::make_unique<State>()) {}
EncodingScan::EncodingScan(EncodingScan&&) noexcept = default;
EncodingScan& EncodingScan::operator=(EncodingScan&&) noexcept = default;
EncodingScan::~EncodingScan() = default;

void EncodingScan::append(std::span<const std::uint8_t> piece) {
    State& state = *state_;
    if (piece.empty()) return;
    for (std::size_t i = 0; state.headSize < state.head.size() && i < piece.size(); ++i)
        state.head[state.headSize++] = piece[i];
    state.size += piece.size();
    state.hasNul = state.hasNul || std::memchr(piece.data(), 0, piece.size()) != nullptr;
    state.hasEscape = state.hasEscape || std::memchr(piece.data(), 0x1B, piece.size()) != nullptr;
    // The guess only ever reads well-formed text.
    if (!state.wellFormed) return;
    state.checkUtf8(piece);
    // Values whose keyword came in an earlier piece go on before this piece's keywords are found.
    state.charset.take(piece);
    state.encoding.take(piece);
    if (!state.charset.found()) state.findKeywordsIn(piece);
}

bool EncodingScan::isWellFormedUtf8() const {
    return state_->wellFormed && state_->cutSequence.empty();
}

std::uint64_t EncodingScan::size() const {
    return state_->size;
}

std::span<const std::uint8_t> EncodingScan::firstBytes() const {
    return std::span(state_->head).first(state_->headSize);
}

std::optional<EncodingNumber> EncodingScan::guessedEncoding() const {
    const State& state = *state_;
    if (!isWellFormedUtf8() || state.utf16Length < shortestText) return Encodings::none;
    if (state.charset.tooLong() || (!state.charset.found() && state.encoding.tooLong())) {
        return std::nullopt;
    }
    return declaredEncoding(state.charset.after(), state.encoding.after(), state.size);
}

std::optional<EncodingNumber> EncodingScan::detectedEncoding() const {
    const State& state = *state_;
    if (state.size == 0) return Encodings::none;
    if (const auto marked = encodingOfByteOrderMark(firstBytes())) {
        return *marked;
    }
    if (isWellFormedUtf8() && !state.hasNul) {
        // Seven-bit text with escapes may be ISO-2022, which only decoding all of it can tell.
        if (state.hasEscape) return std::nullopt;
        return Encodings::utf8;
    }
    return std::nullopt;
}

}  // namespace quod::Text
