// Joining texts for either writing direction, column sets, the views' attribute sets and the
// icon names of files.
#include <gtest/gtest.h>
#include <unicode/ubidi.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <vector>

#include "quoddle/base/Utf.h"
#include "quoddle/filesystem/Url.h"
#include "quoddle/interface/Attributes.h"
#include "quoddle/interface/BidirectionalString.h"
#include "quoddle/interface/ColumnProtocol.h"
#include "quoddle/interface/ContentTypeIcon.h"
#include "quoddle/interface/UserInterfaceLayoutDirection.h"
#include "quoddle/runtime/Localize.h"
#include "tests/preferences/PreferencesTestSupport.h"
#include "tests/support/JobColumns.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

// What a reader sees, left to right, when `text` is shown in a paragraph of `paragraphLevel`
// (UBIDI_LTR, UBIDI_RTL, or UBIDI_DEFAULT_LTR for a direction taken from the text): the
// Unicode bidirectional algorithm as ICU runs it, mirrored characters mirrored, controls gone.
std::string shown(const std::string& text, UBiDiLevel paragraphLevel) {
    const std::u16string logical = toUtf16(text);
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UBiDi, decltype(&ubidi_close)> bidi(ubidi_open(), &ubidi_close);
    ubidi_setPara(bidi.get(), logical.data(), static_cast<int32_t>(logical.size()), paragraphLevel,
                  nullptr, &status);
    std::u16string visual(logical.size(), u'\0');
    const int32_t length =
        ubidi_writeReordered(bidi.get(), visual.data(), static_cast<int32_t>(visual.size()),
                             UBIDI_DO_MIRRORING | UBIDI_REMOVE_BIDI_CONTROLS, &status);
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    visual.resize(static_cast<std::size_t>(std::max(length, 0)));
    return toUtf8(visual);
}

class Bidirectional : public ::testing::Test {
  protected:
    void TearDown() override {
        Interface::setUserInterfaceLayoutDirection(UserInterfaceLayoutDirection::leftToRight);
    }
    // "Notes", "summary" in Hebrew, a number: left alone, the number would join the Hebrew run.
    const std::array<std::string_view, 3> parts{"Notes", "תקציר", "2024"};
};

TEST_F(Bidirectional, PartsKeepTheirOrderInTheInterfacesDirectionInAnyParagraph) {
    const std::string naive = "Notes > תקציר > 2024";
    EXPECT_EQ(shown(naive, UBIDI_LTR), "Notes > 2024 < ריצקת");  // the parts swapped

    const std::string leftToRight = Interface::bidirectionalString(parts, " > ");
    Interface::setUserInterfaceLayoutDirection(UserInterfaceLayoutDirection::rightToLeft);
    const std::string rightToLeft = Interface::bidirectionalString(parts, " > ");
    for (const UBiDiLevel paragraph :
         {UBiDiLevel{UBIDI_LTR}, UBiDiLevel{UBIDI_RTL}, UBiDiLevel{UBIDI_DEFAULT_LTR}}) {
        SCOPED_TRACE(static_cast<int>(paragraph));
        EXPECT_EQ(shown(leftToRight, paragraph), "Notes > ריצקת > 2024");
        // Mirrored: the first part at the right, the separator pointing right to left.
        EXPECT_EQ(shown(rightToLeft, paragraph), "2024 < ריצקת < Notes");
    }
    // Embedded in a sentence of the other direction, the joined parts still keep their order.
    EXPECT_EQ(shown("שלום " + leftToRight, UBIDI_DEFAULT_LTR), "Notes > ריצקת > 2024 םולש");
}

TEST_F(Bidirectional, NoPartsGiveNothingAndEmptyPartsStay) {
    EXPECT_EQ(Interface::bidirectionalString(std::vector<std::string>{}, ", "), "");
    EXPECT_EQ(Interface::bidirectionalString({"a", "", "b"}, ","),
              "\u2066\u2068a\u2069,\u2068\u2069,\u2068b\u2069\u2069");
}

using quod::testing::JobColumn;
using quod::testing::JobColumns;

TEST(ColumnProtocol, FindsColumnsByTheirExactIdentifierAndListsThemInDisplayOrder) {
    EXPECT_EQ(JobColumns::allCases(),
              (std::vector{JobColumn::status, JobColumn::name, JobColumn::scheduled}));
    EXPECT_EQ(JobColumns::column("Scheduled"), JobColumn::scheduled);
    EXPECT_EQ(JobColumns::column(UserInterfaceItemIdentifier::Column::name()), JobColumn::name);
    EXPECT_EQ(JobColumns::column("scheduled"), std::nullopt);
    EXPECT_EQ(JobColumns::column("DataCell"), std::nullopt);
    EXPECT_EQ(JobColumns::column(""), std::nullopt);
    EXPECT_EQ(JobColumns::section(JobColumn::scheduled), 2u);
    EXPECT_EQ(JobColumns::title(JobColumn::status), "Status");
    const std::vector<ColumnHeader> headers = JobColumns::headers();
    ASSERT_EQ(headers.size(), 3u);
    EXPECT_EQ(headers[1].identifier.rawValue(), "Name");
    EXPECT_EQ(headers[2].title, "Scheduled");
}

TEST(ColumnProtocolDeathTest, AskingAboutACaseOutsideTheSetStops) {
    EXPECT_DEATH((void)JobColumns::title(static_cast<JobColumn>(7)), "column set");
}

class AttributeSets : public testing::PreferencesTest {
  protected:
    void TearDown() override {
        Interface::setUserInterfaceLayoutDirection(UserInterfaceLayoutDirection::leftToRight);
    }
};

TEST_F(AttributeSets, FollowThePreferencesAndTheLayoutDirectionAtEveryCall) {
    const Attributes before = Attributes::lineNumbers();
    EXPECT_EQ(before.font->fontName(), "Menlo-Regular");  // the fallback, nothing stored
    EXPECT_EQ(before.paragraphStyle->alignment, TextAlignment::right);

    store->setObject("LineNumberFont", std::string("Courier@@@@9.50"));
    store->setObject("LineNumberTextColour", PlistArray{1.0, 0.0, 0.0, 1.0});
    store->setObject("TextFont", std::string("HelveticaNeue@@@@15.00"));
    store->setObject("BackgroundColour", PlistArray{0.0, 0.0, 0.25, 1.0});
    Interface::setUserInterfaceLayoutDirection(UserInterfaceLayoutDirection::rightToLeft);

    const Attributes numbers = Attributes::lineNumbers();
    EXPECT_EQ(numbers.font, Font::withName("Courier", 9.5));
    EXPECT_EQ(numbers.foregroundColor, Color::withRed(1, 0, 0, 1));
    EXPECT_EQ(numbers.backgroundColor, Color::forKey(Defaults::Key::Color::lineNumberBackground));
    EXPECT_EQ(numbers.paragraphStyle->alignment, TextAlignment::left);

    const Attributes result = Attributes::result();
    EXPECT_EQ(result.font, Font::withName("HelveticaNeue", 15));
    EXPECT_EQ(result.backgroundColor, Color::withRed(0, 0, 0.25, 1));
    EXPECT_EQ(result.paragraphStyle->alignment, TextAlignment::natural);

    const Attributes status = Attributes::statusLine();
    EXPECT_EQ(status.font, Font::systemFont(11));
    EXPECT_EQ(status.foregroundColor, Color::textColor());
    EXPECT_FALSE(status.backgroundColor.has_value());
}

TEST(IconNames, GoFromTheContentTypesOwnIconToTheDesktopsGenericOnes) {
    const quod::testing::TemporaryFolder folder("icon-names");
    const auto names = [&](const std::string& relative, bool directory = false) {
        return Interface::iconNames(Url::fileURL(folder.path(relative).string(), directory));
    };
    const auto position = [](const std::vector<std::string>& list, std::string_view name) {
        return std::ranges::find(list, name) - list.begin();
    };
    const auto once = [](const std::vector<std::string>& list) {
        return std::set<std::string>(list.begin(), list.end()).size() == list.size();
    };
    // The last full-colour name; the symbolic ones all come after it.
    const auto lastInColour = [](const std::vector<std::string>& list) {
        const auto symbolic = [](const std::string& name) { return name.ends_with("-symbolic"); };
        const auto firstSymbolic = std::ranges::find_if(list, symbolic);
        EXPECT_TRUE(std::all_of(firstSymbolic, list.end(), symbolic));
        return firstSymbolic == list.begin() ? std::string() : *std::prev(firstSymbolic);
    };

    folder.write("notes.txt", "Shopping: bread, milk\n");
    const auto text = names("notes.txt");
    EXPECT_EQ(text.front(), "text-plain");
    EXPECT_LT(position(text, "text-plain"), position(text, "text-x-generic"));
    EXPECT_EQ(lastInColour(text), "application-octet-stream");
    EXPECT_NE(std::ranges::find(text, "text-x-generic-symbolic"), text.end());
    EXPECT_TRUE(once(text));

    // The contents decide where the name says nothing.
    folder.write("blob", std::string("\x7f"
                                     "ELF\x02\x01\x01\0\0\0",
                                     10));
    folder.write("readme", "Plain words in a file without an extension.\n");
    const auto binary = names("blob");
    const auto words = names("readme");
    EXPECT_EQ(std::ranges::find(binary, "text-x-generic"), binary.end());
    EXPECT_EQ(lastInColour(binary), "application-octet-stream");
    EXPECT_NE(std::ranges::find(words, "text-x-generic"), words.end());

    // Missing files go by their name, folders end with the generic folder.
    const auto image = names("missing.png");
    EXPECT_EQ(image.front(), "image-png");
    EXPECT_LT(position(image, "image-x-generic"), position(image, "application-octet-stream"));
    EXPECT_EQ(lastInColour(names("", true)), "folder");
    EXPECT_EQ(lastInColour(names("gone/", true)), "folder");
    EXPECT_EQ(Interface::iconNames(Url()), std::vector<std::string>{"application-octet-stream"});
}

}  // namespace
}  // namespace quod
