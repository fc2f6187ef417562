#include "quoddle/preferences/Color.h"

#include <algorithm>
#include <mutex>

#include "quoddle/base/Precondition.h"
#include "quoddle/preferences/Appearance.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/preferences/ValueConversions.h"

namespace quod {
namespace {

using Key = Defaults::Key::Color;

bool isRGBSpace(ColorSpace space) {
    return space == ColorSpace::sRGB || space == ColorSpace::deviceRGB ||
           space == ColorSpace::genericRGB;
}

}  // namespace

Color Color::withRed(double red, double green, double blue, double alpha) {
    return Color(ColorSpace::sRGB, {red, green, blue, alpha});
}

Color Color::withDeviceRed(double red, double green, double blue, double alpha) {
    return Color(ColorSpace::deviceRGB, {red, green, blue, alpha});
}

Color Color::withCalibratedRed(double red, double green, double blue, double alpha) {
    return Color(ColorSpace::genericRGB, {red, green, blue, alpha});
}

Color Color::withWhite(double white, double alpha) {
    return Color(ColorSpace::genericGray, {white, white, white, alpha});
}

Color Color::withPatternImage(std::string imageName) {
    return Color(ColorSpace::pattern, {0, 0, 0, 1}, {}, std::move(imageName));
}

Color Color::white() {
    return withWhite(1, 1);
}
Color Color::black() {
    return withWhite(0, 1);
}
Color Color::darkGray() {
    return withWhite(1.0 / 3.0, 1);
}

namespace {

struct SystemColorValues {
    std::array<double, 4> light;
    std::array<double, 4> dark;
};

// Light values are the classic desktop colours; dark values those of the platform's dark look.
// Indexed by SystemColor.
std::array<SystemColorValues, 7> systemColorTable = {{
    {{0.698039, 0.843137, 1.0, 1.0}, {0.247059, 0.388235, 0.545098, 1.0}},
    {{0.92549, 0.92549, 0.92549, 1.0}, {0.196078, 0.196078, 0.196078, 1.0}},
    {{0.0, 0.0, 0.0, 1.0}, {1.0, 1.0, 1.0, 0.85}},
    {{1.0, 1.0, 1.0, 1.0}, {0.117647, 0.117647, 0.117647, 1.0}},
    {{0.0, 0.0, 0.0, 0.1}, {1.0, 1.0, 1.0, 0.1}},
    {{0.901961, 0.901961, 0.901961, 1.0}, {0.101961, 0.101961, 0.101961, 1.0}},
    {{0.588235, 0.588235, 0.588235, 1.0}, {0.156863, 0.156863, 0.156863, 1.0}},
}};
std::mutex systemColorMutex;

}  // namespace

Color Color::systemColor(SystemColor color) {
    std::lock_guard lock(systemColorMutex);
    const SystemColorValues& values = systemColorTable.at(static_cast<size_t>(color));
    return Color(ColorSpace::system, values.light, values.dark);
}

void Color::setSystemColor(SystemColor color, bool forDarkAppearance, std::array<double, 4> value) {
    std::lock_guard lock(systemColorMutex);
    SystemColorValues& values = systemColorTable.at(static_cast<size_t>(color));
    (forDarkAppearance ? values.dark : values.light) = value;
}

Color Color::selectedTextBackgroundColor() {
    return systemColor(SystemColor::selectedTextBackground);
}
Color Color::windowBackgroundColor() {
    return systemColor(SystemColor::windowBackground);
}
Color Color::textColor() {
    return systemColor(SystemColor::text);
}
Color Color::textBackgroundColor() {
    return systemColor(SystemColor::textBackground);
}
Color Color::separatorColor() {
    return systemColor(SystemColor::separator);
}
Color Color::gridColor() {
    return systemColor(SystemColor::grid);
}
Color Color::underPageBackgroundColor() {
    return systemColor(SystemColor::underPageBackground);
}

bool Color::isRGB() const {
    return isRGBSpace(space_);
}

const Color::Components& Color::effectiveComponents() const {
    if (space_ == ColorSpace::system &&
        Appearance::match(PlatformAppearance::current()) == Appearance::dark) {
        return dark_;
    }
    return components_;
}

std::optional<Color> Color::usingColorSpace(ColorSpace space) const {
    QUOD_PRECONDITION(isRGBSpace(space), "colours convert only to an RGB space");
    if (space_ == ColorSpace::pattern) return std::nullopt;
    return Color(space, effectiveComponents());
}

std::optional<Color> Color::blended(double level, double target) const {
    if (space_ == ColorSpace::pattern) return std::nullopt;
    // `!(level > 0)` also catches NaN, which would otherwise poison every component.
    const double fraction = !(level > 0) ? 0.0 : std::min(level, 1.0);
    Components result = effectiveComponents();
    for (size_t i = 0; i < 3; ++i)
        result[i] += (target - result[i]) * fraction;
    return Color(space_ == ColorSpace::system ? ColorSpace::sRGB : space_, result);
}

std::optional<Color> Color::highlight(double level) const {
    return blended(level, 1.0);
}

std::optional<Color> Color::shadow(double level) const {
    return blended(level, 0.0);
}

double Color::redComponent() const {
    QUOD_PRECONDITION(isRGB(), "red component of a colour not in an RGB space");
    return components_[0];
}
double Color::greenComponent() const {
    QUOD_PRECONDITION(isRGB(), "green component of a colour not in an RGB space");
    return components_[1];
}
double Color::blueComponent() const {
    QUOD_PRECONDITION(isRGB(), "blue component of a colour not in an RGB space");
    return components_[2];
}
double Color::whiteComponent() const {
    QUOD_PRECONDITION(space_ == ColorSpace::genericGray, "white component of a non-gray colour");
    return components_[0];
}
double Color::alphaComponent() const {
    return effectiveComponents()[3];
}

Color Color::forKey(Key key) {
    if (key == Key::selectedText) return selectedTextBackgroundColor();
    if (const auto stored = UserDefaults::standard()->arrayForKey(key.rawValue())) {
        if (const auto numbers = internal::numberList(*stored); numbers && numbers->size() == 4) {
            const auto& n = *numbers;
            return withRed(n[0], n[1], n[2], n[3]);
        }
    }
    return defaultColor(key);
}

Color Color::defaultColor(Key key) {
    if (key == Key::background || key == Key::lineNumberBackground) return white();
    if (key == Key::invisibleText || key == Key::text) return black();
    if (key == Key::lineNumberText) return darkGray();
    struct Entry {
        Key key;
        Components components;
    };
    static constexpr Entry table[] = {
        {Key::api, {0.25, 0.43, 0.45, 1.0}},
        {Key::attribute, {0.5, 0.5, 0.2, 1.0}},
        {Key::command, {0.0, 0.24, 1.0, 1.0}},
        {Key::comment, {0.0, 0.69, 0.001, 1.0}},
        {Key::highlightLine, {0.96, 0.96, 0.71, 1.0}},
        {Key::instruction, {0.42, 0.42, 0.43, 1.0}},
        {Key::keyword, {0.84, 0.41, 0.006, 1.0}},
        {Key::selectedText, {0.698039, 0.843137, 1.0, 1.0}},
        {Key::string, {0.95, 0.0, 0.0, 1.0}},
        {Key::variable, {0.73, 0.0, 0.74, 1.0}},
    };
    for (const Entry& entry : table) {
        if (entry.key == key) {
            const auto& c = entry.components;
            return withRed(c[0], c[1], c[2], c[3]);
        }
    }
    QUOD_PRECONDITION(false, "colour key without a default");
    return black();
}

PlistArray Color::defaultsArray(Key key) const {
    auto converted = usingColorSpace(ColorSpace::deviceRGB);
    if (!converted) converted = usingColorSpace(ColorSpace::genericRGB);
    if (!converted) converted = usingColorSpace(ColorSpace::sRGB);
    // Some defaults are gray (white, black); storing needs their RGB form.
    if (!converted) converted = defaultColor(key).usingColorSpace(ColorSpace::deviceRGB);
    const Components& c = converted->components_;
    return PlistArray{c[0], c[1], c[2], c[3]};
}

}  // namespace quod
