// The demo editor's flows through its own window, menus and documents: files in and out in their
// encoding, menu items as single undo steps, themes on screen, the status line, the folder
// sidebar, and the --screenshot mode of the built program.
#include <QAction>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>

#include "demo/MainWindow.h"
#include "demo/ThemeMenu.h"
#include "demo/ThemePalette.h"
#include "quoddle/Version.h"
#include "quoddle/base/Utf.h"
#include "quoddle/gutter/LineNumberAttributes.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/qt/MainLoopBridge.h"
#include "quoddle/qt/StringConversion.h"
#include "quoddle/runtime/Localize.h"
#include "tests/support/AlertAnswers.h"

using quod::Defaults::Key;
using quod::demo::MainWindow;
using quod::demo::ThemeMenu;

namespace {

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QString textOf(MainWindow& window) {
    return quod::toQString(window.document().textView()->string());
}

// Latin-1 bytes, CR LF line endings, and enough of them for the detector to be sure.
const QByteArray latin1WithCrLf =
    "Gr\xFC\xDF"
    "e aus K\xF6ln, sch\xF6ne Stra\xDF"
    "e am Rhein.\r\n"
    "\xC7"
    "a va tr\xE8s bien, merci \xE0 vous, ch\xE8re amie.\r\n"
    "Les \xE9l\xE8ves \xE9tudient \xE0 l'\xE9"
    "cole pr\xE8s de la for\xEAt.\r\n";

// The colour the window's editor paints where there is no text.
QColor editorBackgroundPixel(MainWindow& window) {
    QWidget* viewport = window.editorArea().textView().viewport();
    const QImage image = viewport->grab().toImage();
    return image.pixelColor(image.width() - 3, image.height() - 3);
}

bool closeTo(const QColor& actual, const QColor& expected) {
    return std::abs(actual.red() - expected.red()) <= 1 &&
           std::abs(actual.green() - expected.green()) <= 1 &&
           std::abs(actual.blue() - expected.blue()) <= 1;
}

// The share of an image's pixels that have a colour.
double shareOf(const QImage& image, const QColor& color) {
    int64_t matching = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            matching += closeTo(image.pixelColor(x, y), color);
    }
    return static_cast<double>(matching) / (static_cast<double>(image.width()) * image.height());
}

// The share of an image's pixels that are dark (lightness below one half).
double darkShareOf(const QImage& image) {
    int64_t dark = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            dark += image.pixelColor(x, y).lightnessF() < 0.5;
    }
    return static_cast<double>(dark) / (static_cast<double>(image.width()) * image.height());
}

}  // namespace

class DemoAppTests : public QObject {
    Q_OBJECT

    quod::MainLoopBridge bridge_;
    QTemporaryDir folder_;

    QString file(const QString& name, const QByteArray& bytes) {
        const QString path = folder_.filePath(name);
        writeAll(path, bytes);
        return path;
    }

  private Q_SLOTS:
    void init() { quod::UserDefaults::setStandard(quod::UserDefaults::inMemory()); }

    void aLatin1FileWithCrLfSavesBackByteForByte() {
        const QString path = file("latin1.txt", latin1WithCrLf);
        MainWindow window;
        QString error;
        QVERIFY2(window.openDocument(path, &error), qPrintable(error));
        QVERIFY(textOf(window).startsWith(QString::fromUtf8("Grüße aus Köln")));
        QVERIFY(textOf(window).contains("\r\n"));
        QVERIFY(window.document().encoding() != quod::Encodings::utf8);
        QVERIFY(window.statusLine().encodingText().contains("Latin"));

        QVERIFY2(window.saveDocument(&error), qPrintable(error));
        QCOMPARE(readAll(path), latin1WithCrLf);

        // Converting to the line ending the file already has changes nothing either.
        quod::Defaults::convertLineEndings.set(true);
        quod::Defaults::lineEndings.set(1);
        QVERIFY2(window.saveDocument(&error), qPrintable(error));
        QCOMPARE(readAll(path), latin1WithCrLf);

        // To LF: the file changes, the text on screen does not.
        quod::Defaults::lineEndings.set(0);
        QVERIFY2(window.saveDocument(&error), qPrintable(error));
        QCOMPARE(readAll(path), QByteArray(latin1WithCrLf).replace("\r\n", "\n"));
        QVERIFY(textOf(window).contains("\r\n"));
    }

    void aTextTheEncodingCannotHoldLeavesTheFileAlone() {
        const QString path = file("latin1-greek.txt", latin1WithCrLf);
        MainWindow window;
        QVERIFY(window.openDocument(path));
        quod::QuodTextView& view = *window.document().textView();
        view.replaceWithUndo(u"Καλημέρα ", {0, 0}, false);
        QString error;
        QVERIFY(!window.saveDocument(&error));
        QVERIFY(error.contains("cannot hold"));
        QCOMPARE(readAll(path), latin1WithCrLf);
        QVERIFY(window.isWindowModified());
    }

    void aFileThatCannotBeOpenedKeepsTheCurrentDocument() {
        MainWindow window;
        QVERIFY(window.openDocument(file("kept.txt", "kept")));
        QString error;
        QVERIFY(!window.openDocument(folder_.filePath("missing.txt"), &error));
        QVERIFY(error.contains("missing.txt"));
        // A UTF-8 mark followed by bytes that are not UTF-8: no encoding decodes them whole.
        QVERIFY(!window.openDocument(file("broken.txt",
                                          "\xEF\xBB\xBF"
                                          "ab\xFF\xFE"),
                                     &error));
        QCOMPARE(textOf(window), QString("kept"));
    }

    void menuItemsAreOneUndoStepEach_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::newRow("sort") << "sort"
                              << "a.txt"
                              << "pear\napple\ncherry"
                              << "apple\ncherry\npear";
        QTest::newRow("unique") << "unique"
                                << "a.txt"
                                << "b\na\nb"
                                << "b\na";
        QTest::newRow("shift right") << "shiftRight"
                                     << "a.txt"
                                     << "a\nb"
                                     << "\ta\n\tb";
        QTest::newRow("comment") << "commentOrUncomment"
                                 << "a.c"
                                 << "a\nb"
                                 << "//a\n//b";
        QTest::newRow("script comment") << "commentOrUncomment"
                                        << "run.sh"
                                        << "a"
                                        << "#a";
        QTest::newRow("uppercase")
            << "uppercase"
            << "a.txt" << QString::fromUtf8("straße") << QString::fromUtf8("STRASSE");
        QTest::newRow("transform") << "transform.stripDiacritics"
                                   << "a.txt" << QString::fromUtf8("Köln") << "Koln";
        QTest::newRow("xml") << "prepareForXML"
                             << "a.txt"
                             << "<a & b>"
                             << "&lt;a &amp; b&gt;";
        QTest::newRow("line endings") << "convertToWindows"
                                      << "a.txt"
                                      << "a\nb\rc"
                                      << "a\r\nb\r\nc";
    }

    void menuItemsAreOneUndoStepEach() {
        QFETCH(QString, action);
        QFETCH(QString, file);
        QFETCH(QString, before);
        QFETCH(QString, after);
        MainWindow window;
        QVERIFY(window.openDocument(this->file(file, before.toUtf8())));
        quod::QuodTextView& view = *window.document().textView();
        view.selectAll();
        const quod::Range selection = view.selectedRange();

        auto* item = window.findChild<QAction*>(action);
        QVERIFY2(item != nullptr, qPrintable(action));
        item->trigger();
        QCOMPARE(textOf(window), after);
        QVERIFY(window.isWindowModified());

        window.findChild<QAction*>("undo")->trigger();
        QCOMPARE(textOf(window), before);
        QCOMPARE(view.selectedRange(), selection);
        QVERIFY(!view.undoManager().canUndo());
    }

    void snippetsComeFromThePreferencesWhenTheMenuOpens() {
        MainWindow window;
        QVERIFY(window.openDocument(file("snippet.txt", "word")));
        quod::Defaults::snippets.set({quod::Snippet("Bold", "<b>%%s</b>", false)});
        auto* menu = window.findChild<QMenu*>("snippetsMenu");
        QVERIFY(menu != nullptr);
        Q_EMIT menu->aboutToShow();
        QCOMPARE(menu->actions().size(), 1);
        QCOMPARE(menu->actions().front()->text(), QString("Bold"));
        window.document().textView()->selectAll();
        menu->actions().front()->trigger();
        QCOMPARE(textOf(window), QString("<b>word</b>"));
    }

    void helpAboutNamesTheFrameworkVersion() {
        MainWindow window;
        auto* menu = window.findChild<QMenu*>("helpMenu");
        QVERIFY(menu != nullptr);
        QString shown;
        quod::testing::AlertAnswers::whenAlertShows([&shown](QMessageBox& box) {
            shown = box.text();
            box.accept();
        });
        menu->actions().front()->trigger();
        QVERIFY2(shown.contains(QString("Quoddle ") + QUODDLE_VERSION_STRING), qPrintable(shown));
    }

    void aThemeRepaintsTheEditorInItsBackgroundColour() {
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        ThemeMenu::applyTheme(quod::Theme::City::stockholm);
        QTRY_VERIFY(closeTo(editorBackgroundPixel(window), Qt::white));

        window.findChild<QAction*>("theme.2")->trigger();
        const QColor oslo = QColor::fromRgbF(0.121f, 0.121f, 0.141f);
        QTRY_VERIFY2(closeTo(editorBackgroundPixel(window), oslo),
                     qPrintable(editorBackgroundPixel(window).name()));
        QVERIFY(window.findChild<QAction*>("theme.2")->isChecked());
        QVERIFY(!window.findChild<QAction*>("theme.0")->isChecked());
        QCOMPARE(quod::Defaults::currentTheme.get(), int64_t{2});
        QVERIFY(quod::Defaults::hasManuallyChangedTheme.get());
        const quod::Color stored = quod::Color::forKey(Key::Color::text);
        QCOMPARE(stored.redComponent(), 1.0);
    }

    void theGutterNumbersTheDocumentOnShow() {
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(window.openDocument(file("short.txt", "one line")));
        quod::GutterWidget& gutter = window.editorArea().gutter();
        const auto storageOnShow = [&] {
            return gutter.lineNumberView().textStorage().get() ==
                   &window.document().textView()->textStorage();
        };
        QTRY_VERIFY(storageOnShow());
        QTRY_VERIFY(gutter.width() > 0);
        const int narrow = gutter.width();

        // Four-digit line numbers need more room than one-digit ones.
        QVERIFY(window.openDocument(file("long.txt", QByteArray("line\n").repeated(1200))));
        QTRY_VERIFY(storageOnShow());
        QTRY_VERIFY(gutter.width() > narrow);
    }

    void theGutterDrawsInTheDefaultThemeFromTheFirstWindow() {
        // What the demo does at start-up: a theme is in effect before the user chooses one.
        ThemeMenu::registerDefaultTheme();
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(window.openDocument(file("numbered.txt", QByteArray("line\n").repeated(40))));
        quod::GutterWidget& gutter = window.editorArea().gutter();
        QTRY_VERIFY(gutter.lineNumberView().textStorage().get() ==
                    &window.document().textView()->textStorage());
        QTRY_VERIFY(gutter.width() > 0);
        // The theme's small line-number font, not the framework's 11-point fallback.
        QCOMPARE(quod::LineNumberAttributes::shared().fontSize, 9.0);
        const QImage firstLaunch = gutter.grab().toImage();
        // Nothing of it went into the user's settings.
        QVERIFY(quod::UserDefaults::standard()->persistentDomain().empty());

        // Choosing that same theme changes nothing on screen.
        ThemeMenu::applyTheme(ThemeMenu::defaultTheme());
        QCOMPARE(gutter.grab().toImage(), firstLaunch);
    }

    void theWholeWindowFollowsATheme() {
        const bool desktopIsDark = quod::demo::ThemePalette::desktopIsDark();
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto* menu = window.findChild<QMenu*>("helpMenu");
        menu->popup(window.mapToGlobal(QPoint(40, 40)));
        QVERIFY(QTest::qWaitForWindowExposed(menu));
        const QList<QWidget*> frame{window.sidebar().viewport(),
                                    window.findChild<QDockWidget*>("outputDock"), window.menuBar(),
                                    window.statusBar(), menu};
        // The parts whose colours are not as dark (or as light) as `dark` says.
        const auto otherwise = [&frame](bool dark) {
            QStringList parts;
            for (QWidget* widget : frame) {
                const double share = darkShareOf(widget->grab().toImage());
                if (dark ? share < 0.8 : share > 0.2) parts << widget->metaObject()->className();
            }
            return parts;
        };

        // A theme unlike the desktop takes the whole window with it (windows hear of a new
        // application palette through the event loop)...
        ThemeMenu::applyTheme(desktopIsDark ? quod::Theme::City::stockholm
                                            : quod::Theme::City::oslo);
        QTRY_COMPARE(otherwise(!desktopIsDark), QStringList());
        // The result pane shows text as the editor does; the status line is in small print.
        const quod::TextViewWidget& text = window.editorArea().textView();
        QCOMPARE(window.outputPane().palette().color(QPalette::Base), text.backgroundColor());
        QCOMPARE(window.outputPane().palette().color(QPalette::Text), text.textColor());
        QCOMPARE(window.statusBar()->font().pointSizeF(), 11.0);
        // ...and one like it gives the window back to the desktop's colours.
        ThemeMenu::applyTheme(desktopIsDark ? quod::Theme::City::oslo
                                            : quod::Theme::City::stockholm);
        QTRY_COMPARE(otherwise(desktopIsDark), QStringList());
        QCOMPARE(QApplication::palette(), quod::demo::ThemePalette::desktopPalette());
        menu->hide();
    }

    void theStatusLineCountsTheSelection() {
        MainWindow window;
        QVERIFY(window.openDocument(file("status.txt",
                                         "one two\nGr\xC3\xBC\xC3\x9F"
                                         "e \xF0\x9F\x91\x8B\xF0\x9F\x8F\xBD")));
        quod::QuodTextView& view = *window.document().textView();
        view.setSelectedRange(
            {8, view.length() - 8});  // "Grüße 👋🏽": one cluster for the wave
        const QString status = window.statusLine().selectionText();
        QVERIFY2(status.contains("Line 2"), qPrintable(status));
        QVERIFY2(status.contains("Position 8"), qPrintable(status));
        QVERIFY2(status.contains("7 characters"), qPrintable(status));
        QVERIFY2(status.contains("1 words"), qPrintable(status));

        // A large selection shows a placeholder, then its counts once counted between events.
        const int64_t largeLength = quod::demo::StatusLine::countNowLimit + 10;
        QByteArray large(largeLength, 'x');
        large[10] = ' ';
        QVERIFY(window.openDocument(file("large.txt", large)));
        quod::QuodTextView& largeView = *window.document().textView();
        largeView.selectAll();
        QVERIFY(window.statusLine().isCounting());
        QVERIFY2(window.statusLine().selectionText().contains(QString::fromUtf8("… characters")),
                 qPrintable(window.statusLine().selectionText()));
        const QString allCounted = QString::fromStdString(quod::Localize::intString(largeLength)) +
                                   " characters   2 words";
        QTRY_VERIFY2(window.statusLine().selectionText().contains(allCounted),
                     qPrintable(window.statusLine().selectionText()));

        // A count overtaken by a new selection never shows.
        largeView.setSelectedRange({1, largeLength - 1});
        QVERIFY(window.statusLine().isCounting());
        largeView.setSelectedRange({0, 3});
        QVERIFY(!window.statusLine().isCounting());
        QTest::qWait(50);
        QVERIFY2(window.statusLine().selectionText().contains("3 characters   1 words"),
                 qPrintable(window.statusLine().selectionText()));
        largeView.setSelectedRange({5, largeLength - 5});
        const QString restCounted =
            QString::fromStdString(quod::Localize::intString(largeLength - 5)) +
            " characters   2 words";
        QTRY_VERIFY2(window.statusLine().selectionText().contains(restCounted),
                     qPrintable(window.statusLine().selectionText()));
    }

    void theSidebarShowsTheLastFolderChosenAndFollowsChanges() {
        QTemporaryDir first;
        QTemporaryDir second;
        writeAll(first.filePath("first.txt"), "1");
        QDir(second.path()).mkdir("sub");
        writeAll(second.filePath("sub/inner.txt"), "inner");
        writeAll(second.filePath("second.txt"), "2");

        MainWindow window;
        quod::demo::FolderSidebar& sidebar = window.sidebar();
        window.chooseFolder(first.path());
        window.chooseFolder(second.path());
        QTRY_VERIFY(!sidebar.isBuilding());
        QCOMPARE(sidebar.topLevelItemCount(), 2);
        QCOMPARE(sidebar.topLevelItem(0)->text(0), QString("second.txt"));
        QCOMPARE(sidebar.topLevelItem(1)->text(0), QString("sub"));

        // A folder keeps its expansion when a change rebuilds the tree.
        sidebar.topLevelItem(1)->setExpanded(true);
        QCOMPARE(sidebar.topLevelItem(1)->child(0)->text(0), QString("inner.txt"));
        writeAll(second.filePath("new.txt"), "new");
        QTRY_COMPARE_WITH_TIMEOUT(sidebar.topLevelItemCount(), 3, 10'000);
        QTRY_VERIFY(!sidebar.isBuilding());
        QTreeWidgetItem* sub = sidebar.topLevelItem(2);
        QVERIFY(sub->isExpanded());
        QCOMPARE(sub->childCount(), 1);

        Q_EMIT sidebar.itemActivated(sub->child(0), 0);
        QCOMPARE(textOf(window), QString("inner"));
    }

    void commandsRunInTheBackgroundAndReportWhereTheySay() {
        MainWindow window;
        QVERIFY(window.openDocument(file("commands.txt", "keep [replace] keep")));
        quod::demo::CommandRunner& runner = window.commandRunner();
        QSignalSpy finished(&runner, &quod::demo::CommandRunner::finished);

        // Quotes group an argument; the output goes to the pane.
        runner.run(quod::Command("", "printf \"%s|%s\" \"a b\" c", false, false, false));
        QVERIFY(finished.wait(20'000));
        QCOMPARE(finished.takeFirst().at(1).toString(), QString("a b|c"));
        QVERIFY(window.outputPane().toPlainText().contains("a b|c"));

        // Inline: in place of the selection, one undo step.
        quod::QuodTextView& view = *window.document().textView();
        view.setSelectedRange({5, 9});
        runner.run(quod::Command("", "printf done", true, false, false));
        QVERIFY(finished.wait(20'000));
        finished.clear();
        QCOMPARE(textOf(window), QString("keep done keep"));
        view.undo();
        QCOMPARE(textOf(window), QString("keep [replace] keep"));

        // Suppressed: nothing shows. A program that does not exist only says so.
        const QString pane = window.outputPane().toPlainText();
        runner.run(quod::Command("", "printf hidden", false, true, false));
        QVERIFY(finished.wait(20'000));
        QCOMPARE(window.outputPane().toPlainText(), pane);
        runner.run(quod::Command("", "no-such-program-for-the-demo", false, false, false));
        QVERIFY(finished.wait(20'000));
        QVERIFY(window.outputPane().toPlainText().contains("no-such-program-for-the-demo"));
    }

    void theCommandsMenuListsTheCommandsPreference() {
        quod::Defaults::commands.set({quod::Command("Zulu", "printf z", false, false, false),
                                      quod::Command("alpha", "printf a", false, false, false)});
        MainWindow window;
        auto* menu = window.findChild<QMenu*>("commandsMenu");
        QVERIFY(menu != nullptr);
        Q_EMIT menu->aboutToShow();
        const QList<QAction*> actions = menu->actions();
        QCOMPARE(actions.size(), 4);
        QCOMPARE(actions[0]->text(), QString("alpha"));
        QCOMPARE(actions[1]->text(), QString("Zulu"));
        QVERIFY(actions[2]->isSeparator());
        QCOMPARE(actions[3]->objectName(), QString("runCommand"));
        QSignalSpy finished(&window.commandRunner(), &quod::demo::CommandRunner::finished);
        actions[1]->trigger();
        QVERIFY(finished.wait(20'000));
        QCOMPARE(finished.takeFirst().at(1).toString(), QString("z"));
    }

    void screenshotsInTheLightAndTheDarkTheme_data() {
        QTest::addColumn<int>("theme");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QColor>("background");
        QTest::newRow("light") << 0 << "demo-light.png" << QColor(Qt::white);
        QTest::newRow("dark") << 2 << "demo-dark.png" << QColor::fromRgbF(0.121f, 0.121f, 0.141f);
    }

    void screenshotsInTheLightAndTheDarkTheme() {
        QFETCH(int, theme);
        QFETCH(QString, name);
        QFETCH(QColor, background);
        QVERIFY(QDir().mkpath(QUODDLE_SCREENSHOT_FOLDER));
        const QString path = QDir(QUODDLE_SCREENSHOT_FOLDER).filePath(name);
        QFile::remove(path);
        QProcess demo;
        demo.start(QUODDLE_DEMO_BINARY,
                   {"--screenshot", path, "--theme", QString::number(theme), QUODDLE_DEMO_SAMPLE});
        QVERIFY(demo.waitForFinished(60'000));
        QCOMPARE(demo.exitCode(), 0);
        QImage image(path);
        QVERIFY2(!image.isNull(), qPrintable(path));
        QVERIFY(image.width() >= 800 && image.height() >= 500);
        // The editor fills much of the window with the theme's background.
        QVERIFY2(shareOf(image, background) > 0.2, qPrintable(name));
    }

    void aBadThemeNumberIsRefused() {
        QProcess demo;
        demo.start(QUODDLE_DEMO_BINARY, {"--screenshot", folder_.filePath("bad.png"), "--theme",
                                         "4", QUODDLE_DEMO_SAMPLE});
        QVERIFY(demo.waitForFinished(60'000));
        QCOMPARE(demo.exitCode(), 2);
        QVERIFY(!QFile::exists(folder_.filePath("bad.png")));
    }
};

QTEST_MAIN(DemoAppTests)
#include "DemoAppTests.moc"
