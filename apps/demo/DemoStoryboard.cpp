#include "demo/DemoStoryboard.h"

#include "demo/CommandsPane.h"
#include "demo/DocumentWindowController.h"
#include "demo/GeneralPane.h"
#include "demo/SnippetsPane.h"
#include "demo/ThemesPane.h"
#include "quoddle/interface/Singleton.h"
#include "quoddle/qt/PreferencesWindowController.h"
#include "quoddle/qt/Storyboard.h"

namespace quod::demo::DemoStoryboard {
namespace {

std::unique_ptr<QObject> makePreferences() {
    auto* tabs = new PreferencesTabViewController;
    tabs->addTabViewItem(new GeneralPane);
    tabs->addTabViewItem(new ThemesPane);
    tabs->addTabViewItem(new CommandsPane);
    tabs->addTabViewItem(new SnippetsPane);
    return std::make_unique<PreferencesWindowController>(tabs);
}

}  // namespace

void install() {
    auto storyboard = std::make_unique<Storyboard>();
    storyboard->registerController(
        std::string(Singleton::storyboardIdentifier(Singleton::WindowController::preferences)),
        makePreferences);
    Storyboard::setMain(std::move(storyboard));
    PreferencesWindowController::registerRestorationClass();
    WindowRestoration::registerClass(
        std::string(DocumentWindowController::restorationClassIdentifier),
        &DocumentWindowController::restoreWindow);
}

}  // namespace quod::demo::DemoStoryboard
