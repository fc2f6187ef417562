// The system calls through which the framework changes users' files, as one replaceable table.
//
// Internal: hosts never need it. FileReplacement (and so every store the framework writes) makes
// each of these calls through `systemCalls()`, so that tests can make any one of them fail, or
// stop the process just before it, and then check that nothing was lost or left behind. Calls
// that only look (stat, readdir, flock) go to the system directly.
//
// The table is read without a lock: replace entries only while no other thread writes files.
#pragma once

#include <sys/types.h>

namespace quod::internal {

struct SystemCalls {
    int (*open)(const char* path, int flags, mode_t mode);
    ssize_t (*read)(int descriptor, void* buffer, size_t count);
    ssize_t (*write)(int descriptor, const void* buffer, size_t count);
    ssize_t (*pwrite)(int descriptor, const void* buffer, size_t count, off_t offset);
    int (*ftruncate)(int descriptor, off_t length);
    int (*fsync)(int descriptor);
    int (*fchmod)(int descriptor, mode_t mode);
    int (*fchown)(int descriptor, uid_t owner, gid_t group);
    int (*fsetxattr)(int descriptor, const char* name, const void* value, size_t size, int flags);
    int (*linkat)(int fromFolder, const char* from, int toFolder, const char* to, int flags);
    int (*rename)(const char* from, const char* to);
    int (*unlink)(const char* path);
    int (*close)(int descriptor);
};

// The table in use; starts out as the real system calls.
[[nodiscard]] SystemCalls& systemCalls();
// The real system calls, for a test to fall through to.
[[nodiscard]] const SystemCalls& realSystemCalls();

}  // namespace quod::internal
