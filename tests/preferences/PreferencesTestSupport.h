// A fresh in-memory standard store, a fixed font catalogue and the light appearance for every
// test, so no test depends on the machine's fonts, the user's files or another test's writes.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "quoddle/preferences/Font.h"
#include "quoddle/preferences/PlatformAppearance.h"
#include "quoddle/preferences/UserDefaults.h"

namespace quod::testing {

// Menlo and Helvetica Neue are installed; the fixed-pitch font is "TestMono", the system font
// "TestSans", and the default size 12.
inline std::shared_ptr<const FontCatalogue> testFonts(bool withMenlo = true) {
    std::vector<FontCatalogue::Face> faces{
        {"Courier", "Courier"},
        {"HelveticaNeue", "Helvetica Neue"},
        {"TestMono", "Test Mono"},
        {"TestSans", "Test Sans"},
    };
    if (withMenlo) {
        faces.push_back({"Menlo-Regular", "Menlo"});
        faces.push_back({"Menlo-Bold", "Menlo"});
    }
    return FontCatalogue::fixed(std::move(faces), "TestSans", "TestMono", 12);
}

class PreferencesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        UserDefaults::setStandard(store);
        Font::setCatalogue(testFonts());
        PlatformAppearance::setCurrent(
            PlatformAppearance(std::string(PlatformAppearance::aquaName)));
    }

    std::shared_ptr<UserDefaults> store = UserDefaults::inMemory();
};

}  // namespace quod::testing
