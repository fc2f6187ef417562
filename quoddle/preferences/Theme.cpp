#include "quoddle/preferences/Theme.h"

#include <array>
#include <string_view>

#include "quoddle/preferences/DefaultAccessors.h"
#include "quoddle/preferences/DefaultsKey.h"
#include "quoddle/preferences/Font.h"

namespace quod::Theme {
namespace {

using Key = Defaults::Key::Color;
using Rgb = std::array<double, 3>;

// One row per colour key; columns stockholm, copenhagen, oslo, helsinki. Alpha is 1 throughout.
struct ColorRow {
    Key key;
    std::array<Rgb, 4> cities;
};

// clang-format off
constexpr ColorRow colorRows[] = {
    {Key::command, {{{0.0, 0.24, 1.0}, {0.171, 0.197, 0.615}, {0.325, 0.647, 0.984}, {0.0, 0.626, 1.0}}}},
    {Key::comment, {{{0.0, 0.69, 0.001}, {0.509, 0.785, 0.469}, {0.568, 0.831, 0.384}, {0.255, 0.801, 0.27}}}},
    {Key::instruction, {{{0.42, 0.42, 0.43}, {0.45, 0.45, 0.46}, {0.423, 0.474, 0.525}, {0.36, 0.36, 0.37}}}},
    {Key::keyword, {{{0.84, 0.41, 0.006}, {0.84, 0.41, 0.006}, {0.992, 0.56, 0.247}, {0.828, 0.095, 0.583}}}},
    {Key::api, {{{0.25, 0.43, 0.45}, {0.25, 0.43, 0.45}, {0.988, 0.372, 0.639}, {0.25, 0.43, 0.45}}}},
    {Key::variable, {{{0.73, 0.0, 0.74}, {0.73, 0.0, 0.74}, {0.588, 0.525, 0.96}, {0.73, 0.0, 0.74}}}},
    {Key::string, {{{0.95, 0.0, 0.0}, {0.875, 0.027, 0.0}, {0.988, 0.415, 0.364}, {0.95, 0.0, 0.0}}}},
    {Key::attribute, {{{0.5, 0.5, 0.2}, {0.5, 0.5, 0.2}, {0.458, 0.705, 0.572}, {0.247, 0.345, 0.454}}}},
    {Key::text, {{{0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, {0.0, 0.0, 0.0}}}},
    {Key::invisibleText, {{{0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, {0.0, 0.0, 0.0}}}},
    {Key::selectedText, {{{0.698039, 0.843137, 1.0}, {0.698039, 0.843137, 1.0}, {0.184, 0.215, 0.254}, {0.512, 0.488, 0.378}}}},
    {Key::background, {{{1.0, 1.0, 1.0}, {0.99, 0.988, 0.944}, {0.121, 0.121, 0.141}, {0.98, 0.98, 0.98}}}},
    {Key::highlightLine, {{{0.96, 0.96, 0.71}, {0.86, 0.901, 0.178}, {0.141, 0.145, 0.168}, {0.98, 0.98, 0.73}}}},
    {Key::lineNumberText, {{{0.333, 0.333, 0.333}, {0.333, 0.333, 0.333}, {0.66, 0.66, 0.66}, {0.333, 0.333, 0.333}}}},
    {Key::lineNumberBackground, {{{0.969, 0.969, 0.973}, {0.99, 0.988, 0.944}, {0.101, 0.101, 0.121}, {0.969, 0.969, 0.973}}}},
};
// clang-format on

Font fontOrSystem(std::string_view name, double size) {
    if (auto font = Font::withName(name, size)) return *font;
    return Font::systemFont(size);
}

// The user's fixed-pitch font, else Menlo, else the system font. Size 0 is the default size.
Font fixedPitchFont(double size) {
    if (auto font = Font::userFixedPitchFont(size)) return *font;
    return fontOrSystem("Menlo", size);
}

std::vector<PlistDictionary> buildThemes() {
    const std::string lineNumberFont = DefaultFont::storedString(fontOrSystem("Menlo", 9));
    const std::string defaultTextFont = DefaultFont::storedString(fixedPitchFont(0));
    const std::array<std::string, 4> textFonts{
        defaultTextFont,
        DefaultFont::storedString(fontOrSystem("HelveticaNeue", 13)),
        defaultTextFont,
        DefaultFont::storedString(fixedPitchFont(16)),
    };
    std::vector<PlistDictionary> themes(4);
    for (std::size_t city = 0; city < themes.size(); ++city) {
        PlistDictionary& theme = themes[city];
        for (const ColorRow& row : colorRows) {
            const Rgb& rgb = row.cities[city];
            theme.emplace(row.key.rawValue(), PlistArray{rgb[0], rgb[1], rgb[2], 1.0});
        }
        theme.emplace(Defaults::Key::Font::lineNumber.rawValue(), lineNumberFont);
        theme.emplace(Defaults::Key::Font::text.rawValue(), textFonts[city]);
    }
    return themes;
}

}  // namespace

const std::vector<PlistDictionary>& all() {
    static const std::vector<PlistDictionary> themes = buildThemes();
    return themes;
}

}  // namespace quod::Theme
