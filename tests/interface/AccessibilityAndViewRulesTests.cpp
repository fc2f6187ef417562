#include <gio/gio.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>

#include "quoddle/interface/Accessibility.h"
#include "quoddle/interface/ViewRules.h"
#include "quoddle/preferences/Appearance.h"
#include "quoddle/preferences/UserDefaults.h"

namespace quod {
namespace {

// Desktop settings come from GSettings' in-memory backend, set before GIO first looks, so the
// answers depend neither on the machine's desktop nor on what the user chose there.
const bool memoryBackend = ::setenv("GSETTINGS_BACKEND", "memory", 1) == 0;

constexpr const char* a11ySchema = "org.gnome.desktop.a11y.interface";
constexpr const char* interfaceSchema = "org.gnome.desktop.interface";

class AccessibilityTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(memoryBackend);
        UserDefaults::setStandard(store);
        setAppearance(PlatformAppearance::aquaName);
    }
    void TearDown() override { setAppearance(PlatformAppearance::aquaName); }

    static void setAppearance(std::string_view name) {
        PlatformAppearance::setCurrent(PlatformAppearance(std::string(name)));
    }
    // Sets a boolean of the desktop's (in memory); false when the desktop schemas are missing.
    static bool setDesktop(const char* schema, const char* key, bool value) {
        if (!Interface::internal::desktopSetting(schema, key)) return false;
        const std::unique_ptr<GSettings, decltype(&g_object_unref)> settings(g_settings_new(schema),
                                                                             &g_object_unref);
        return g_settings_set_boolean(settings.get(), key, value) != FALSE;
    }

    std::shared_ptr<UserDefaults> store = UserDefaults::inMemory();
};

TEST_F(AccessibilityTest, AlphaIsOpaqueWhenTransparencyOrLowContrastWouldHurt) {
    store->setBool(Interface::reduceTransparencyKey, false);
    store->setBool(Interface::increaseContrastKey, false);
    EXPECT_EQ(Interface::alpha(0.8), 0.8);

    store->setBool(Interface::reduceTransparencyKey, true);
    EXPECT_TRUE(Interface::reduceTransparency());
    EXPECT_EQ(Interface::alpha(0.8), 1.0);

    store->setBool(Interface::reduceTransparencyKey, false);
    store->setBool(Interface::increaseContrastKey, true);
    EXPECT_TRUE(Interface::contrast());
    EXPECT_EQ(Interface::alpha(0.8), 1.0);
}

TEST_F(AccessibilityTest, StoredChoiceWinsOverTheDesktop) {
    if (!setDesktop(a11ySchema, "high-contrast", true) ||
        !setDesktop(interfaceSchema, "enable-animations", false)) {
        GTEST_SKIP() << "the desktop's GSettings schemas are not installed";
    }
    EXPECT_TRUE(Interface::contrast());
    EXPECT_TRUE(Interface::reduceMotion());
    EXPECT_FALSE(Interface::reduceTransparency());  // the desktop has no such setting

    store->setBool(Interface::increaseContrastKey, false);
    store->setBool(Interface::reduceMotionKey, false);
    EXPECT_FALSE(Interface::contrast());
    EXPECT_FALSE(Interface::reduceMotion());

    store->removeObject(Interface::increaseContrastKey);
    store->removeObject(Interface::reduceMotionKey);
    ASSERT_TRUE(setDesktop(a11ySchema, "high-contrast", false));
    ASSERT_TRUE(setDesktop(interfaceSchema, "enable-animations", true));
    EXPECT_FALSE(Interface::contrast());
    EXPECT_FALSE(Interface::reduceMotion());
    store->setBool(Interface::reduceMotionKey, true);
    EXPECT_TRUE(Interface::reduceMotion());
}

TEST_F(AccessibilityTest, MissingDesktopSettingsHaveNoAnswerAndDoNotAbort) {
    EXPECT_EQ(Interface::internal::desktopSetting("org.quoddle.no-such-schema", "high-contrast"),
              std::nullopt);
    if (!Interface::internal::desktopSetting(interfaceSchema, "enable-animations")) {
        GTEST_SKIP() << "the desktop's GSettings schemas are not installed";
    }
    EXPECT_EQ(Interface::internal::desktopSetting(interfaceSchema, "no-such-key"), std::nullopt);
    // A key of another type would make GSettings complain on a boolean read.
    EXPECT_EQ(Interface::internal::desktopSetting(interfaceSchema, "gtk-theme"), std::nullopt);
}

TEST_F(AccessibilityTest, GroupRowColorIsTheUnderPageColourLightenedAndTranslucent) {
    Color::setSystemColor(SystemColor::underPageBackground, false, {0.5, 0.5, 0.5, 1.0});
    Color::setSystemColor(SystemColor::underPageBackground, true, {0.0, 0.25, 0.5, 1.0});

    const Color light = Interface::groupRowColor();
    EXPECT_NEAR(light.redComponent(), 0.85, 1e-12);  // 0.7 of the way to white
    EXPECT_NEAR(light.blueComponent(), 0.85, 1e-12);
    EXPECT_EQ(light.alphaComponent(), 0.52);

    setAppearance(PlatformAppearance::darkAquaName);
    const Color dark = Interface::groupRowColor();
    EXPECT_NEAR(dark.redComponent(), 0.2, 1e-12);  // 0.2 of the way to white
    EXPECT_NEAR(dark.greenComponent(), 0.4, 1e-12);
    EXPECT_NEAR(dark.blueComponent(), 0.6, 1e-12);
    EXPECT_EQ(dark.alphaComponent(), 0.52);

    store->setBool(Interface::reduceTransparencyKey, true);
    EXPECT_EQ(Interface::groupRowColor().alphaComponent(), 1.0);
    EXPECT_NEAR(Interface::groupRowColor().greenComponent(), 0.4, 1e-12);
    // Increased contrast alone leaves the row translucent: only transparency is asked about.
    store->setBool(Interface::reduceTransparencyKey, false);
    store->setBool(Interface::increaseContrastKey, true);
    EXPECT_EQ(Interface::groupRowColor().alphaComponent(), 0.52);
}

TEST(ViewRules, CentredTitleRectSplitsTheSpareHeight) {
    const Rect title{{4, 10}, {80, 20}};
    EXPECT_EQ(Interface::centeredTitleRect(title, 14), (Rect{{4, 13}, {80, 14}}));
    EXPECT_EQ(Interface::centeredTitleRect(title, 20), title);
    // Too tall: it starts above the rectangle by half the excess.
    EXPECT_EQ(Interface::centeredTitleRect(title, 30), (Rect{{4, 5}, {80, 30}}));
}

}  // namespace
}  // namespace quod
