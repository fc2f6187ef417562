// The demo's preferences: each pane writes the standard store and tells the editor at once, the
// destructive actions ask first (and stop asking once told so), and the preferences window drives
// a visible change in the editor.
#include <QDir>
#include <QSignalSpy>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTest>

#include "demo/CommandsPane.h"
#include "demo/DemoStoryboard.h"
#include "demo/DocumentWindowController.h"
#include "demo/GeneralPane.h"
#include "demo/MainWindow.h"
#include "demo/ThemeMenu.h"
#include "demo/ThemesPane.h"
#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/qt/ColumnHeaders.h"
#include "quoddle/qt/MainLoopBridge.h"
#include "quoddle/qt/PreferencesWindowController.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/qt/WindowRestoration.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/NotificationCenter.h"
#include "quoddle/strings/StringEncoding.h"
#include "tests/support/AlertAnswers.h"

using quod::Notification;
using quod::NotificationName;
using quod::Notifications;
using quod::UserDefaults;
using quod::demo::CommandColumn;
using quod::demo::CommandColumns;
using quod::demo::CommandsPane;
using quod::demo::GeneralPane;
using namespace quod::testing::AlertAnswers;
using quod::demo::MainWindow;
using quod::demo::ThemeMenu;
using quod::demo::ThemesPane;
namespace Defaults = quod::Defaults;

namespace {

// Counts the posts of one notification while it lives.
class PostCounter {
  public:
    explicit PostCounter(const NotificationName& name)
        : connection_(Notifications().addObserver(name.rawValue(), nullptr,
                                                  [this](const Notification&) { ++count_; })) {}
    [[nodiscard]] int count() const { return count_; }

  private:
    int count_ = 0;
    quod::Connection connection_;
};

QColor editorBackgroundPixel(MainWindow& window) {
    QWidget* viewport = window.editorArea().textView().viewport();
    const QImage image = viewport->grab().toImage();
    return image.pixelColor(image.width() - 3, image.height() - 3);
}

QColor themeBackground() {
    const quod::Color color = *quod::Color::forKey(Defaults::Key::Color::background)
                                   .usingColorSpace(quod::ColorSpace::sRGB);
    return QColor::fromRgbF(static_cast<float>(color.redComponent()),
                            static_cast<float>(color.greenComponent()),
                            static_cast<float>(color.blueComponent()));
}

quod::PreferencesWindowController* showPreferences() {
    quod::WindowController::show(quod::Singleton::WindowController::preferences);
    auto* controller = qobject_cast<quod::PreferencesWindowController*>(
        quod::WindowController::controller(quod::Singleton::WindowController::preferences));
    if (controller != nullptr) (void)QTest::qWaitForWindowExposed(controller->window());
    return controller;
}

// What a quit does to the windows: all of them go, with their controllers.
void closeEveryWindow() {
    for (auto* controller : quod::WindowController::retained()) {
        if (controller->window() != nullptr) controller->window()->close();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

template <typename Pane>
Pane* paneOf(quod::PreferencesWindowController& controller) {
    for (const auto& item : controller.tabViewController()->tabViewItems()) {
        if (auto* pane = qobject_cast<Pane*>(item.viewController)) return pane;
    }
    return nullptr;
}

bool closeTo(const QColor& actual, const QColor& expected) {
    return std::abs(actual.red() - expected.red()) <= 1 &&
           std::abs(actual.green() - expected.green()) <= 1 &&
           std::abs(actual.blue() - expected.blue()) <= 1;
}

}  // namespace

class DemoPreferencesTests : public QObject {
    Q_OBJECT

    quod::MainLoopBridge bridge_;

  private Q_SLOTS:
    void init() {
        UserDefaults::setStandard(UserDefaults::inMemory());
        quod::demo::DemoStoryboard::install();
    }
    void cleanup() { closeEveryWindow(); }

    void theGeneralPaneStoresEachChangeAndTheEditorFollowsTheTabWidth() {
        MainWindow window;
        GeneralPane pane;
        // Showing the stored values writes nothing back.
        QVERIFY(!UserDefaults::standard()->objectForKey("TabWidth").has_value());
        QVERIFY(!UserDefaults::standard()->objectForKey("LineEndings").has_value());

        PostCounter tabWidthChanged(NotificationName::tabWidthChanged());
        pane.tabWidth().setValue(8);
        QCOMPARE(Defaults::tabWidth.get(), 8);
        QCOMPARE(tabWidthChanged.count(), 1);
        QCOMPARE(window.editorArea().textView().tabWidth(), 8);

        pane.indentWithSpaces().click();
        QVERIFY(Defaults::indentWithSpaces.get());
        QCOMPARE(tabWidthChanged.count(), 2);

        PostCounter statusChanged(NotificationName::updateStatusBar());
        const int crlf = pane.lineEndings().findText("CR LF");
        pane.lineEndings().setCurrentIndex(crlf);
        Q_EMIT pane.lineEndings().activated(crlf);
        QCOMPARE(Defaults::lineEndings.get(), 1);
        QCOMPARE(statusChanged.count(), 1);

        PostCounter resumeChanged(NotificationName::resumeChanged());
        pane.resume().click();
        QVERIFY(Defaults::resume.get());
        // The platform's own key follows, so that both readers agree.
        QVERIFY(UserDefaults::standard()->boolForKey("NSQuitAlwaysKeepsWindows"));
        QCOMPARE(resumeChanged.count(), 1);
    }

    void theGeneralPaneShowsAStoredEncodingAndLeavesAnUnknownOneAlone() {
        Defaults::encodingsPopUp.set(5);  // ISO Latin 1
        Defaults::lineEndings.set(7);     // no such line ending
        GeneralPane pane;
        QCOMPARE(pane.encodings().currentData().toLongLong(), 5);
        QCOMPARE(pane.lineEndings().currentIndex(), -1);
        QCOMPARE(Defaults::lineEndings.get(), 7);
    }

    void theEncodingListOffersEveryEncodingAndAutomaticUntilOneIsChosen() {
        GeneralPane pane;
        QComboBox& list = pane.encodings();
        QCOMPARE(list.currentText(), QString::fromStdString(quod::Localize::automatic()));
        QCOMPARE(list.currentData().toLongLong(), 0);
        for (const quod::StringEncoding& entry : quod::Misc::allStringEncodings()) {
            QVERIFY2(list.findData(QVariant::fromValue(entry.tag)) >= 0, entry.name.c_str());
        }

        const int latin1 = list.findData(QVariant::fromValue<int64_t>(5));
        list.setCurrentIndex(latin1);
        Q_EMIT list.activated(latin1);
        QCOMPARE(Defaults::encodingsPopUp.get(), 5);
        list.setCurrentIndex(0);
        Q_EMIT list.activated(0);
        QCOMPARE(Defaults::encodingsPopUp.get(), 0);
        QVERIFY(UserDefaults::standard()->objectForKey("EncodingsPopUp").has_value());
    }

    void ctrlCommaOpensThePreferencesFromTheEditor() {
        auto* editor = quod::demo::DocumentWindowController::open();
        QVERIFY(QTest::qWaitForWindowActive(editor->window()));
        // The menu shows the key beside the item.
        QCOMPARE(editor->mainWindow().findChild<QAction*>("preferences")->shortcut(),
                 QKeySequence(Qt::CTRL | Qt::Key_Comma));
        QVERIFY(quod::WindowController::controller(
                    quod::Singleton::WindowController::preferences) == nullptr);
        QWidget* focus = QApplication::focusWidget();
        QVERIFY(focus == &editor->mainWindow().editorArea().textView());
        QTest::keyClick(focus, Qt::Key_Comma, Qt::ControlModifier);
        auto* preferences =
            quod::WindowController::controller(quod::Singleton::WindowController::preferences);
        QVERIFY(preferences != nullptr);
        QVERIFY(QTest::qWaitForWindowExposed(preferences->window()));
        // The key went to the shortcut, not into the text.
        QVERIFY(editor->mainWindow().document().textView()->string().empty());
    }

    void choosingAThemeInThePaneRepaintsTheEditorAndTheMenuFollowsBack() {
        MainWindow window;
        window.show();
        ThemesPane pane;
        const QColor before = editorBackgroundPixel(window);
        pane.themes().setCurrentRow(2);
        QCOMPARE(Defaults::currentTheme.get(), 2);
        QVERIFY(closeTo(editorBackgroundPixel(window), themeBackground()));
        QVERIFY(!closeTo(editorBackgroundPixel(window), before));
        // The theme's font too.
        QCOMPARE(window.editorArea().textView().font(), quod::toQFont(Defaults::textFont.get()));

        // A font chosen on its own shows once "TextFontChanged" is posted.
        const auto larger = quod::Font::withName(Defaults::textFont.get().fontName(), 21);
        QVERIFY(larger.has_value());
        Defaults::textFont.set(*larger);
        Notifications().post(NotificationName::textFontChanged());
        QCOMPARE(window.editorArea().textView().font().pointSizeF(), 21.0);

        // A theme applied elsewhere moves the pane's selection without applying anything again.
        PostCounter themeChanged(NotificationName::themeChanged());
        ThemeMenu::applyTheme(quod::Theme::City::helsinki);
        QCOMPARE(themeChanged.count(), 1);
        QCOMPARE(pane.themes().currentRow(), 3);
    }

    void commandsAreStoredOnEveryEditAndDeletingAsksUntilToldNotTo() {
        Defaults::commands.set({quod::Command("List", "ls -l", false, true, false)});
        CommandsPane pane;
        // The headers read as the column set says, and know which column they head.
        QCOMPARE(pane.table().horizontalHeaderItem(3)->text(), QString("Suppress command result"));
        QCOMPARE(CommandColumns::column(quod::columnIdentifier(pane.table(), 1)),
                 std::optional(CommandColumn::command));
        QCOMPARE(pane.table().rowCount(), 1);
        QCOMPARE(pane.table().item(0, 1)->text(), QString("ls -l"));
        QCOMPARE(pane.table().item(0, 3)->checkState(), Qt::Checked);

        PostCounter commandsChanged(NotificationName::commandsChanged());
        pane.addButton().click();
        QCOMPARE(Defaults::commands.get().size(), 2u);
        pane.table().item(1, 1)->setText("date");
        pane.table().item(1, 2)->setCheckState(Qt::Checked);
        const auto stored = Defaults::commands.get();
        QCOMPARE(stored.size(), 2u);
        QCOMPARE(stored[0].text(), std::string("ls -l"));  // stored order is kept
        QCOMPARE(stored[1].text(), std::string("date"));
        QVERIFY(stored[1].isInline());
        QCOMPARE(commandsChanged.count(), 3);

        // Cancel keeps the command, whatever the box says, and records no suppression.
        pane.table().setCurrentCell(0, 0);
        press("Cancel");
        pane.deleteButton().click();
        QCOMPARE(Defaults::commands.get().size(), 2u);
        QVERIFY(!UserDefaults::standard()->boolForKey(CommandsPane::deleteSuppressionKey));

        // Delete with "don't ask again" ticked: gone, and the next deletion asks nothing.
        press("Delete", Suppression::tick);
        pane.deleteButton().click();
        QCOMPARE(Defaults::commands.get().size(), 1u);
        QVERIFY(UserDefaults::standard()->boolForKey(CommandsPane::deleteSuppressionKey));
        pane.table().setCurrentCell(0, 0);
        pane.deleteButton().click();
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        QVERIFY(Defaults::commands.get().empty());
        QCOMPARE(commandsChanged.count(), 5);
    }

    void thePreferencesWindowChangesTheEditorsTheme() {
        auto* editor = quod::demo::DocumentWindowController::open();
        QVERIFY(QTest::qWaitForWindowExposed(editor->window()));
        editor->mainWindow().findChild<QAction*>("preferences")->trigger();
        auto* preferences = showPreferences();
        QVERIFY(preferences != nullptr);
        // The menu item and a second show give the one window.
        QCOMPARE(quod::WindowController::retained().size(), 2u);

        QStringList labels;
        for (const auto& item : preferences->tabViewController()->tabViewItems())
            labels << item.label;
        QCOMPARE(labels, QStringList({"General", "Themes", "Commands", "Snippets"}));
        // One row of tabs: the toolbar's, without a tab bar below it.
        QVERIFY(preferences->touchBarTabSegmentedControl()->isVisible());
        for (const QTabBar* tabBar : preferences->window()->findChildren<QTabBar*>())
            QVERIFY(!tabBar->isVisible());

        // Through the tab control, as a user would pick the pane.
        preferences->touchBarTabSegmentedControl()->setSelectedSegment(1);
        preferences->switchTab(preferences->touchBarTabSegmentedControl());
        QCOMPARE(preferences->window()->windowTitle(), QString("Themes"));
        QCOMPARE(Defaults::preferencesTab.get(), 1);

        // Kept as an artefact of the run, beside the editor's screenshots.
        QVERIFY(QDir().mkpath(QUODDLE_SCREENSHOT_FOLDER));
        QVERIFY(preferences->window()->grab().save(
            QDir(QUODDLE_SCREENSHOT_FOLDER).filePath("demo-preferences.png")));

        const QColor before = editorBackgroundPixel(editor->mainWindow());
        paneOf<ThemesPane>(*preferences)->themes().setCurrentRow(2);
        QVERIFY(closeTo(editorBackgroundPixel(editor->mainWindow()), themeBackground()));
        QVERIFY(!closeTo(editorBackgroundPixel(editor->mainWindow()), before));
    }

    void editorAndPreferencesWindowsComeBackAfterARelaunch() {
        QTemporaryDir folder;
        const QString path = folder.filePath("notes.txt");
        {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("remembered\n");
        }
        Defaults::resume.set(true);
        auto* first = quod::demo::DocumentWindowController::open();
        QVERIFY(first->mainWindow().openDocument(path));
        first->window()->setGeometry(120, 100, 700, 500);
        auto* second = quod::demo::DocumentWindowController::open();
        second->window()->setGeometry(300, 200, 640, 480);
        auto* preferences = showPreferences();
        QVERIFY(preferences != nullptr);
        const QRect preferencesFrame = preferences->window()->geometry();

        quod::WindowRestoration::saveWindows();
        closeEveryWindow();
        QVERIFY(quod::WindowController::retained().empty());

        quod::WindowRestoration::restoreWindows();
        std::vector<quod::demo::DocumentWindowController*> editors;
        for (auto* controller : quod::WindowController::retained()) {
            if (auto* editor = dynamic_cast<quod::demo::DocumentWindowController*>(controller))
                editors.push_back(editor);
        }
        QCOMPARE(editors.size(), 2u);
        // In the order they were opened.
        QCOMPARE(editors[0]->window()->geometry(), QRect(120, 100, 700, 500));
        QCOMPARE(editors[0]->mainWindow().document().path(), path.toStdString());
        QCOMPARE(editors[0]->mainWindow().sidebar().folder(), folder.path().toStdString());
        QCOMPARE(editors[1]->window()->geometry(), QRect(300, 200, 640, 480));
        QVERIFY(editors[1]->mainWindow().document().path().empty());
        auto* restoredPreferences =
            quod::WindowController::controller(quod::Singleton::WindowController::preferences);
        QVERIFY(restoredPreferences != nullptr);
        QCOMPARE(restoredPreferences->window()->geometry(), preferencesFrame);

        // With "Resume" off nothing comes back.
        closeEveryWindow();
        Defaults::resume.set(false);
        quod::WindowRestoration::restoreWindows();
        QVERIFY(quod::WindowController::retained().empty());
    }
};

QTEST_MAIN(DemoPreferencesTests)
#include "DemoPreferencesTests.moc"
