// Overflow-trapping arithmetic for counts and positions.
//
// Counts of lines, units and characters never wrap: an overflow means a broken caller, so it stops
// the process through QUOD_PRECONDITION like any other programming error.
#pragma once

#include <cstdint>

#include "quoddle/base/Precondition.h"

namespace quod {

[[nodiscard]] inline int64_t checkedAdd(int64_t a, int64_t b) {
    int64_t result = 0;
    QUOD_PRECONDITION(!__builtin_add_overflow(a, b, &result), "arithmetic overflow in addition");
    return result;
}

[[nodiscard]] inline int64_t checkedSubtract(int64_t a, int64_t b) {
    int64_t result = 0;
    QUOD_PRECONDITION(!__builtin_sub_overflow(a, b, &result), "arithmetic overflow in subtraction");
    return result;
}

[[nodiscard]] inline int64_t checkedMultiply(int64_t a, int64_t b) {
    int64_t result = 0;
    QUOD_PRECONDITION(!__builtin_mul_overflow(a, b, &result),
                      "arithmetic overflow in multiplication");
    return result;
}

}  // namespace quod
