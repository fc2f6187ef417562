// The colours of the demo's windows around the text: menus, sidebar, result panel, status line,
// docks and dialogs follow the colour theme, so a dark theme never sits in a light frame.
//
// The theme wins only where it disagrees with the desktop. When the theme's background is as
// dark (or as light) as the desktop's window colour, the application keeps the desktop's own
// palette, accent colours and all. Otherwise the application palette is made from the theme: the
// gutter's background for windows and buttons, the editor's background for lists and text fields,
// the text colour for every text, the selected-text colour for selections, the line numbers'
// colour for placeholders and disabled text. A theme colour Qt cannot draw (a pattern) keeps the
// desktop's palette.
//
// "Dark" is what the framework's Qt layer means by it: a colour whose lightness is below one half.
// The desktop's palette is the application palette as it was the first time this unit was asked,
// before it changed anything; call `desktopPalette()` once early (main does) to pin it.
// Main thread only.
#pragma once

#include <QPalette>

namespace quod::demo::ThemePalette {

[[nodiscard]] const QPalette& desktopPalette();
[[nodiscard]] bool desktopIsDark();

// The palette the stored theme asks for: the desktop's, or one made from the theme.
[[nodiscard]] QPalette forStoredTheme();

// Makes forStoredTheme() the application palette (nothing happens when it already is).
void apply();

}  // namespace quod::demo::ThemePalette
