// The icon of a file for lists, tabs and title bars: its content type's icon from the desktop's
// icon theme.
//
// `icon(url, size)` tries the names of Interface::iconNames(url) (interface/ContentTypeIcon.h)
// in order in the current icon theme (QIcon::themeName(), with its inherited themes and
// "hicolor"), so the most specific icon the theme has wins and a theme that has only generic
// icons still gives one. A theme with none of them (no icon theme installed, as on a bare
// server) gives the style's standard file or folder icon. The answer holds one picture, `size`
// × `size` device-independent pixels, drawn for the application's device pixel ratio so that
// it is sharp on a high-density screen. A size below 1, or no QGuiApplication, gives a null
// icon. Main thread only (icon themes are).
//
//     tab->setIcon(Interface::icon(document.url(), 16));
#pragma once

#include <QIcon>

#include "quoddle/Export.h"
#include "quoddle/filesystem/Url.h"

namespace quod::Interface {

[[nodiscard]] QUODDLE_EXPORT QIcon icon(const Url& url, int size);

}  // namespace quod::Interface
