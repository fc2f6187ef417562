// A colour as preferences, themes and views know it, with how a colour setting is stored and read.
//
// A colour is one of:
//   - component based: red, green, blue and alpha in an RGB space (sRGB, device or generic), or a
//     white level and alpha in the generic gray space;
//   - a system colour (`ColorSpace::system`): one of the platform's named colours, which has a
//     light and a dark value and takes the one of the current appearance (PlatformAppearance.h)
//     whenever it is converted or its alpha is asked for;
//   - a pattern drawn from an image, which has no components and converts to no RGB space.
// Converting between RGB spaces keeps the components: the framework does no colour management.
// Gray converts to RGB as equal red, green and blue.
//
// Stored form of a colour setting: an array of exactly four numbers, red, green, blue, alpha,
// under the key string of its `Defaults::Key::Color`.
//   - `forKey` reads it. "SelectedTextColour" is never read: selections always follow the
//     system's selected-text background. Otherwise an array of exactly four numbers (reals, or
//     integers a double holds exactly) is the colour; anything else (absent, three or five
//     numbers, a string among them) reads as `defaultColor(forKey)`.
//   - `defaultsArray` makes it: this colour in device RGB, else generic RGB, else sRGB, else (a
//     pattern) the key's default colour, as [red, green, blue, alpha].
//
//   UserDefaults::standard()->setObject("TextColour", PlistArray{1.0, 0.0, 0.0});  // 3 numbers
//   Color::forKey(Defaults::Key::Color::text) == Color::black()                    // the default
#pragma once

#include <array>
#include <optional>
#include <string>
#include <utility>

#include "quoddle/Export.h"
#include "quoddle/preferences/DefaultsKey.h"
#include "quoddle/preferences/PropertyList.h"

namespace quod {

enum class ColorSpace { sRGB, deviceRGB, genericRGB, genericGray, system, pattern };

// The platform's named colours that the framework draws with.
enum class SystemColor {
    selectedTextBackground,
    windowBackground,
    text,
    textBackground,
    separator,
    grid,
    underPageBackground,
};

class QUODDLE_EXPORT Color {
  public:
    // Component-based colours: sRGB (what preferences read into), device RGB, generic
    // ("calibrated") RGB, generic gray. Components are kept as given.
    [[nodiscard]] static Color withRed(double red, double green, double blue, double alpha);
    [[nodiscard]] static Color withDeviceRed(double red, double green, double blue, double alpha);
    [[nodiscard]] static Color withCalibratedRed(double red, double green, double blue,
                                                 double alpha);
    [[nodiscard]] static Color withWhite(double white, double alpha);
    [[nodiscard]] static Color withPatternImage(std::string imageName);

    // The platform's fixed colours, in generic gray: white 1, black 0, dark gray 1/3.
    [[nodiscard]] static Color white();
    [[nodiscard]] static Color black();
    [[nodiscard]] static Color darkGray();

    // The platform's system colours, each with a light and a dark value: the classic desktop
    // colours until a toolkit layer tells the desktop's own with `setSystemColor`.
    [[nodiscard]] static Color selectedTextBackgroundColor();
    [[nodiscard]] static Color windowBackgroundColor();
    [[nodiscard]] static Color textColor();
    [[nodiscard]] static Color textBackgroundColor();
    [[nodiscard]] static Color separatorColor();
    [[nodiscard]] static Color gridColor();
    [[nodiscard]] static Color underPageBackgroundColor();
    [[nodiscard]] static Color systemColor(SystemColor color);
    // What the desktop uses for `color` in the light or the dark appearance, as red, green, blue
    // and alpha. Colours made afterwards carry the new values; any thread may call it.
    static void setSystemColor(SystemColor color, bool forDarkAppearance,
                               std::array<double, 4> value);

    [[nodiscard]] ColorSpace colorSpace() const { return space_; }

    // This colour in `space`, which must be one of the three RGB spaces; no value for a pattern.
    [[nodiscard]] std::optional<Color> usingColorSpace(ColorSpace space) const;

    // This colour blended toward white (`highlight`) or black (`shadow`) by `level`: 0 leaves it,
    // 1 gives white or black, each of red, green and blue moving that fraction of the way; alpha is
    // kept. A level outside 0 to 1 is clamped (NaN counts as 0). A gray colour stays gray, an RGB
    // colour keeps its space, a system colour is resolved for the current appearance into sRGB.
    // No value for a pattern, which has no components to blend.
    //   Color::withRed(0.25, 0.5, 0.75, 0.5).highlight(0.5)  // (0.625, 0.75, 0.875, 0.5)
    [[nodiscard]] std::optional<Color> highlight(double level) const;
    [[nodiscard]] std::optional<Color> shadow(double level) const;

    // Components of an RGB colour; asking another colour is a programming error (convert first).
    [[nodiscard]] double redComponent() const;
    [[nodiscard]] double greenComponent() const;
    [[nodiscard]] double blueComponent() const;
    // The white level of a gray colour; asking another colour is a programming error.
    [[nodiscard]] double whiteComponent() const;
    // Any colour's opacity (1 for a pattern).
    [[nodiscard]] double alphaComponent() const;

    [[nodiscard]] static Color forKey(Defaults::Key::Color key);
    [[nodiscard]] static Color defaultColor(Defaults::Key::Color key);
    [[nodiscard]] PlistArray defaultsArray(Defaults::Key::Color key) const;

    // Same kind and same values (a system colour: same light and dark values).
    friend bool operator==(const Color&, const Color&) = default;

  private:
    using Components = std::array<double, 4>;
    Color(ColorSpace space, Components components, Components dark = {}, std::string image = {})
        : space_(space), components_(components), dark_(dark), image_(std::move(image)) {}

    [[nodiscard]] bool isRGB() const;
    // The components that apply now: a system colour's value for the current appearance.
    [[nodiscard]] const Components& effectiveComponents() const;
    // Each of red, green and blue moved `level` of the way to `target` (0 or 1).
    [[nodiscard]] std::optional<Color> blended(double level, double target) const;

    ColorSpace space_;
    Components components_;  // RGBA; gray keeps {white, white, white, alpha}; system: light value
    Components dark_;        // system colours only
    std::string image_;      // patterns only
};

}  // namespace quod
