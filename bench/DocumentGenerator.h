// Deterministic test documents for the benchmarks: lines of about 60 UTF-16 units made of short
// words, mostly ASCII with an occasional accented letter, ending in a mix of LF (most), CR LF, CR
// and the Unicode line separator.
#pragma once

#include <cstdint>
#include <string>

namespace quod::bench {

// A UTF-8 document of about `bytes` bytes, built once per size and kept for the run.
const std::string& utf8Document(int64_t bytes);
// The same document as UTF-16.
const std::u16string& utf16Document(int64_t bytes);

// Resident set size of this process, in bytes.
int64_t residentBytes();

inline constexpr int64_t megabyte = 1'000'000;

}  // namespace quod::bench
