#include "quoddle/text/internal/TextChunk.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "quoddle/base/Precondition.h"
#include "quoddle/base/Utf.h"
#include "quoddle/strings/LineFunctions.h"

namespace quod::internal {
namespace {

// Patches cost four bytes each against one more byte per unit for the two-byte form, and every
// read of a patched chunk searches them: a chunk keeps at most one patch per eight units.
int64_t patchLimit(int64_t length) {
    return std::max<int64_t>(8, length / 8);
}

// Eight bytes in memory order, the first in the lowest byte whatever the machine's byte order.
uint64_t loadBytes(const uint8_t* bytes) {
    uint64_t word;
    std::memcpy(&word, bytes, 8);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

// The byte the one-byte form keeps for a unit; a patched unit keeps 0, so that scans of the bytes
// never take it for a line terminator.
uint8_t byteFor(char16_t unit) {
    return unit > 0xFF ? 0 : static_cast<uint8_t>(unit);
}

}  // namespace

LineEnds::LineEnds(LineEnds&& other) noexcept {
    takeFrom(other);
}

LineEnds& LineEnds::operator=(LineEnds&& other) noexcept {
    if (this != &other) {
        if (onHeap()) delete[] heap_;
        takeFrom(other);
    }
    return *this;
}

void LineEnds::takeFrom(LineEnds& other) noexcept {
    size_ = other.size_;
    capacity_ = other.capacity_;
    if (other.onHeap()) {
        heap_ = other.heap_;
    } else {
        std::copy_n(other.inline_, size_, inline_);
    }
    other.size_ = 0;
    other.capacity_ = inlineCapacity;
}

LineEnds::~LineEnds() {
    if (onHeap()) delete[] heap_;
}

void LineEnds::reserve(uint32_t capacity) {
    if (capacity <= capacity_) return;
    auto* grown = new uint16_t[capacity];
    std::copy_n(data(), size_, grown);
    if (onHeap()) delete[] heap_;
    heap_ = grown;
    capacity_ = capacity;
}

void LineEnds::assign(const uint16_t* first, const uint16_t* last) {
    const auto count = static_cast<uint32_t>(last - first);
    size_ = 0;
    reserve(count);
    std::copy(first, last, data());
    size_ = count;
}

void LineEnds::push_back(uint16_t end) {
    if (size_ == capacity_) reserve(capacity_ * 2);
    data()[size_++] = end;
}

uint16_t* LineEnds::erase(uint16_t* first, uint16_t* last) {
    std::copy(last, end(), first);
    size_ -= static_cast<uint32_t>(last - first);
    return first;
}

uint16_t* LineEnds::insert(uint16_t* at, uint16_t end) {
    const auto offset = at - data();
    if (size_ == capacity_) reserve(capacity_ * 2);
    uint16_t* place = data() + offset;
    std::copy_backward(place, this->end(), this->end() + 1);
    *place = end;
    ++size_;
    return place;
}

TextChunk::TextChunk(std::u16string_view units) {
    const auto n = std::ssize(units);
    QUOD_PRECONDITION(n <= capacityLimit, "a chunk holds at most 65535 units");
    const auto high =
        std::count_if(units.begin(), units.end(), [](char16_t u) { return u > 0xFF; });
    if (high > patchLimit(n)) {
        isWide_ = true;
        wide_.assign(units.begin(), units.end());
    } else {
        narrow_.resize(static_cast<std::size_t>(n));
        // Without patches the loop is a plain narrowing, which the compiler turns into vector code.
        std::transform(units.begin(), units.end(), narrow_.begin(), byteFor);
        if (high > 0) {
            patches_.reserve(static_cast<std::size_t>(high));
            for (int64_t i = 0; i < n; ++i) {
                const char16_t unit = units[static_cast<std::size_t>(i)];
                if (unit > 0xFF) patches_.push_back({static_cast<uint16_t>(i), unit});
            }
        }
    }
    // A final CR ends a line: the next chunk never starts with the LF of its pair.
    thread_local std::vector<int64_t> ends;
    ends.clear();
    appendLineStarts(units, 0, false, ends);
    for (const int64_t end : ends)
        lineEnds_.push_back(static_cast<uint16_t>(end));
}

std::optional<TextChunk> TextChunk::fromMostlyLatin1Utf8(std::string_view bytes) {
    QUOD_PRECONDITION(std::ssize(bytes) <= capacityLimit, "a chunk holds at most 65535 units");
    // Line ends are gathered here and copied once, so that each chunk's list is allocated once
    // at its size.
    thread_local std::vector<uint16_t> ends;
    ends.clear();
    TextChunk chunk;
    chunk.narrow_.resize(bytes.size());
    const auto* in = reinterpret_cast<const uint8_t*>(bytes.data());
    uint8_t* out = chunk.narrow_.data();
    const std::size_t n = bytes.size();
    std::size_t read = 0;
    std::size_t written = 0;
    // The ASCII byte in[at], decoded to unit out[unit], may end a line; a CR followed by its LF
    // does not (the chunk never ends between the two).
    const auto noteTerminator = [&](std::size_t at, std::size_t unit) {
        if (in[at] == '\n' || (in[at] == '\r' && (at + 1 == n || in[at + 1] != '\n')))
            ends.push_back(static_cast<uint16_t>(unit + 1));
    };
    constexpr uint64_t ones = 0x0101010101010101ULL;
    constexpr uint64_t highs = 0x8080808080808080ULL;
    while (read < n) {
        // Eight ASCII bytes at a time: the common case, copied as they are. Only bytes below 0x0E
        // can end a line there: adding 0x72 to an ASCII byte sets its bit 7 exactly when it is
        // 0x0E or above, and never carries into the next byte.
        if (read + 8 <= n) {
            const uint64_t word = loadBytes(in + read);
            if ((word & highs) == 0) {
                std::memcpy(out + written, in + read, 8);
                for (uint64_t controls = ~(word + 0x72 * ones) & highs; controls != 0;
                     controls &= controls - 1) {
                    const auto k = static_cast<std::size_t>(std::countr_zero(controls) / 8);
                    noteTerminator(read + k, written + k);
                }
                read += 8;
                written += 8;
                continue;
            }
        }
        const uint8_t byte = in[read];
        if (byte < 0x80) {
            noteTerminator(read, written);
            out[written++] = byte;
            ++read;
            continue;
        }
        const Utf8Lead lead = utf8Lead(byte);
        if (lead.length == 0 || read + static_cast<std::size_t>(lead.length) > n ||
            in[read + 1] < lead.low || in[read + 1] > lead.high) {
            return std::nullopt;
        }
        char32_t code = byte & (0x7F >> lead.length);
        for (int k = 1; k < lead.length; ++k) {
            const uint8_t next = in[read + static_cast<std::size_t>(k)];
            if ((next & 0xC0) != 0x80) return std::nullopt;
            code = (code << 6) | (next & 0x3F);
        }
        read += static_cast<std::size_t>(lead.length);
        // NEL, LS and PS end lines too; patched units keep the byte 0, which ends none.
        if (code == 0x85 || code == 0x2028 || code == 0x2029)
            ends.push_back(static_cast<uint16_t>(written + 1));
        const auto patch = [&](char16_t unit) {
            chunk.patches_.push_back({static_cast<uint16_t>(written), unit});
            out[written++] = byteFor(unit);
        };
        if (code <= 0xFF) {
            out[written++] = static_cast<uint8_t>(code);
        } else if (code <= 0xFFFF) {
            patch(static_cast<char16_t>(code));
        } else {
            patch(static_cast<char16_t>(0xD7C0 + (code >> 10)));
            patch(static_cast<char16_t>(0xDC00 | (code & 0x3FF)));
        }
    }
    if (std::ssize(chunk.patches_) > patchLimit(static_cast<int64_t>(written))) return std::nullopt;
    chunk.narrow_.resize(written);
    chunk.lineEnds_.assign(ends.data(), ends.data() + ends.size());
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
        const auto high =
            std::count_if(units.begin(), units.end(), [](char16_t u) { return u > 0xFF; });
        const auto remaining = std::ssize(patches_) - (lastGone - firstGone) + high;
        if (remaining > patchLimit(length() + delta)) {
            becomeWide();
        } else {
            for (auto patch = lastGone; patch != patches_.end(); ++patch)
                patch->offset = static_cast<uint16_t>(patch->offset + delta);
            auto at = patches_.erase(firstGone, lastGone);
            for (int64_t i = 0; i < inserted; ++i) {
                const char16_t unit = units[static_cast<std::size_t>(i)];
                if (unit > 0xFF)
                    at = patches_.insert(at, {static_cast<uint16_t>(from + i), unit}) + 1;
            }

            const auto start = narrow_.begin() + from;
            const int64_t overwrite = std::min(count, inserted);
            std::transform(units.begin(), units.begin() + overwrite, start, byteFor);
            if (count > inserted) {
                narrow_.erase(start + overwrite, start + count);
            } else if (inserted > count) {
                const auto at = narrow_.insert(start + overwrite,
                                               static_cast<std::size_t>(inserted - count), 0);
                std::transform(units.begin() + overwrite, units.end(), at, byteFor);
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
    auto at = lineEnds_.erase(firstChanged, firstMoved);
    const int64_t n = length();
    for (int64_t end = std::max<int64_t>(from, 1); end <= std::min(from + inserted, n); ++end) {
        const char16_t unit = this->at(end - 1);
        if (!isLineTerminator(unit) || (unit == u'\r' && end < n && this->at(end) == u'\n'))
            continue;
        at = lineEnds_.insert(at, static_cast<uint16_t>(end)) + 1;
    }
}

int64_t TextChunk::linesEndingThrough(int64_t offset) const {
    return std::upper_bound(lineEnds_.begin(), lineEnds_.end(), offset) - lineEnds_.begin();
}

}  // namespace quod::internal
