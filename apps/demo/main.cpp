// quoddle-demo: the demo editor.
//
//   quoddle-demo [DOCUMENT]
//   quoddle-demo --screenshot OUT.png [--theme N] [DOCUMENT]
//
// --theme N applies built-in theme N (0 Stockholm, 1 Copenhagen, 2 Oslo, 3 Helsinki) before the
// window opens; until a theme is chosen, Stockholm is in effect (Oslo on a dark desktop) without
// being stored. --screenshot renders the window into OUT.png and exits, without a display: it
// picks the offscreen platform unless QT_QPA_PLATFORM names one, and it uses preferences that live
// only in memory, so a check run neither reads nor changes the user's settings.
//
// Otherwise the windows of the last session come back when "Resume" is on (set in the General
// preferences), as the File menu's Quit left them.
#include <QApplication>
#include <QCommandLineParser>
#include <QStatusBar>
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "demo/DemoStoryboard.h"
#include "demo/DocumentWindowController.h"
#include "demo/MainWindow.h"
#include "demo/Screenshot.h"
#include "demo/ThemeMenu.h"
#include "demo/ThemePalette.h"
#include "quoddle/base/FileReplacement.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/qt/MainLoopBridge.h"
#include "quoddle/qt/QtPlatform.h"

namespace {

bool wantsScreenshot(int argc, char** argv) {
    for (int index = 1; index < argc; ++index) {
        if (std::strcmp(argv[index], "--screenshot") == 0 ||
            std::strncmp(argv[index], "--screenshot=", 13) == 0) {
            return true;
        }
    }
    return false;
}

int fail(const QString& message, int status) {
    std::fprintf(stderr, "quoddle-demo: %s\n", qPrintable(message));
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    const bool screenshot = wantsScreenshot(argc, argv);
    if (screenshot && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    // The demo has no signal handlers of its own: let a kill during a save leave nothing behind.
    quod::FileReplacement::installSignalCleanup();
    QApplication::setApplicationName("quoddle-demo");
    QApplication::setApplicationDisplayName("Quoddle Demo");
    quod::MainLoopBridge bridge;
    // Qt's fonts and colours for the core before anything (a theme, say) makes a Font.
    quod::QtPlatform::install();

    QCommandLineParser parser;
    parser.setApplicationDescription("The Quoddle demo editor.");
    parser.addHelpOption();
    parser.addOption({"screenshot", "Render the window into FILE (PNG) and exit.", "FILE"});
    parser.addOption({"theme", "Apply built-in theme N (0 to 3) first.", "N"});
    parser.addPositionalArgument("DOCUMENT", "The file to open.", "[DOCUMENT]");
    parser.process(application);
    const QStringList documents = parser.positionalArguments();
    if (documents.size() > 1) return fail("one document at a time", 2);

    if (screenshot) quod::UserDefaults::setStandard(quod::UserDefaults::inMemory());
    // The desktop's colours, before a theme changes the application's.
    (void)quod::demo::ThemePalette::desktopPalette();
    quod::demo::ThemeMenu::registerDefaultTheme();
    if (parser.isSet("theme")) {
        bool isNumber = false;
        const auto city =
            quod::Theme::cityFromRawValue(parser.value("theme").toLongLong(&isNumber));
        if (!isNumber || !city) return fail("--theme wants a number from 0 to 3", 2);
        quod::demo::ThemeMenu::applyTheme(*city);
    }

    if (screenshot) {
        quod::demo::MainWindow window;
        QString error;
        if (!documents.isEmpty() && !window.openDocument(documents.front(), &error)) {
            return fail(error, 1);
        }
        const QString path = parser.value("screenshot");
        if (!quod::demo::saveScreenshot(window, path)) return fail(path + ": not written", 1);
        return 0;
    }

    quod::demo::DemoStoryboard::install();
    quod::WindowRestoration::saveWindowsAtQuit();
    // With "Resume" on, the windows of the last session come back first; a document named on the
    // command line, or no window at all, gets a window of its own.
    quod::WindowRestoration::restoreWindows();
    const auto windows = quod::WindowController::retained();
    const bool editorRestored = std::any_of(windows.begin(), windows.end(), [](auto* controller) {
        return dynamic_cast<quod::demo::DocumentWindowController*>(controller) != nullptr;
    });
    if (!documents.isEmpty() || !editorRestored) {
        auto* controller = quod::demo::DocumentWindowController::open();
        QString error;
        if (!documents.isEmpty() &&
            !controller->mainWindow().openDocument(documents.front(), &error)) {
            controller->mainWindow().statusBar()->showMessage(error);
        }
    }
    return QApplication::exec();
}
