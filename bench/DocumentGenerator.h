// Deterministic test documents for the benchmarks: lines of about 60 UTF-16 units made of short
// words, mostly ASCII with an occasional accented letter, ending in a mix of LF (most), CR LF, CR
// and the Unicode line separator.
#pragma once

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>

namespace quod::bench {

// A UTF-8 document of about `bytes` bytes, built once per size and kept for the run.
const std::string& utf8Document(int64_t bytes);
// The same document as UTF-16.
const std::u16string& utf16Document(int64_t bytes);

// Resident set size of this process, in bytes.
int64_t residentBytes();

inline constexpr int64_t megabyte = 1'000'000;

// An editing position that wanders a few units either way between edits, as when typing and
// correcting; starts in the middle and stays inside [1, length - 1].
class WanderingCursor {
  public:
    explicit WanderingCursor(int64_t length) : position_(length / 2) {}
    int64_t next(int64_t length) {
        position_ = std::clamp<int64_t>(position_ + static_cast<int64_t>(random_() % 81) - 40, 1,
                                        length - 1);
        return position_;
    }

  private:
    std::mt19937 random_{1};
    int64_t position_;
};

}  // namespace quod::bench
