// The set of distinct lines seen so far, for keeping the first of each group of equal lines in
// order (unique lines). The table holds one word a kept line: its number among the kept lines
// (40 bits) and 24 more bits of its hash, so that a lookup compares lines themselves only for a
// likely match. The lines stay with the caller, who answers whether kept line k equals the one
// looked up; the table keeps each kept line's full hash as well, to grow without asking for the
// lines again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "quoddle/base/Precondition.h"

namespace quod::internal {

class OccurrenceTable {
  public:
    explicit OccurrenceTable(std::size_t expectedLines = 0) {
        resize(expectedLines);
        hashes_.reserve(expectedLines);
    }

    // Where a line with this hash would go, so that a caller can fetch it early (prefetchSlot)
    // while it still works on lines before it.
    [[nodiscard]] const void* slotAddress(std::size_t hash) const {
        return &slots_[hash & (slots_.size() - 1)];
    }

    // Records the line as kept and answers true unless `equalsKept(k)` says it equals kept line k
    // (0-based, in the order kept) for some k with the same tag.
    template <typename EqualsKept>
    bool insertIfNew(std::size_t hash, EqualsKept&& equalsKept) {
        const std::size_t mask = slots_.size() - 1;
        const uint64_t tag = tagOf(hash);
        std::size_t at = hash & mask;
        for (; slots_[at] != 0; at = (at + 1) & mask) {
            if ((slots_[at] & ~indexMask) != tag) continue;
            if (equalsKept(static_cast<std::size_t>((slots_[at] & indexMask) - 1))) return false;
        }
        QUOD_PRECONDITION(hashes_.size() + 1 < indexMask, "too many lines to tell apart");
        hashes_.push_back(hash);
        slots_[at] = tag | static_cast<uint64_t>(hashes_.size());
        // Kept at most two thirds full, so that probes stay short.
        if (hashes_.size() * 3 > slots_.size() * 2) resize(hashes_.size() * 2);
        return true;
    }

    [[nodiscard]] std::size_t keptCount() const { return hashes_.size(); }

  private:
    static constexpr int indexBits = 40;
    static constexpr uint64_t indexMask = (uint64_t{1} << indexBits) - 1;

    static uint64_t tagOf(std::size_t hash) {
        return static_cast<uint64_t>(hash >> indexBits) << indexBits;
    }

    // Room for `lines` at most two thirds full; the kept lines go in again.
    void resize(std::size_t lines) {
        std::size_t capacity = 16;
        while (capacity * 2 < lines * 3)
            capacity *= 2;
        slots_.assign(capacity, 0);  // 0: empty
        const std::size_t mask = capacity - 1;
        for (std::size_t k = 0; k < hashes_.size(); ++k) {
            std::size_t at = hashes_[k] & mask;
            while (slots_[at] != 0)
                at = (at + 1) & mask;
            slots_[at] = tagOf(hashes_[k]) | static_cast<uint64_t>(k + 1);
        }
    }

    std::vector<uint64_t> slots_;
    std::vector<std::size_t> hashes_;
};

}  // namespace quod::internal
