// Small steps that the file writer's paths share: reporting a failure, writing and copying whole
// byte ranges, flushing a folder. Every change goes through systemCalls(), so that tests can make
// any step fail.
//
// Internal to FileReplacement. Each returns false with the reason in `error` (when given).
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <span>
#include <string>
#include <system_error>

namespace quod::internal {

// Stores `reason` in `error` when there is one; always false, so that `return fail(...)` reads.
bool fail(std::error_code* error, std::error_code reason);
// The same with errno as the reason.
bool failWithErrno(std::error_code* error);

// Writes all of `bytes` at `offset`, or at the descriptor's position when `offset` is negative.
[[nodiscard]] bool writeAll(int descriptor, std::span<const std::uint8_t> bytes, off_t offset,
                            std::error_code* error);
// Copies everything from `from` (read from `fromOffset` to its end) to `to` at `toOffset`;
// the number of bytes copied in `copied`.
[[nodiscard]] bool copyToEnd(int from, off_t fromOffset, int to, off_t toOffset,
                             std::uint64_t* copied, std::error_code* error);
// Flushes a folder, so that a rename or a new name in it survives a power cut.
[[nodiscard]] bool syncFolder(const std::string& folder, std::error_code* error);
// Closes a descriptor through systemCalls(), reporting what close says: some file systems report
// a failed write only there.
[[nodiscard]] bool closeReporting(int descriptor, std::error_code* error);

}  // namespace quod::internal
