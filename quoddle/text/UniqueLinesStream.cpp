#include "quoddle/text/UniqueLinesStream.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

#include "quoddle/strings/Normalization.h"
#include "quoddle/text/internal/OccurrenceTable.h"
#include "quoddle/text/internal/Utf8Lines.h"

namespace quod {
namespace {

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
            if (i + ahead < lines.size())
                __builtin_prefetch(table.slotAddress(lines[i + ahead].hash));
            const Line& line = lines[i];
            const std::string_view key =
                line.composed < 0 ? line.text
                                  : composedForms[static_cast<std::size_t>(line.composed)];
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
    internal::forEachUtf8Line(piece, [&state](std::string_view line, std::string_view terminator) {
        state.add(line);
        state.finalTerminator = terminator;
    });
    state.keepFirsts(out);
}

void UniqueLinesStream::finish(std::string& out) {
    out += state_->finalTerminator;
    state_->finalTerminator = {};
}

}  // namespace quod
