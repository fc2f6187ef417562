#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPointer>
#include <QTabBar>
#include <QTest>
#include <QToolBar>
#include <QToolButton>
#include <mutex>
#include <string>
#include <vector>

#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/qt/MainLoopBridge.h"
#include "quoddle/qt/PreferenceTabViewController.h"
#include "quoddle/qt/PreferencesTabViewController.h"
#include "quoddle/qt/PreferencesWindowController.h"
#include "quoddle/qt/SheetViewController.h"
#include "quoddle/qt/Storyboard.h"
#include "quoddle/qt/WindowController.h"
#include "quoddle/qt/WindowFrame.h"
#include "quoddle/qt/WindowRestoration.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/NotificationCenter.h"
#include "quoddle/runtime/SystemLog.h"

using namespace quod;

namespace {

class NamedPane : public PreferenceTabViewController, public PreferenceTabType {
  public:
    explicit NamedPane(QString label) : label_(std::move(label)) {}
    QString tabLabel() const override { return label_; }
    std::optional<QIcon> tabImage() const override { return std::nullopt; }

  private:
    QString label_;
};

// Three panes: two name themselves, the third keeps the label it was added with.
std::unique_ptr<QObject> makePreferences() {
    auto* tabs = new PreferencesTabViewController();
    tabs->addTabViewItem(new NamedPane("General"), "first");
    tabs->addTabViewItem(new NamedPane("Fonts"), "second");
    tabs->addTabViewItem(new QLabel("plain"), "Plain label");
    return std::make_unique<PreferencesWindowController>(tabs);
}

class FindWindowController : public WindowController {
  public:
    void windowDidLoad() override {
        WindowController::windowDidLoad();
        setSingleton(Singleton::WindowController::find);
    }
};

// A restorable window with a little state of its own.
class NoteWindowController : public WindowController {
  public:
    static constexpr std::string_view restorationClass = "Note";
    std::string text;

    void windowDidLoad() override {
        WindowController::windowDidLoad();
        WindowRestoration::setRestorationClass(*window(), restorationClass);
    }
    void encodeRestorableState(PlistDictionary& state) const override { state["Text"] = text; }
    void decodeRestorableState(const PlistDictionary& state) override {
        const auto found = state.find("Text");
        if (found != state.end() && found->second.as<std::string>()) {
            text = *found->second.as<std::string>();
        }
    }
};

NoteWindowController* showNote(std::string text, QRect frame) {
    auto* note = new NoteWindowController();
    note->text = std::move(text);
    note->loadWindow();
    note->window()->setGeometry(frame);
    note->showWindow();
    return note;
}

class StubbornWindow : public QWidget {
  protected:
    void closeEvent(QCloseEvent* event) override { event->ignore(); }
};

class FixedSheet : public SheetViewController {
  public:
    QSize sizeHint() const override { return {300, 200}; }
};

void installStoryboard() {
    auto storyboard = std::make_unique<Storyboard>();
    storyboard->registerController("Preferences", makePreferences);
    storyboard->registerController("Find", [] { return std::make_unique<FindWindowController>(); });
    // A storyboard entry that is no window controller at all.
    storyboard->registerController("Compare", [] { return std::make_unique<QObject>(); });
    Storyboard::setMain(std::move(storyboard));
}

void closeEveryWindow() {
    for (auto* controller : WindowController::retained()) {
        if (controller->window()) controller->window()->close();
    }
    for (auto* controller : WindowController::retained())
        delete controller;  // refused to close
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (QWidget* widget : QApplication::topLevelWidgets())
        delete widget;
}

PreferencesWindowController* preferences() {
    return qobject_cast<PreferencesWindowController*>(
        WindowController::controller(Singleton::WindowController::preferences));
}

PreferencesWindowController* showPreferences() {
    WindowController::show(Singleton::WindowController::preferences);
    auto* controller = preferences();
    if (controller) (void)QTest::qWaitForWindowExposed(controller->window());
    return controller;
}

QString preferencesTitle() {
    return QString::fromStdString(Localize::preferences());
}

}  // namespace

class WindowControllerTests : public QObject {
    Q_OBJECT

    std::unique_ptr<MainLoopBridge> bridge_;
    std::mutex logMutex_;
    std::vector<std::string> log_;

    std::vector<std::string> logged() {
        const std::lock_guard lock(logMutex_);
        return log_;
    }

  private Q_SLOTS:
    void initTestCase() {
        bridge_ = std::make_unique<MainLoopBridge>();
        setSystemLogSink([this](std::string_view message) {
            const std::lock_guard lock(logMutex_);
            log_.emplace_back(message);
        });
    }
    void init() {
        UserDefaults::setStandard(UserDefaults::inMemory());
        installStoryboard();
        const std::lock_guard lock(logMutex_);
        log_.clear();
    }
    void cleanup() { closeEveryWindow(); }
    void cleanupTestCase() { setSystemLogSink({}); }

    void aKindIsShownOnceUntilItsWindowCloses() {
        auto* first = showPreferences();
        QVERIFY(first);
        WindowController::show(Singleton::WindowController::preferences);
        QCOMPARE(WindowController::retained().size(), std::size_t{1});
        QCOMPARE(preferences(), first);
        QVERIFY(first->window()->isVisible());

        const QPointer<WindowController> closed(first);
        first->window()->close();
        QVERIFY(WindowController::retained().empty());
        QVERIFY(!WindowController::controller(Singleton::WindowController::preferences));
        QVERIFY(closed);  // deleted later, never inside its own close
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!closed);

        auto* second = showPreferences();
        QVERIFY(second);
        QCOMPARE(WindowController::retained().size(), std::size_t{1});
        QVERIFY(second->window()->isVisible());

        // A window that refuses to close keeps its controller.
        auto* stubborn = new WindowController(std::make_unique<StubbornWindow>());
        stubborn->showWindow();
        QVERIFY(!stubborn->window()->close());
        QCOMPARE(WindowController::retained().size(), std::size_t{2});
        QCOMPARE(WindowController::retained().back(), stubborn);
    }

    void findIsAbsentBeforeItIsShownAndAfterItCloses() {
        QVERIFY(!WindowController::controller(Singleton::WindowController::find));
        WindowController::show(Singleton::WindowController::find);
        auto* find = WindowController::controller(Singleton::WindowController::find);
        QVERIFY(find);
        QVERIFY(!WindowController::controller(Singleton::WindowController::compare));
        find->window()->close();
        QVERIFY(!WindowController::controller(Singleton::WindowController::find));
    }

    void aKindThatCannotBeMadeIsLoggedAndNothingShows() {
        WindowController::show(Singleton::WindowController::compare);  // entry makes no controller
        Storyboard::setMain(nullptr);
        WindowController::show(Singleton::WindowController::preferences);
        const std::vector<std::string> expected(2, "Could not show window controller");
        QCOMPARE(logged(), expected);
        QVERIFY(WindowController::retained().empty());
        for (QWidget* widget : QApplication::topLevelWidgets())
            QVERIFY(!widget->isVisible());
    }

    void resumeChangedSetsEveryWindowsRestorableFlag() {
        Defaults::resume.set(true);
        auto* preferencesWindow = showPreferences()->window();
        WindowController::show(Singleton::WindowController::find);
        auto* findWindow =
            WindowController::controller(Singleton::WindowController::find)->window();
        QVERIFY(WindowRestoration::isRestorable(*preferencesWindow));
        QVERIFY(WindowRestoration::isRestorable(*findWindow));

        Defaults::resume.set(false);
        QVERIFY(WindowRestoration::isRestorable(*findWindow));  // only the notification re-reads
        Notifications().post(NotificationName::resumeChanged());
        QVERIFY(!WindowRestoration::isRestorable(*preferencesWindow));
        QVERIFY(!WindowRestoration::isRestorable(*findWindow));

        // A closed window's controller no longer listens.
        findWindow->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        Defaults::resume.set(true);
        Notifications().post(NotificationName::resumeChanged());
        QVERIFY(WindowRestoration::isRestorable(*preferencesWindow));
    }

    void panesNameTheirTabsAndAskFor600By100() {
        auto* controller = showPreferences();
        auto* tabs = controller->tabViewController();
        QCOMPARE(tabs->transitionOptions(), 0x1000u);
        const auto items = tabs->tabViewItems();
        QCOMPARE(items.size(), std::size_t{3});
        QCOMPARE(items[0].label, QString("General"));
        QCOMPARE(items[1].label, QString("Fonts"));
        QCOMPARE(items[2].label, QString("Plain label"));  // no PreferenceTabType: kept
        QCOMPARE(tabs->findChild<QTabBar*>()->tabText(1), QString("Fonts"));

        auto* pane = static_cast<PreferenceTabViewController*>(items[0].viewController);
        QCOMPARE(pane->preferredContentSize(), QSize(600, 100));
        QTRY_COMPARE(pane->size(), QSize(600, 100));  // the window was sized to it
        QCOMPARE(controller->window()->windowTitle(), QString("General"));
    }

    void choosingATabStoresItAtOnceAndTheFrameLater() {
        auto* controller = showPreferences();
        auto* tabs = controller->tabViewController();
        Defaults::preferencesFrame.set(std::nullopt);

        tabs->setSelectedTabViewItemIndex(1);
        QCOMPARE(Defaults::preferencesTab.get(), int64_t{1});
        QCOMPARE(controller->window()->windowTitle(), QString("Fonts"));
        QCOMPARE(controller->touchBarTabSegmentedControl()->selectedSegment(), 1);
        QTest::qWait(250);
        QVERIFY(!Defaults::preferencesFrame.get());
        QTRY_VERIFY_WITH_TIMEOUT(Defaults::preferencesFrame.get().has_value(), 1000);
        QCOMPARE(*Defaults::preferencesFrame.get(), WindowFrame::text(*controller->window()));

        // Gone before the delay ends: nothing is stored, nothing crashes.
        Defaults::preferencesFrame.set(std::nullopt);
        tabs->setSelectedTabViewItemIndex(0);
        controller->window()->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QTest::qWait(600);
        QVERIFY(!Defaults::preferencesFrame.get());
    }

    void aStoredTabIsSelectedAndOneOutOfRangeLeavesTheTitleAlone() {
        Defaults::preferencesTab.set(1);
        auto* controller = showPreferences();
        QCOMPARE(controller->tabViewController()->selectedTabViewItemIndex(), 1);
        QCOMPARE(controller->window()->windowTitle(), QString("Fonts"));
        controller->window()->close();

        Defaults::preferencesTab.set(7);
        controller = showPreferences();
        QCOMPARE(controller->tabViewController()->selectedTabViewItemIndex(), -1);
        QCOMPARE(controller->window()->windowTitle(), preferencesTitle());
        QCOMPARE(Defaults::preferencesTab.get(), int64_t{7});
        QCOMPARE(controller->touchBarTabSegmentedControl()->selectedSegment(), -1);
    }

    void movingTheWindowStoresItsFrameAtOnce() {
        auto* window = showPreferences()->window();
        Defaults::preferencesFrame.set(std::nullopt);
        window->move(window->pos() + QPoint(37, 21));
        QVERIFY(Defaults::preferencesFrame.get());
        QCOMPARE(*Defaults::preferencesFrame.get(), WindowFrame::text(*window));
        const auto stored = WindowFrame::geometry(*Defaults::preferencesFrame.get());
        QCOMPARE(stored->topLeft(), window->geometry().topLeft());

        // The next window opens where this one was left.
        window->close();
        QCOMPARE(showPreferences()->window()->geometry().topLeft(), stored->topLeft());
    }

    void theSegmentedControlFollowsTheTabsBothWays() {
        auto* controller = showPreferences();
        auto* control = controller->touchBarTabSegmentedControl();
        QVERIFY(control);
        QCOMPARE(control->segmentCount(), 3);
        QCOMPARE(control->labelForSegment(1), QString("Fonts"));
        QCOMPARE(control->selectedSegment(), 0);

        const auto buttons = control->findChildren<QToolButton*>();
        QCOMPARE(buttons.size(), 3);
        QTest::mouseClick(buttons[2], Qt::LeftButton);
        QCOMPARE(Defaults::preferencesTab.get(), int64_t{2});
        QCOMPARE(controller->tabViewController()->selectedTabViewItemIndex(), 2);
        QCOMPARE(control->selectedSegment(), 2);
        QCOMPARE(controller->window()->windowTitle(), QString("Plain label"));

        controller->tabViewController()->setSelectedTabViewItemIndex(1);
        QCOMPARE(control->selectedSegment(), 1);
        Defaults::preferencesTab.set(0);
        controller->updateTouchBarSegmentedControl();
        QCOMPARE(control->selectedSegment(), 0);
    }

    void theTabsAreOfferedOnceInTheToolbar() {
        auto* controller = showPreferences();
        auto* tabs = controller->tabViewController();
        QCOMPARE(tabs->tabStyle(), PreferencesTabViewController::TabStyle::toolbar);
        auto* bar = controller->window()->findChild<QToolBar*>("PreferencesTouchBar");
        QVERIFY(bar && bar->isVisible());
        QVERIFY(controller->touchBarTabSegmentedControl()->isVisible());
        QVERIFY(!tabs->findChild<QTabBar*>()->isVisible());
        // The pane starts right below the toolbar, with no row of tabs between them.
        auto* pane = tabs->tabViewItems()[0].viewController;
        const int paneTop = pane->mapTo(controller->window(), QPoint(0, 0)).y();
        const int barBottom = bar->geometry().bottom();
        QVERIFY2(paneTop - barBottom < 8, qPrintable(QString("%1 %2").arg(paneTop).arg(barBottom)));

        // A tab view controller on its own keeps its tab bar.
        PreferencesTabViewController alone;
        alone.addTabViewItem(new QLabel("one"), "One");
        alone.show();
        QVERIFY(QTest::qWaitForWindowExposed(&alone));
        QVERIFY(alone.findChild<QTabBar*>()->isVisible());
    }

    void aSheetKeepsOnlyTheSizeTheUserGaveIt() {
        QWidget parent;
        parent.resize(800, 600);
        parent.show();
        QVERIFY(QTest::qWaitForWindowExposed(&parent));
        const std::string key = SheetViewController::frameKey("Rename");
        QCOMPARE(key, std::string("WindowFrame Rename"));

        auto present = [&parent] {
            auto* sheet = new FixedSheet();
            sheet->setFrameName("Rename");
            QPointer<QDialog> dialog = sheet->presentAsSheet(&parent);
            (void)QTest::qWaitForWindowExposed(dialog);
            return std::pair(sheet, dialog);
        };

        auto [sheet, dialog] = present();
        QCOMPARE(dialog->windowModality(), Qt::WindowModal);
        const QSize designed = dialog->size();
        QCOMPARE(designed, QSize(300, 200));
        dialog->resize(420, 260);  // from code: not a user's resize
        QTest::qWait(int(SheetViewController::liveResizeQuietPeriod.count()) + 200);
        dialog->close();
        QTRY_VERIFY(!dialog);
        QVERIFY(!UserDefaults::standard()->objectForKey(key));

        std::tie(sheet, dialog) = present();
        QCOMPARE(dialog->size(), designed);
        dialog->resize(420, 260);
        sheet->windowDidEndLiveResize();
        const auto saved = UserDefaults::standard()->stringForKey(key);
        QVERIFY(saved);
        QCOMPARE(WindowFrame::geometry(*saved)->size(), QSize(420, 260));
        dialog->close();
        QTRY_VERIFY(!dialog);

        std::tie(sheet, dialog) = present();
        QCOMPARE(dialog->size(), QSize(420, 260));
        dialog->close();
        QTRY_VERIFY(!dialog);

        // Another name, another frame.
        auto* other = new FixedSheet();
        QCOMPARE(other->frameName(), std::string("SheetViewController"));
        QPointer<QDialog> otherDialog = other->presentAsSheet(&parent);
        QVERIFY(QTest::qWaitForWindowExposed(otherDialog));
        QCOMPARE(otherDialog->size(), designed);
        otherDialog->close();
        QTRY_VERIFY(!otherDialog);
    }

    void windowsComeBackWhereTheyWereWithTheirState() {
        Defaults::resume.set(true);
        WindowRestoration::registerClass(std::string(NoteWindowController::restorationClass),
                                         [](std::string_view, const PlistDictionary&,
                                            const WindowRestoration::CompletionHandler& done) {
                                             auto* note = new NoteWindowController();
                                             note->loadWindow();
                                             done(note->window(), std::nullopt);
                                         });
        PreferencesWindowController::registerRestorationClass();

        auto* preferencesWindow = showPreferences()->window();
        preferencesWindow->move(140, 90);
        const QRect preferencesFrame = preferencesWindow->geometry();
        const QRect noteFrame(300, 220, 480, 320);
        showNote("kept", noteFrame);
        auto* unrestorable = showNote("not restorable", {50, 60, 200, 100});
        WindowRestoration::setRestorable(*unrestorable->window(), false);
        showNote("closed", {70, 80, 200, 100})->window()->close();

        // Saved as the application quits (the signal alone: the test goes on).
        WindowRestoration::saveWindowsAtQuit();
        QVERIFY(QMetaObject::invokeMethod(QCoreApplication::instance(), "aboutToQuit"));
        auto saved = UserDefaults::standard()->arrayForKey(WindowRestoration::savedWindowsKey);
        QVERIFY(saved);
        QCOMPARE(saved->size(), std::size_t{2});
        // What cannot be restored is passed over.
        saved->push_back(PlistValue("not a dictionary"));
        saved->push_back(PlistDictionary{{"Class", "Unknown"}, {"Frame", "{{1, 2}, {3, 4}}"}});
        saved->push_back(PlistDictionary{{"Class", "Note"}});
        saved->push_back(PlistDictionary{{"Class", "Note"}, {"Frame", "{{1, 2}, {0, 0}}"}});
        saved->push_back(PlistDictionary{{"Class", int64_t{4}}, {"Frame", "{{1, 2}, {3, 4}}"}});
        UserDefaults::standard()->setObject(WindowRestoration::savedWindowsKey, *saved);
        closeEveryWindow();

        Defaults::resume.set(false);
        WindowRestoration::restoreWindows();
        QVERIFY(WindowController::retained().empty());

        Defaults::resume.set(true);
        WindowRestoration::restoreWindows();
        QCOMPARE(WindowController::retained().size(), std::size_t{2});
        auto* restoredPreferences = preferences();
        QVERIFY(restoredPreferences);
        QVERIFY(QTest::qWaitForWindowExposed(restoredPreferences->window()));
        QCOMPARE(restoredPreferences->window()->geometry(), preferencesFrame);
        NoteWindowController* note = nullptr;
        for (auto* controller : WindowController::retained()) {
            if (auto* found = dynamic_cast<NoteWindowController*>(controller)) note = found;
        }
        QVERIFY(note);
        QVERIFY(note->window()->isVisible());
        QCOMPARE(note->window()->geometry(), noteFrame);
        QCOMPARE(note->text, std::string("kept"));
    }

    void restoringPreferencesWithoutAStoryboardGivesNoWindowAndNoError() {
        Storyboard::setMain(nullptr);
        int calls = 0;
        PreferencesWindowController::restoreWindow(
            "Preferences", {}, [&calls](QWidget* window, std::optional<Error> error) {
                ++calls;
                QVERIFY(!window);
                QVERIFY(!error);
            });
        QCOMPARE(calls, 1);
        QVERIFY(WindowController::retained().empty());
    }
};

QTEST_MAIN(WindowControllerTests)
#include "WindowControllerTests.moc"
