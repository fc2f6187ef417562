// Run-time choice of AVX2 code for the scans that read every byte of large files.
//
// Internal: the library is built for baseline x86-64, so functions that use AVX2 carry
// QUOD_AVX2_FUNCTION and run only when `hasAvx2()` says the processor has it; elsewhere (other
// processors, other architectures) QUOD_HAS_AVX2_PATH is 0 and the portable code runs.
#pragma once

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define QUOD_HAS_AVX2_PATH 1
#define QUOD_AVX2_FUNCTION __attribute__((target("avx2")))
#include <immintrin.h>

namespace quod::internal {

inline bool hasAvx2() {
    static const bool supported = __builtin_cpu_supports("avx2");
    return supported;
}

}  // namespace quod::internal
#else
#define QUOD_HAS_AVX2_PATH 0
#endif
