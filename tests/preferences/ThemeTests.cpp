#include <gtest/gtest.h>

#include <cmath>

#include "PreferencesTestSupport.h"
#include "quoddle/preferences/Appearance.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/preferences/Theme.h"

namespace quod {
namespace {

using ColorKey = Defaults::Key::Color;
using testing::PreferencesTest;

PlistArray components(const Color& color) {
    return color.defaultsArray(ColorKey::text);
}

void setAppearance(std::string_view name) {
    PlatformAppearance::setCurrent(PlatformAppearance(std::string(name)));
}

TEST_F(PreferencesTest, ColorsReadExactlyFourNumbers) {
    const Color comment = Color::defaultColor(ColorKey::comment);
    const struct {
        ColorKey key;
        PlistValue stored;
        Color expected;
    } cases[] = {
        {ColorKey::text, PlistArray{1.0, 0.0, 0.0}, Color::black()},
        {ColorKey::comment, PlistArray{0.1, 0.2, 0.3, 1.0, 0.0}, comment},
        {ColorKey::comment, PlistArray{0.1, "0.2", 0.3, 1.0}, comment},
        {ColorKey::comment, PlistArray{0.1, true, 0.3, 1.0}, comment},
        {ColorKey::comment, PlistValue("0.1 0.2 0.3 1"), comment},
        {ColorKey::comment, PlistArray{0.1, 0.2, 0.3, 0.5}, Color::withRed(0.1, 0.2, 0.3, 0.5)},
        {ColorKey::comment, PlistArray{1, 0, 0, 1}, Color::withRed(1, 0, 0, 1)},
        {ColorKey::selectedText, PlistArray{0.1, 0.2, 0.3, 1.0},
         Color::selectedTextBackgroundColor()},
    };
    for (const auto& c : cases) {
        store->setObject(c.key.rawValue(), c.stored);
        EXPECT_EQ(Color::forKey(c.key), c.expected) << c.key.rawValue();
    }
    EXPECT_EQ(Color::forKey(ColorKey::background), Color::white());  // nothing stored
}

TEST_F(PreferencesTest, StoredFormConvertsToRGBOrFallsBack) {
    EXPECT_EQ(components(Color::withCalibratedRed(0.25, 0.5, 0.75, 0.5)),
              (PlistArray{0.25, 0.5, 0.75, 0.5}));
    EXPECT_EQ(components(Color::darkGray()), (PlistArray{1.0 / 3, 1.0 / 3, 1.0 / 3, 1.0}));
    // A pattern has no components: the key's default stands in, in RGB even where it is gray.
    const Color pattern = Color::withPatternImage("stripes");
    EXPECT_EQ(pattern.defaultsArray(ColorKey::background), (PlistArray{1.0, 1.0, 1.0, 1.0}));
    EXPECT_EQ(pattern.defaultsArray(ColorKey::keyword), (PlistArray{0.84, 0.41, 0.006, 1.0}));
    // System colours take the value of the current appearance.
    const Color selection = Color::selectedTextBackgroundColor();
    setAppearance(PlatformAppearance::vibrantDarkName);
    const PlistArray dark = components(selection);
    setAppearance(PlatformAppearance::aquaName);
    EXPECT_EQ(components(selection), (PlistArray{0.698039, 0.843137, 1.0, 1.0}));
    EXPECT_NE(dark, components(selection));

    // A toolkit layer replaces one appearance's value; colours made later carry it.
    Color::setSystemColor(SystemColor::windowBackground, true, {0.1, 0.2, 0.3, 1.0});
    const Color window = Color::windowBackgroundColor();
    EXPECT_EQ(components(window), (PlistArray{0.92549, 0.92549, 0.92549, 1.0}));
    setAppearance(PlatformAppearance::darkAquaName);
    EXPECT_EQ(components(window), (PlistArray{0.1, 0.2, 0.3, 1.0}));
    EXPECT_EQ(components(Color::selectedTextBackgroundColor()), dark);
    setAppearance(PlatformAppearance::aquaName);

    // What defaultsArray stores, forKey reads back.
    const Color color = Color::withDeviceRed(0.2, 0.4, 0.6, 0.8);
    store->setObject("KeywordsColour", color.defaultsArray(ColorKey::keyword));
    EXPECT_EQ(Color::forKey(ColorKey::keyword), Color::withRed(0.2, 0.4, 0.6, 0.8));
}

TEST_F(PreferencesTest, HighlightAndShadowBlendTowardWhiteAndBlack) {
    const Color color = Color::withDeviceRed(0.25, 0.5, 0.75, 0.5);
    EXPECT_EQ(color.highlight(0.5), Color::withDeviceRed(0.625, 0.75, 0.875, 0.5));
    EXPECT_EQ(color.shadow(0.5), Color::withDeviceRed(0.125, 0.25, 0.375, 0.5));
    EXPECT_EQ(color.highlight(0), color);
    EXPECT_EQ(color.shadow(1), Color::withDeviceRed(0, 0, 0, 0.5));
    // Levels beyond the ends stop at white or black rather than overshooting.
    EXPECT_EQ(color.highlight(3), Color::withDeviceRed(1, 1, 1, 0.5));
    EXPECT_EQ(color.shadow(-2), color);
    EXPECT_EQ(color.shadow(std::nan("")), color);
    EXPECT_EQ(Color::withWhite(0.5, 1).shadow(0.5), Color::withWhite(0.25, 1));
    EXPECT_EQ(Color::withPatternImage("paper").highlight(0.2), std::nullopt);

    // A system colour blends the value of the appearance current at the time of asking.
    Color::setSystemColor(SystemColor::grid, false, {0.5, 0.5, 0.5, 1.0});
    Color::setSystemColor(SystemColor::grid, true, {0.0, 0.25, 0.5, 0.8});
    const Color grid = Color::gridColor();
    EXPECT_EQ(components(*grid.highlight(0.5)), (PlistArray{0.75, 0.75, 0.75, 1.0}));
    setAppearance(PlatformAppearance::darkAquaName);
    EXPECT_EQ(components(*grid.highlight(0.5)), (PlistArray{0.5, 0.625, 0.75, 0.8}));
    EXPECT_EQ(components(*grid.shadow(0.5)), (PlistArray{0.0, 0.125, 0.25, 0.8}));
    setAppearance(PlatformAppearance::aquaName);
}

TEST_F(PreferencesTest, BuiltInThemes) {
    const auto& themes = Theme::all();
    ASSERT_EQ(themes.size(), 4u);
    for (const PlistDictionary& theme : themes) {
        EXPECT_EQ(theme.size(), 17u);
        for (ColorKey key : ColorKey::allCases()) {
            const PlistArray* color = theme.at(std::string(key.rawValue())).as<PlistArray>();
            ASSERT_NE(color, nullptr) << key.rawValue();
            ASSERT_EQ(color->size(), 4u);
            EXPECT_EQ((*color)[3], PlistValue(1.0));
        }
        EXPECT_EQ(theme.at("InvisibleTextColour"), theme.at("TextColour"));
        EXPECT_EQ(theme.at("LineNumberFont"), PlistValue("Menlo-Regular@@@@9.00"));
    }
    const auto oslo = themes[static_cast<std::size_t>(Theme::City::oslo)];
    EXPECT_EQ(oslo.at("TextColour"), PlistValue(PlistArray{1.0, 1.0, 1.0, 1.0}));
    EXPECT_EQ(oslo.at("SelectedTextColour"), PlistValue(PlistArray{0.184, 0.215, 0.254, 1.0}));
    EXPECT_EQ(themes[1].at("CommandsColour"), PlistValue(PlistArray{0.171, 0.197, 0.615, 1.0}));
    EXPECT_EQ(themes[3].at("KeywordsColour"), PlistValue(PlistArray{0.828, 0.095, 0.583, 1.0}));

    // Text fonts: the fixed-pitch font at its default size, Helvetica Neue 13, the same as the
    // first, the fixed-pitch font at 16.
    const std::string_view textFonts[] = {"TestMono@@@@12.00", "HelveticaNeue@@@@13.00",
                                          "TestMono@@@@12.00", "TestMono@@@@16.00"};
    for (std::size_t i = 0; i < themes.size(); ++i) {
        EXPECT_EQ(themes[i].at("TextFont"), PlistValue(std::string(textFonts[i])));
    }

    // The gutter defaults differ slightly from stockholm's, on purpose.
    const PlistDictionary& stockholm = themes[0];
    EXPECT_NE(Color::defaultColor(ColorKey::lineNumberBackground).defaultsArray(ColorKey::text),
              *stockholm.at("LineNumberBackgroundColour").as<PlistArray>());
    // Storing a theme's entries applies it.
    for (const auto& [key, value] : oslo)
        store->setObject(key, value);
    EXPECT_EQ(Color::forKey(ColorKey::background), Color::withRed(0.121, 0.121, 0.141, 1.0));

    for (int64_t raw : {0, 1, 2, 3})
        EXPECT_EQ(static_cast<int64_t>(*Theme::cityFromRawValue(raw)), raw);
    for (int64_t raw : {-1, 4, 100})
        EXPECT_EQ(Theme::cityFromRawValue(raw), std::nullopt);
}

TEST(Appearance, MatchesLightOrDark) {
    const std::pair<std::string_view, Appearance> cases[] = {
        {PlatformAppearance::aquaName, Appearance::aqua},
        {PlatformAppearance::darkAquaName, Appearance::dark},
        {PlatformAppearance::vibrantLightName, Appearance::aqua},
        {PlatformAppearance::vibrantDarkName, Appearance::dark},
        {PlatformAppearance::accessibilityHighContrastDarkAquaName, Appearance::dark},
        {PlatformAppearance::accessibilityHighContrastAquaName, Appearance::aqua},
        {"MyDesktopTheme", Appearance::aqua},
        {"", Appearance::aqua},
    };
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(Appearance::match(PlatformAppearance(std::string(name))), expected) << name;
    }
}

TEST(FontCatalogue, FontconfigAnswersForWhatIsInstalled) {
    const auto fonts = FontCatalogue::fontconfig();
    const std::string system = fonts->systemFontName();
    EXPECT_FALSE(system.empty());
    EXPECT_GT(fonts->defaultPointSize(), 0);
    EXPECT_EQ(fonts->postScriptName("NoSuchFont-Regular-7f3a"), std::nullopt);
    EXPECT_EQ(fonts->postScriptName(""), std::nullopt);
    if (system != "sans-serif") {  // a machine with at least one font
        EXPECT_EQ(fonts->postScriptName(system), system);
    }
}

}  // namespace
}  // namespace quod
