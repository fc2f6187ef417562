#include "quoddle/base/internal/SystemCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdio>

namespace quod::internal {

const SystemCalls& realSystemCalls() {
    static const SystemCalls calls{
        // open(2) is variadic, so it cannot be taken by address as it is.
        [](const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); },
        ::read,
        ::write,
        ::pwrite,
        ::ftruncate,
        ::fsync,
        ::fchmod,
        ::fchown,
        ::fsetxattr,
        ::linkat,
        ::rename,
        ::unlink,
        ::close,
    };
    return calls;
}

SystemCalls& systemCalls() {
    static SystemCalls calls = realSystemCalls();
    return calls;
}

}  // namespace quod::internal
