// What the demo's windows are made from: the main Storyboard with the "Preferences" entry (the
// shared preferences window with the General, Themes, Commands and Snippets panes), and the
// restoration classes of the preferences and editor windows.
//
// `install()` is called once, before the first window is shown or restored.
#pragma once

namespace quod::demo::DemoStoryboard {

void install();

}  // namespace quod::demo::DemoStoryboard
