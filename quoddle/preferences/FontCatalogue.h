// Which fonts exist: the one question the framework asks the system about fonts.
//
// A `Font` (Font.h) is only ever made through the installed catalogue, so a stored font name that
// the machine lacks reads as missing and the caller falls back, exactly as on a system where the
// font is not installed. Two catalogues come with the framework:
//   - `fontconfig()`, the default: asks fontconfig, so "Menlo" is found only where it is installed,
//     the system font is fontconfig's "sans-serif" and the fixed-pitch font its "monospace";
//   - `fixed(...)`, a list given by the caller, for tests and for hosts that know their fonts
//     better than fontconfig does (a toolkit layer may install the toolkit's own choice).
//
// Names are PostScript names ("DejaVuSansMono-Bold"). A lookup also accepts a family name and then
// answers the PostScript name of that family's regular face ("DejaVu Sans Mono" ->
// "DejaVuSansMono"), as the platform's font lookup does for "Menlo". Catalogues are immutable and
// safe to share between threads.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT FontCatalogue {
  public:
    virtual ~FontCatalogue() = default;

    // The PostScript name of the installed face that `name` names (a PostScript name, else a
    // family name standing for its regular face); no value when there is none.
    [[nodiscard]] virtual std::optional<std::string> postScriptName(
        std::string_view name) const = 0;

    // The PostScript name of the system's user-interface font. Never empty: a machine without
    // fonts still gets a name to draw with.
    [[nodiscard]] virtual std::string systemFontName() const = 0;

    // The PostScript name of the user's fixed-pitch font; no value when the system names none.
    [[nodiscard]] virtual std::optional<std::string> fixedPitchFontName() const = 0;

    // The size that a request for size 0 (the platform's "default size") gets. Positive.
    [[nodiscard]] virtual double defaultPointSize() const = 0;

    // The catalogue of the fonts fontconfig knows. Answers are remembered for the process: fonts
    // installed while it runs are seen after the next start, as fontconfig's own snapshot is.
    [[nodiscard]] static std::shared_ptr<const FontCatalogue> fontconfig();

    struct Face {
        std::string postScriptName;
        std::string family;
    };

    // A catalogue of exactly these faces. A family name finds the first face listed with that
    // family, so list each family's regular face first. `systemFontName` must not be empty and
    // `defaultPointSize` must be positive.
    [[nodiscard]] static std::shared_ptr<const FontCatalogue> fixed(
        std::vector<Face> faces, std::string systemFontName,
        std::optional<std::string> fixedPitchFontName, double defaultPointSize);
};

}  // namespace quod
