// The one way the framework stops on a programming error.
//
// A failed precondition is a bug in the caller (a range outside the text, a negative count, an
// overflowing count), never a user or file error: those fail quietly where they happen. The macro
// prints the condition, the message and the place, then aborts, so a death test can see it and a
// debugger stops right there. It stays on in release builds: continuing would corrupt documents.
#pragma once

#include "quoddle/Export.h"

namespace quod::internal {

[[noreturn]] QUODDLE_EXPORT void preconditionFailure(const char* condition, const char* message,
                                                     const char* file, int line);

}  // namespace quod::internal

#define QUOD_PRECONDITION(condition, message)                                                 \
    do {                                                                                      \
        if (!(condition)) [[unlikely]] {                                                      \
            ::quod::internal::preconditionFailure(#condition, (message), __FILE__, __LINE__); \
        }                                                                                     \
    } while (false)
