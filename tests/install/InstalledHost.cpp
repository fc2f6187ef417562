// What a host compiled in a GNU mode against the installed headers and libraries relies on:
// every header compiles there and leaves the predefined `unix` macro as it found it, the headers
// and the library agree on the version, and the library finds its translations in the prefix it
// was installed to. Prints one line per failed check and exits 1 if there was one.
#include <QApplication>
#include <clocale>
#include <cstdlib>
#include <iostream>

#include "AllHeaders.h"
#include "HostCalls.h"

#if !defined(unix) || unix != 1
#error "the headers changed the predefined unix macro"
#endif

// What a GNU-mode host must do before it names the enumerator itself.
#undef unix

namespace {

int failures = 0;

void expect(bool condition, const char* what) {
    if (!condition) {
        std::cerr << "installed-host: " << what << '\n';
        ++failures;
    }
}

}  // namespace

int main(int argc, char** argv) {
    // Before the German catalogue below: the calls read some phrases, which are kept once read.
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    {
        QApplication application(argc, argv);
        failures += hostCallFailures();
    }

    static_assert(quod::allLineEndings[0] == quod::LineEnding::unix);
    expect(quod::Text::convert(u"a\r\nb", quod::LineEnding::unix) == u"a\nb",
           "convert to LineEnding::unix");

    expect(quod::version() == QUODDLE_VERSION_STRING,
           "the library's version is the headers' QUODDLE_VERSION_STRING");

    // gettext honours LANGUAGE once a locale other than C is active.
    setenv("LANGUAGE", "de", 1);
    std::setlocale(LC_ALL, "C.UTF-8");
    expect(quod::Localize::cancel() == "Abbrechen",
           "the German catalogue is found beside the installed library");

    // The Qt layer links and converts (no QApplication needed for colours).
    expect(quod::toQColor(quod::Color::withRed(1, 0, 0, 1)) == QColor(255, 0, 0), "toQColor");
    return failures == 0 ? 0 : 1;
}
