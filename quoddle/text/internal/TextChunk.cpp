#include "quoddle/text/internal/TextChunk.h"

#include <algorithm>

#include "quoddle/base/Precondition.h"
#include "quoddle/strings/LineFunctions.h"

namespace quod::internal {
namespace {

// Patches cost four bytes each against one more byte per unit for the two-byte form, and every
// read of a patched chunk searches them: a chunk keeps at most one patch per eight units.
int64_t patchLimit(int64_t length) {
    return std::max<int64_t>(8, length / 8);
}

// The offsets behind each terminator of units[0, n), where a final CR ends a line (the next
// chunk never starts with the LF of its pair).
template <typename Unit>
void appendLineEnds(const Unit* units, int64_t n, std::vector<uint16_t>& ends) {
    for (int64_t i = 0; i < n; ++i) {
        const auto unit = static_cast<char16_t>(units[i]);
        if (unit > u'\r' && unit != 0x85 && unit != 0x2028 && unit != 0x2029) continue;
        if (!isLineTerminator(unit)) continue;
        if (unit == u'\r' && i + 1 < n && units[i + 1] == u'\n') continue;
        ends.push_back(static_cast<uint16_t>(i + 1));
    }
}

}  // namespace

TextChunk::TextChunk(std::u16string_view units) {
    const auto n = std::ssize(units);
    QUOD_PRECONDITION(n <= capacityLimit, "a chunk holds at most 65535 units");
    const auto high = std::count_if(units.begin(), units.end(), [](char16_t u) { return u > 0xFF; });
    if (high > patchLimit(n)) {
        isWide_ = true;
        wide_.assign(units.begin(), units.end());
    } else {
        narrow_.resize(static_cast<std::size_t>(n));
        patches_.reserve(static_cast<std::size_t>(high));
        for (int64_t i = 0; i < n; ++i) {
            const char16_t unit = units[static_cast<std::size_t>(i)];
            narrow_[static_cast<std::size_t>(i)] = static_cast<uint8_t>(unit);
            if (unit > 0xFF) patches_.push_back({static_cast<uint16_t>(i), unit});
        }
    }
    appendLineEnds(units.data(), n, lineEnds_);
    lineEnds_.shrink_to_fit();
}

TextChunk TextChunk::fromLatin1(std::string_view bytes) {
    QUOD_PRECONDITION(std::ssize(bytes) <= capacityLimit, "a chunk holds at most 65535 units");
    TextChunk chunk;
    const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
    chunk.narrow_.assign(data, data + bytes.size());
    chunk.lineEnds_.reserve(bytes.size() / 32);
    appendLineEnds(data, std::ssize(bytes), chunk.lineEnds_);
    chunk.lineEnds_.shrink_to_fit();
    return chunk;
}

int64_t TextChunk::length() const {
    return static_cast<int64_t>(isWide_ ? wide_.size() : narrow_.size());
}

char16_t TextChunk::at(int64_t offset) const {
    const auto i = static_cast<std::size_t>(offset);
    if (isWide_) return wide_[i];
    if (!patches_.empty()) {
        const auto patch =
            std::lower_bound(patches_.begin(), patches_.end(), offset,
                             [](const Patch& p, int64_t value) { return p.offset < value; });
        if (patch != patches_.end() && patch->offset == offset) return patch->unit;
    }
    return narrow_[i];
}

void TextChunk::copyOut(int64_t from, int64_t count, char16_t* out) const {
    if (isWide_) {
        std::copy_n(wide_.begin() + from, count, out);
        return;
    }
    std::copy_n(narrow_.begin() + from, count, out);
    const auto first =
        std::lower_bound(patches_.begin(), patches_.end(), from,
                         [](const Patch& p, int64_t value) { return p.offset < value; });
    for (auto patch = first; patch != patches_.end() && patch->offset < from + count; ++patch)
        out[patch->offset - from] = patch->unit;
}

void TextChunk::becomeWide() {
    wide_.resize(narrow_.size());
    copyOut(0, length(), wide_.data());
    isWide_ = true;
    std::vector<uint8_t>().swap(narrow_);
    std::vector<Patch>().swap(patches_);
}

void TextChunk::replace(int64_t from, int64_t count, std::u16string_view units) {
    const auto inserted = std::ssize(units);
    if (count == 0 && inserted == 0) return;
    const int64_t delta = inserted - count;
    QUOD_PRECONDITION(length() + delta <= capacityLimit, "a chunk holds at most 65535 units");
    if (!isWide_) {
        const auto byOffset = [](const Patch& p, int64_t value) { return p.offset < value; };
        const auto firstGone = std::lower_bound(patches_.begin(), patches_.end(), from, byOffset);
        const auto lastGone = std::lower_bound(firstGone, patches_.end(), from + count, byOffset);
        const auto high = std::count_if(units.begin(), units.end(), [](char16_t u) { return u > 0xFF; });
        const auto remaining = std::ssize(patches_) - (lastGone - firstGone) + high;
        if (remaining > patchLimit(length() + delta)) {
            becomeWide();
        } else {
            for (auto patch = lastGone; patch != patches_.end(); ++patch)
                patch->offset = static_cast<uint16_t>(patch->offset + delta);
            std::vector<Patch> added;
            added.reserve(static_cast<std::size_t>(high));
            for (int64_t i = 0; i < inserted; ++i) {
                const char16_t unit = units[static_cast<std::size_t>(i)];
                if (unit > 0xFF) added.push_back({static_cast<uint16_t>(from + i), unit});
            }
            const auto at = patches_.erase(firstGone, lastGone);
            patches_.insert(at, added.begin(), added.end());

            const auto start = narrow_.begin() + from;
            const int64_t overwrite = std::min(count, inserted);
            std::transform(units.begin(), units.begin() + overwrite, start,
                           [](char16_t u) { return static_cast<uint8_t>(u); });
            if (count > inserted) {
                narrow_.erase(start + overwrite, start + count);
            } else if (inserted > count) {
                std::vector<uint8_t> rest(static_cast<std::size_t>(inserted - count));
                std::transform(units.begin() + overwrite, units.end(), rest.begin(),
                               [](char16_t u) { return static_cast<uint8_t>(u); });
                narrow_.insert(start + overwrite, rest.begin(), rest.end());
            }
        }
    }
    if (isWide_) {
        const auto start = wide_.begin() + from;
        const int64_t overwrite = std::min(count, inserted);
        std::copy_n(units.begin(), overwrite, start);
        if (count > inserted) {
            wide_.erase(start + overwrite, start + count);
        } else {
            wide_.insert(start + overwrite, units.begin() + overwrite, units.end());
        }
    }

    // A line end at e depends on units e - 1 and e only, so only ends in [from, from + inserted]
    // can have changed; later ones move with the text.
    const auto firstChanged = std::lower_bound(lineEnds_.begin(), lineEnds_.end(), from);
    const auto firstMoved = std::upper_bound(firstChanged, lineEnds_.end(), from + count);
    for (auto end = firstMoved; end != lineEnds_.end(); ++end)
        *end = static_cast<uint16_t>(*end + delta);
    const std::vector<uint16_t> found = lineEndsIn(from, from + inserted);
    const auto at = lineEnds_.erase(firstChanged, firstMoved);
    lineEnds_.insert(at, found.begin(), found.end());
}

std::vector<uint16_t> TextChunk::lineEndsIn(int64_t from, int64_t to) const {
    std::vector<uint16_t> ends;
    const int64_t n = length();
    for (int64_t end = std::max<int64_t>(from, 1); end <= std::min(to, n); ++end) {
        const char16_t unit = at(end - 1);
        if (!isLineTerminator(unit)) continue;
        if (unit == u'\r' && end < n && at(end) == u'\n') continue;
        ends.push_back(static_cast<uint16_t>(end));
    }
    return ends;
}

int64_t TextChunk::linesEndingThrough(int64_t offset) const {
    return std::upper_bound(lineEnds_.begin(), lineEnds_.end(), offset) - lineEnds_.begin();
}

int64_t TextChunk::heapBytes() const {
    return static_cast<int64_t>(narrow_.capacity() + patches_.capacity() * sizeof(Patch) +
                                wide_.capacity() * sizeof(char16_t) +
                                lineEnds_.capacity() * sizeof(uint16_t));
}

}  // namespace quod::internal
