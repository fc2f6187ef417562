#include "quoddle/base/Precondition.h"

#include <cstdio>
#include <cstdlib>

namespace quod::internal {

void preconditionFailure(const char* condition, const char* message, const char* file, int line) {
    std::fprintf(stderr, "Quoddle precondition failed: %s (%s) at %s:%d\n", message, condition,
                 file, line);
    std::fflush(stderr);
    std::abort();
}

}  // namespace quod::internal
