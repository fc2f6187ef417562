#include "quoddle/text/UniqueLinesStream.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

#include "quoddle/base/internal/Avx2.h"
#include "quoddle/strings/Normalization.h"
#include "quoddle/text/internal/OccurrenceTable.h"

namespace quod {
namespace {

// The bytes that can start a line terminator in UTF-8: LF, CR, and the lead bytes of NEL (C2 85)
// and of LS and PS (E2 80 A8, E2 80 A9).
constexpr bool mayStartTerminator(std::uint8_t byte) {
    return byte == 0x0A || byte == 0x0D || byte == 0xC2 || byte == 0xE2;
}

// The length of the line terminator at `at`, or 0.
std::size_t terminatorAt(std::string_view text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{0};
    };
    switch (byte(at)) {
        case 0x0A:
            return 1;
        case 0x0D:
            return byte(at + 1) == 0x0A ? 2 : 1;
        case 0xC2:
            return byte(at + 1) == 0x85 ? 2 : 0;
        case 0xE2:
            return byte(at + 1) == 0x80 && (byte(at + 2) == 0xA8 || byte(at + 2) == 0xA9) ? 3
                                                                                           : 0;
        default:
            return 0;
    }
}

// Calls visit(at) for the bytes of `text` that may start a terminator, in order; visit answers
// where to go on from (past the terminator it found, or the next byte). Thirty-two bytes at a time
// where the processor can: the blocks answer where they stopped, and the rest goes byte by byte.
#if QUOD_HAS_AVX2_PATH
template <typename Visit>
QUOD_AVX2_FUNCTION std::size_t candidatesInBlocks(std::string_view text, Visit& visit) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const __m256i lf = _mm256_set1_epi8(0x0A);
    const __m256i cr = _mm256_set1_epi8(0x0D);
    const __m256i nelLead = _mm256_set1_epi8(static_cast<char>(0xC2));
    const __m256i separatorLead = _mm256_set1_epi8(static_cast<char>(0xE2));
    std::size_t block = 0;
    std::size_t next = 0;
    for (; block + 32 <= text.size(); block += 32) {
        const __m256i here = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + block));
        auto lanes = static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_or_si256(
            _mm256_or_si256(_mm256_cmpeq_epi8(here, lf), _mm256_cmpeq_epi8(here, cr)),
            _mm256_or_si256(_mm256_cmpeq_epi8(here, nelLead),
                            _mm256_cmpeq_epi8(here, separatorLead)))));
        for (; lanes != 0; lanes &= lanes - 1) {
            const std::size_t at = block + static_cast<std::size_t>(std::countr_zero(lanes));
            if (at >= next) next = visit(at);
        }
    }
    return std::max(block, next);
}
#endif

template <typename Visit>
void forEachCandidate(std::string_view text, Visit& visit) {
    std::size_t at = 0;
#if QUOD_HAS_AVX2_PATH
    if (internal::hasAvx2()) at = candidatesInBlocks(text, visit);
#endif
    while (at < text.size()) {
        at = mayStartTerminator(static_cast<std::uint8_t>(text[at])) ? visit(at) : at + 1;
    }
}

// A line's hash, from its bytes eight at a time (multiply-and-rotate per word, then a final mix,
// so that the high bits the table tags with depend on every byte), and whether it has a byte of
// 0xCC or more: only those can encode a character that combines (U+0300 is CC 80), so only those
// lines may need composing. Both in one pass, since every line is read for both.
struct LineHash {
    std::size_t hash = 0;
    bool mayCombine = false;
};

LineHash hashLine(std::string_view bytes) {
    constexpr std::uint64_t multiplier = 0x9E37'79B9'7F4A'7C15u;
    std::uint64_t hash = bytes.size() * multiplier;
    std::uint64_t combining = 0;
    const auto take = [&](std::uint64_t word) {
        hash = std::rotl((hash ^ word) * multiplier, 29);
        // A byte reaches 0xCC when its high bit is set and adding 0x34 to its low seven bits
        // carries into the high bit (never into the next byte).
        combining |= ((word & 0x7F7F'7F7F'7F7F'7F7Fu) + 0x3434'3434'3434'3434u) & word;
    };
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t word;
        std::memcpy(&word, bytes.data() + i, sizeof word);
        take(word);
    }
    if (i < bytes.size()) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + i, bytes.size() - i);
        take(word);
    }
    hash ^= hash >> 33;
    hash *= 0xFF51'AFD7'ED55'8CCDu;
    hash ^= hash >> 33;
    hash *= 0xC4CE'B9FE'1A85'EC53u;
    return {static_cast<std::size_t>(hash ^ (hash >> 33)),
            (combining & 0x8080'8080'8080'8080u) != 0};
}

}  // namespace

struct UniqueLinesStream::State {
    // A line of the current piece, with the hash of its composed form; `composed` indexes the
    // piece's composed forms for the few lines that are not composed already.
    struct Line {
        std::string_view text;
        std::size_t hash = 0;
        int composed = -1;
    };

    // A kept line, and whether it had to be composed to be compared.
    struct Kept {
        std::string_view text;
        bool composed = false;
    };

    internal::OccurrenceTable table;
    std::vector<Kept> kept;
    std::vector<Line> lines;
    std::vector<std::string> composedForms;
    std::string earlierComposed;
    std::string_view finalTerminator;  // in the last piece, which stays readable

    void add(std::string_view line) {
        const LineHash hashed = hashLine(line);
        Line entry{line, hashed.hash};
        if (hashed.mayCombine && !isCanonicalComposition(line)) {
            entry.composed = static_cast<int>(composedForms.size());
            composedForms.push_back(canonicalComposition(line));
            entry.hash = hashLine(composedForms.back()).hash;
        }
        lines.push_back(entry);
    }

    // The piece's lines go into the table in order, each one's slot fetched a few lines ahead:
    // the table is far larger than the caches, and waiting for each slot in turn cost more than
    // everything else.
    void keepFirsts(std::string& out) {
        constexpr std::size_t ahead = 8;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (i + ahead < lines.size()) __builtin_prefetch(table.slotAddress(lines[i + ahead].hash));
            const Line& line = lines[i];
            const std::string_view key = line.composed < 0 ? line.text : composedForms[static_cast<std::size_t>(line.composed)];
            const bool isNew = table.insertIfNew(line.hash, [&](std::size_t k) {
                if (!kept[k].composed) return kept[k].text == key;
                earlierComposed = canonicalComposition(kept[k].text);
                return earlierComposed == key;
            });
            if (!isNew) continue;
            if (!kept.empty()) out += '\n';
            out += line.text;
            kept.push_back({line.text, line.composed >= 0});
        }
        lines.clear();
        composedForms.clear();
    }
};

UniqueLinesStream::UniqueLinesStream() : state_(std::make_unique<State>()) {}
UniqueLinesStream::~UniqueLinesStream() = default;
UniqueLinesStream::UniqueLinesStream(UniqueLinesStream&&) noexcept = default;
UniqueLinesStream& UniqueLinesStream::operator=(UniqueLinesStream&&) noexcept = default;

void UniqueLinesStream::append(std::string_view piece, std::string& out) {
    State& state = *state_;
    std::size_t lineStart = 0;
    auto visit = [&](std::size_t at) {
        const std::size_t length = terminatorAt(piece, at);
        if (length == 0) return at + 1;
        state.add(piece.substr(lineStart, at - lineStart));
        state.finalTerminator = piece.substr(at, length);
        lineStart = at + length;
        return lineStart;
    };
    forEachCandidate(piece, visit);
    // The text's last line, without a terminator.
    if (lineStart < piece.size()) {
        state.add(piece.substr(lineStart));
        state.finalTerminator = {};
    }
    state.keepFirsts(out);
}

void UniqueLinesStream::finish(std::string& out) {
    out += state_->finalTerminator;
    state_->finalTerminator = {};
}

}  // namespace quod
