// Included once by each test program that runs GLib's threads under ThreadSanitizer.
//
// GLib is not built with ThreadSanitizer, and its locks are bare futex calls that the sanitizer
// cannot see, so the hand-offs between GIO's worker threads and ours look like races.
#pragma once

#if defined(__SANITIZE_THREAD__)
extern "C" const char* __tsan_default_suppressions() {
    return "race:libglib-2.0.so\nrace:libgio-2.0.so\nrace:libgobject-2.0.so\n";
}
#endif
