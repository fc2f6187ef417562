// The system's look, light or dark: the stand-in of the platform's appearance object.
//
// An appearance has a name. The platform's names are kept, because hosts and stored state may
// carry them: "NSAppearanceNameAqua" (light), "NSAppearanceNameDarkAqua" (dark), the vibrant and
// high-contrast variants of both, and any other name a host makes up (a custom look the framework
// does not know, which matches none of the known names).
//
// `bestMatch` answers which of the offered names fits this appearance best, as the platform does:
// its own name if offered, else the first offered name of the same family (light or dark), else
// none. A toolkit layer makes the current appearance from the desktop's colour-scheme preference
// and installs it with `setCurrent`; dynamic system colours (Color.h) resolve against it.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT PlatformAppearance {
  public:
    static constexpr std::string_view aquaName = "NSAppearanceNameAqua";
    static constexpr std::string_view darkAquaName = "NSAppearanceNameDarkAqua";
    static constexpr std::string_view vibrantLightName = "NSAppearanceNameVibrantLight";
    static constexpr std::string_view vibrantDarkName = "NSAppearanceNameVibrantDark";
    static constexpr std::string_view accessibilityHighContrastAquaName =
        "NSAppearanceNameAccessibilityHighContrastAqua";
    static constexpr std::string_view accessibilityHighContrastDarkAquaName =
        "NSAppearanceNameAccessibilityHighContrastDarkAqua";
    static constexpr std::string_view accessibilityHighContrastVibrantLightName =
        "NSAppearanceNameAccessibilityHighContrastVibrantLight";
    static constexpr std::string_view accessibilityHighContrastVibrantDarkName =
        "NSAppearanceNameAccessibilityHighContrastVibrantDark";

    explicit PlatformAppearance(std::string name) : name_(std::move(name)) {}

    [[nodiscard]] const std::string& name() const { return name_; }

    [[nodiscard]] std::optional<std::string_view> bestMatch(
        std::span<const std::string_view> fromAppearancesWithNames) const;

    // The appearance the process draws with; light ("NSAppearanceNameAqua") until a host says
    // otherwise.
    [[nodiscard]] static PlatformAppearance current();
    static void setCurrent(PlatformAppearance appearance);

    friend bool operator==(const PlatformAppearance&, const PlatformAppearance&) = default;

  private:
    std::string name_;
};

}  // namespace quod
