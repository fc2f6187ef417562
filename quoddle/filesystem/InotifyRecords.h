// Reading the records an inotify descriptor has queued, for the two monitors' readers.
//
// `readInotifyRecords` reads the non-blocking descriptor up to `maximumReads` times (a bound, so
// a flood of events cannot keep one turn of the caller's loop busy forever) and calls `record`
// for each record in order, with its header and its name (without the padding NULs; empty when
// the event names no entry). It stops early when nothing more is queued, and retries a read that
// a signal interrupted. Records are copied out of the read buffer, so the buffer needs no
// particular alignment and a malformed length cannot be read past.
#pragma once

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace quod::internal {

template <typename RecordHandler>
void readInotifyRecords(int descriptor, int maximumReads, RecordHandler&& record) {
    char buffer[64 * 1024];
    for (int reads = 0; reads < maximumReads; ++reads) {
        const ssize_t length = ::read(descriptor, buffer, sizeof buffer);
        if (length < 0 && errno == EINTR) continue;
        if (length <= 0) return;
        for (ssize_t offset = 0; offset + static_cast<ssize_t>(sizeof(inotify_event)) <= length;) {
            inotify_event header;
            std::memcpy(&header, buffer + offset, sizeof header);
            const char* name = buffer + offset + sizeof header;
            const auto available = static_cast<size_t>(length - offset) - sizeof header;
            const size_t nameLength = ::strnlen(name, std::min<size_t>(header.len, available));
            record(header, std::string_view(name, nameLength));
            offset += static_cast<ssize_t>(sizeof header + header.len);
        }
    }
}

}  // namespace quod::internal
