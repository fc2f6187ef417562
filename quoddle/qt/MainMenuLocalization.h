// Menus written in English, shown in the user's language.
//
// `mainMenu(menuBar)` replaces the title of every item of the bar, of its menus and of their
// submenus at any depth with its translation (Localize::string). Separators are left alone. A
// title with a mnemonic ("&Edit") is looked up without it ("Edit"); the translation carries no
// mnemonic, and an '&' in it is shown as such. A title without a translation keeps its text, and
// its mnemonic. Translating twice changes nothing more, so a host may call it again after adding
// menus. `mainMenu()` does this for the menu bar of every main window of the application.
//
//     QMenu* edit = window.menuBar()->addMenu("&Edit");
//     Localize::mainMenu(*window.menuBar());   // "Bearbeiten" under LANGUAGE=de
#pragma once

#include "quoddle/Export.h"

class QMenuBar;

namespace quod::Localize {

QUODDLE_EXPORT void mainMenu(QMenuBar& menuBar);
QUODDLE_EXPORT void mainMenu();

}  // namespace quod::Localize
