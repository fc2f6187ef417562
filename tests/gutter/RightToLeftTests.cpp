// The gutter in a right-to-left interface. A process of its own: the shared attributes take the
// layout direction once, when the first gutter is set up.
#include <gtest/gtest.h>
#include <unicode/locid.h>

#include "GutterTestSupport.h"
#include "quoddle/base/CurrentLocale.h"
#include "quoddle/interface/UserInterfaceLayoutDirection.h"

namespace quod::testing {
namespace {

class RightToLeft : public GutterTest {
  protected:
    void SetUp() override {
        Interface::setUserInterfaceLayoutDirection(UserInterfaceLayoutDirection::rightToLeft);
        GutterTest::SetUp();
    }
};

TEST_F(RightToLeft, SeparatorOnTheLeftNumbersLeftAlignedAndInsetThree) {
    setUpGutter(u"a\nb");
    waitForObservation();
    gutter.updateLayer(surface);
    const auto& separator = std::get<RecordingSurface::Line>(surface.commands()[1]);
    EXPECT_EQ(separator.from, (Point{0.5, 0}));
    EXPECT_EQ(separator.to, (Point{0.5, 140}));
    const std::vector<TextRun> runs = surface.texts();
    ASSERT_EQ(runs.size(), 2u);
    for (const TextRun& run : runs) {
        EXPECT_EQ(run.alignment, TextAlignment::left);
        EXPECT_EQ(run.frame.minX(), 3.0);
    }
}

TEST_F(RightToLeft, NumbersAreWrittenForTheCurrentLocale) {
    setCurrentLocale(icu::Locale("ar_EG"));
    setUpGutter(numberedText(12));
    waitForObservation();
    gutter.updateLayer(surface);
    const std::vector<TextRun> runs = surface.texts();
    ASSERT_EQ(runs.size(), 11u);  // ten visible lines and the first past them
    EXPECT_EQ(runs[0].text, "\u0661");
    EXPECT_EQ(runs[10].text, "\u0661\u0661");
    setCurrentLocale(icu::Locale("en_US"));
    gutter.updateLayer(surface);
    EXPECT_EQ(surface.texts()[10].text, "11");
}

}  // namespace
}  // namespace quod::testing
