#include "quoddle/qt/PreferencesWindowController.h"

#include <QMainWindow>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "quoddle/preferences/Defaults.h"
#include "quoddle/qt/Storyboard.h"
#include "quoddle/qt/ToolbarBuilder.h"
#include "quoddle/qt/WindowFrame.h"
#include "quoddle/runtime/Localize.h"

namespace quod {
namespace {

// "PreferencesTab" as a tab index; no value when it cannot be one.
std::optional<int> storedTab() {
    const int64_t stored = Defaults::preferencesTab.get();
    if (stored < 0 || stored > std::numeric_limits<int>::max()) return std::nullopt;
    return static_cast<int>(stored);
}

}  // namespace

PreferencesWindowController::PreferencesWindowController(PreferencesTabViewController* tabs) {
    if (tabs) setContentViewController(tabs);
}

PreferencesTabViewController* PreferencesWindowController::tabViewController() const {
    return qobject_cast<PreferencesTabViewController*>(contentViewController());
}

void PreferencesWindowController::windowDidLoad() {
    WindowController::windowDidLoad();
    setSingleton(Singleton::WindowController::preferences);
    QWidget* window = this->window();
    if (!window) return;
    if (const auto frame = Defaults::preferencesFrame.get()) WindowFrame::apply(*window, *frame);
    registerRestorationClass();
    WindowRestoration::setRestorationClass(*window, restorationClassIdentifier);
    window->setWindowTitle(QString::fromStdString(Localize::preferences()));
    if (auto* tabs = tabViewController()) {
        tabs->loadViewIfNeeded();
        tabs->setTransitionOptions(PreferencesTabViewController::allowUserInteraction);
        if (const auto index = storedTab()) tabs->setSelectedTabViewItemIndex(*index);
    }
    makeTouchBar();
}

void PreferencesWindowController::windowDidMove() {
    if (window()) Defaults::preferencesFrame.set(WindowFrame::text(*window()));
}

void PreferencesWindowController::switchTab(SegmentedControl* sender) {
    if (!sender) return;
    Defaults::preferencesTab.set(sender->selectedSegment());
    auto* tabs = tabViewController();
    if (const auto index = storedTab(); tabs && index) tabs->setSelectedTabViewItemIndex(*index);
}

QToolBar* PreferencesWindowController::makeTouchBar() {
    delete touchBar_.data();
    delete tabControl_.data();
    const ToolbarItemIdentifier items[] = {
        ToolbarItemIdentifier(std::string(tabSegmentedControlIdentifier))};
    const ToolbarBuilder builder({}, [this](const ToolbarItemIdentifier& identifier) {
        return makeTouchBarItem(identifier.rawValue());
    });
    QToolBar* bar = builder.makeToolbar(items, window());
    bar->setObjectName(QStringLiteral("PreferencesTouchBar"));
    auto* mainWindow = qobject_cast<QMainWindow*>(window());
    if (mainWindow) {
        mainWindow->addToolBar(Qt::TopToolBarArea, bar);
    } else {
        bar->hide();  // nowhere to show it; the control still follows the selection
    }
    if (auto* tabs = tabViewController()) {
        tabs->setTabStyle(mainWindow ? PreferencesTabViewController::TabStyle::toolbar
                                     : PreferencesTabViewController::TabStyle::tabBar);
    }
    touchBar_ = bar;
    return bar;
}

QWidget* PreferencesWindowController::makeTouchBarItem(std::string_view identifier) {
    if (identifier != tabSegmentedControlIdentifier) return nullptr;
    std::vector<ToolbarItem> segments;
    if (const auto* tabs = tabViewController()) {
        for (const auto& item : tabs->tabViewItems()) {
            // Segments are told apart by their place; the identifier only names it.
            segments.push_back({ToolbarItemIdentifier(std::string(tabSegmentedControlIdentifier) +
                                                      "." + std::to_string(segments.size())),
                                item.label, item.image});
        }
    }
    const ToolbarBuilder builder([this](const ToolbarItemIdentifier&) { switchTab(tabControl_); });
    tabControl_ = builder.makeSegmentedControl(std::move(segments));
    updateTouchBarSegmentedControl();
    return tabControl_;
}

void PreferencesWindowController::updateTouchBarSegmentedControl() {
    if (!tabControl_) return;
    tabControl_->setSelectedSegment(storedTab().value_or(-1));
}

void PreferencesWindowController::restoreWindow(
    std::string_view, const PlistDictionary&,
    const WindowRestoration::CompletionHandler& completionHandler) {
    if (!completionHandler) return;
    auto* controller = qobject_cast<PreferencesWindowController*>(
        WindowController::controller(Singleton::WindowController::preferences));
    if (!controller) {
        auto* storyboard = Storyboard::main();
        std::unique_ptr<QObject> object =
            storyboard ? storyboard->instantiateController(restorationClassIdentifier) : nullptr;
        controller = qobject_cast<PreferencesWindowController*>(object.get());
        if (!controller) {
            completionHandler(nullptr, std::nullopt);
            return;
        }
        object.release();  // loading registers it, and the registry owns it
        controller->loadWindow();
    }
    completionHandler(controller->window(), std::nullopt);
}

void PreferencesWindowController::registerRestorationClass() {
    if (WindowRestoration::isClassRegistered(restorationClassIdentifier)) return;
    WindowRestoration::registerClass(std::string(restorationClassIdentifier), &restoreWindow);
}

}  // namespace quod
