#include <gtest/gtest.h>

#include "quoddle/interface/Singleton.h"
#include "quoddle/interface/TitlebarHeight.h"

namespace quod {
namespace {

TEST(TitlebarHeight, AVisibleTabBarIsNotPartOfTheTitleBar) {
    EXPECT_EQ(titlebarHeight(622, 600, WindowTabBar::hidden), 22);
    EXPECT_EQ(titlebarHeight(650, 600, WindowTabBar::visible), 22);
    EXPECT_EQ(titlebarHeight(650, 600, WindowTabBar::hidden) -
                  titlebarHeight(650, 600, WindowTabBar::visible),
              28);
    EXPECT_EQ(titlebarHeight(400, 400, WindowTabBar::hidden), 0);  // a borderless window
}

TEST(Singleton, EveryKindNamesItsOwnFactoryEntry) {
    EXPECT_EQ(Singleton::storyboardIdentifier(Singleton::WindowController::preferences),
              "Preferences");
    EXPECT_EQ(Singleton::storyboardIdentifier(Singleton::WindowController::compare), "Compare");
    EXPECT_EQ(Singleton::storyboardIdentifier(Singleton::WindowController::find), "Find");
}

}  // namespace
}  // namespace quod
