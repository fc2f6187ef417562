// A font as preferences and themes know it: a PostScript name and a point size.
//
// Fonts exist only through the installed `FontCatalogue`: `withName` answers no value for a font
// the machine lacks, which is what lets a stored "Menlo-Regular@@@@12.00" fall back to another
// font where Menlo is not installed. `fontName()` is the name of the face actually found, which
// may differ from the name asked for ("Menlo" finds "Menlo-Regular").
//
// Sizes follow the platform's rule: 0 or less asks for the catalogue's default size. A size that
// is not a finite number makes no font.
//
//   Font::withName("Menlo", 12)        -> Menlo-Regular at 12, where Menlo is installed
//   Font::withName("NoSuchFont", 12)   -> no value
//   Font::systemFont(11)               -> the system's user-interface font at 11, always
//
// The catalogue is process-wide; tests and hosts install their own with `setCatalogue`, before
// the first font is asked for if they want `Theme::all()` (built once) to see it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quoddle/Export.h"
#include "quoddle/preferences/FontCatalogue.h"

namespace quod {

class QUODDLE_EXPORT Font {
  public:
    [[nodiscard]] static std::optional<Font> withName(std::string_view name, double pointSize);

    // The system's user-interface font. `pointSize` must not be NaN or infinite.
    [[nodiscard]] static Font systemFont(double pointSize);

    // The user's fixed-pitch font; no value when the catalogue names none. `pointSize` must not be
    // NaN or infinite.
    [[nodiscard]] static std::optional<Font> userFixedPitchFont(double pointSize);

    // The PostScript name.
    [[nodiscard]] const std::string& fontName() const { return fontName_; }
    [[nodiscard]] double pointSize() const { return pointSize_; }

    friend bool operator==(const Font&, const Font&) = default;

    [[nodiscard]] static std::shared_ptr<const FontCatalogue> catalogue();
    // Installs `catalogue` for every later lookup; null reinstalls the fontconfig catalogue.
    static void setCatalogue(std::shared_ptr<const FontCatalogue> catalogue);

  private:
    Font(std::string fontName, double pointSize)
        : fontName_(std::move(fontName)), pointSize_(pointSize) {}

    std::string fontName_;
    double pointSize_;
};

}  // namespace quod
