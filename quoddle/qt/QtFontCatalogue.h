// The fonts of a Qt application, as the core's FontCatalogue.
//
// The desktop's choices come from Qt: the system font and the fixed-pitch font are Qt's general
// and fixed system fonts (QFontDatabase::systemFont, which the platform theme fills from the
// desktop's settings), and size 0 asks for the general font's point size. Qt names families,
// while the core names faces by PostScript name, so families are turned into the PostScript name
// of their regular face through fontconfig; lookups of stored names go to the fontconfig catalogue
// (FontCatalogue::fontconfig()) as well. On Linux Qt reads the same fontconfig configuration, so
// both agree on what is installed; a system font that fontconfig cannot name (a platform plug-in
// with fonts of its own) is handed on under its family name. Safe to share between threads like
// every catalogue; Qt's system fonts are asked on each query, so a change of the desktop's fonts
// is seen at once.
#pragma once

#include <memory>

#include "quoddle/preferences/FontCatalogue.h"

namespace quod {

class QtFontCatalogue : public FontCatalogue {
  public:
    QtFontCatalogue() = default;

    [[nodiscard]] std::optional<std::string> postScriptName(std::string_view name) const override;
    [[nodiscard]] std::string systemFontName() const override;
    [[nodiscard]] std::optional<std::string> fixedPitchFontName() const override;
    [[nodiscard]] double defaultPointSize() const override;

  private:
    std::shared_ptr<const FontCatalogue> fontconfig_ = FontCatalogue::fontconfig();
};

}  // namespace quod
