#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "quoddle/runtime/Bundle.h"
#include "quoddle/runtime/ErrorType.h"
#include "quoddle/runtime/InfoPlist.h"
#include "quoddle/runtime/ProcessInfo.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;

TEST(ErrorType, BecomesAnErrorRecordWithBothTextsAlwaysPresent) {
    struct Case {
        ErrorType error;
        Error expected;
    };
    ErrorType filled(ErrorType::Domain::quillmere, ErrorType::Code::cannotConvertToEncoding);
    filled.description = "Couldn’t convert the document.";
    filled.recoverySuggestion = "Choose another encoding.";
    const Case cases[] = {
        {ErrorType(ErrorType::Domain::tessiva, ErrorType::Code::cannotSaveDocument),
         {"com.fernholt.Tessiva.ErrorDomain",
          2,
          {{"NSLocalizedDescription", ""}, {"NSLocalizedRecoverySuggestion", ""}}}},
        {filled,
         {"com.fernholt.Quillmere.ErrorDomain",
          1,
          {{"NSLocalizedDescription", "Couldn’t convert the document."},
           {"NSLocalizedRecoverySuggestion", "Choose another encoding."}}}},
    };
    for (const Case& errorCase : cases) {
        EXPECT_EQ(errorCase.error.nsError(), errorCase.expected) << errorCase.expected.domain;
    }
}

TEST(ErrorType, RawValuesConvertOnlyOnExactMatches) {
    const std::pair<int, std::optional<ErrorType::Code>> codes[] = {
        {0, std::nullopt},
        {1, ErrorType::Code::cannotConvertToEncoding},
        {2, ErrorType::Code::cannotSaveDocument},
        {3, std::nullopt},
        {-1, std::nullopt}};
    for (const auto& [raw, code] : codes) {
        EXPECT_EQ(errorCode(raw), code) << raw;
        if (code) {
            EXPECT_EQ(rawValue(*code), raw);
        }
    }
    const std::pair<std::string_view, std::optional<ErrorType::Domain>> domains[] = {
        {"com.fernholt.Quillmere.ErrorDomain", ErrorType::Domain::quillmere},
        {"com.fernholt.Tessiva.ErrorDomain", ErrorType::Domain::tessiva},
        {"com.fernholt.quillmere.errordomain", std::nullopt},
        {"com.fernholt.Quillmere.ErrorDomain ", std::nullopt},
        {"com.fernholt.Quillmere", std::nullopt},
        {"", std::nullopt}};
    for (const auto& [raw, domain] : domains) {
        EXPECT_EQ(errorDomain(raw), domain) << raw;
        if (domain) {
            EXPECT_EQ(rawValue(*domain), raw);
        }
    }
}

std::string xmlPlist(std::string_view body) {
    return std::string(R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
)") + std::string(body) +
           "\n</plist>\n";
}

constexpr std::string_view completeDictionary = R"(<dict>
  <key>CFBundleExecutable</key><string>Quillmere</string>
  <key>CFBundleIdentifier</key><string>com.fernholt.Quillmere</string>
  <key>CFBundleShortVersionString</key><string>2.4.1</string>
  <key>CFBundleVersion</key><string>812</string>
  <key>LSMinimumSystemVersion</key><string>11.0</string>
  <key>NSHumanReadableCopyright</key><integer>2024</integer>
</dict>)";

std::string binaryPlist(bool buildAsNumber) {
    plist_t dictionary = plist_new_dict();
    plist_dict_set_item(dictionary, "CFBundleExecutable", plist_new_string("Tessiva"));
    plist_dict_set_item(dictionary, "CFBundleIdentifier", plist_new_string("com.fernholt.Tessiva"));
    plist_dict_set_item(dictionary, "CFBundleShortVersionString", plist_new_string("1.0"));
    plist_dict_set_item(dictionary, "CFBundleVersion",
                        buildAsNumber ? plist_new_uint(7) : plist_new_string("7"));
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(dictionary, &bytes, &length);
    std::string data(bytes, length);
    std::free(bytes);
    plist_free(dictionary);
    return data;
}

std::optional<InfoPlist> parse(std::string_view bytes) {
    return InfoPlist::fromPropertyList(std::as_bytes(std::span(bytes.data(), bytes.size())));
}

TEST(InfoPlist, ReadsAllFourKeysOrNothing) {
    const InfoPlist quillmere{"812", "Quillmere", "2.4.1", "com.fernholt.Quillmere"};
    const InfoPlist tessiva{"7", "Tessiva", "1.0", "com.fernholt.Tessiva"};
    std::string withoutVersion = xmlPlist(completeDictionary);
    withoutVersion.erase(
        withoutVersion.find("<key>CFBundleShortVersionString"),
        std::string_view("<key>CFBundleShortVersionString</key><string>2.4.1</string>").size());
    std::string buildAsNumber = xmlPlist(completeDictionary);
    buildAsNumber.replace(buildAsNumber.find("<string>812</string>"), 20, "<integer>812</integer>");
    const std::string complete = xmlPlist(completeDictionary);
    const std::string binary = binaryPlist(false);
    const struct {
        const char* what;
        std::string bytes;
        std::optional<InfoPlist> expected;
    } cases[] = {
        {"XML, extra keys ignored", complete, quillmere},
        {"binary", binary, tessiva},
        {"no short version string", withoutVersion, std::nullopt},
        {"build number as a number (XML)", buildAsNumber, std::nullopt},
        {"build number as a number (binary)", binaryPlist(true), std::nullopt},
        {"an array, not a dictionary", xmlPlist("<array><string>x</string></array>"), std::nullopt},
        {"cut off XML", complete.substr(0, complete.size() / 2), std::nullopt},
        {"cut off binary", binary.substr(0, binary.size() - 10), std::nullopt},
        {"not a property list", "\x01\x02 garbage \xff", std::nullopt},
        {"empty", "", std::nullopt},
    };
    for (const auto& infoCase : cases) {
        EXPECT_EQ(parse(infoCase.bytes), infoCase.expected) << infoCase.what;
    }
}

TEST(InfoPlist, ReadsTheInfoPlistOfABundleFolder) {
    const TemporaryFolder folder("quoddle-bundle");
    folder.write("Quillmere/Info.plist", xmlPlist(completeDictionary));
    folder.write("Tessiva/Info.plist", binaryPlist(false));
    folder.write("Empty/Info.plist", "");
    fs::create_directories(folder.path() / "Folder/Info.plist");
    EXPECT_EQ(InfoPlist::bundle(Bundle(folder.path() / "Quillmere"))->version, "2.4.1");
    EXPECT_EQ(InfoPlist::bundle(Bundle(folder.path() / "Tessiva"))->executable, "Tessiva");
    for (const char* broken : {"Empty", "Folder", "Missing"}) {
        EXPECT_EQ(InfoPlist::bundle(Bundle(folder.path() / broken)), std::nullopt) << broken;
    }
}

TEST(Bundle, TheMainBundleIsFoundFromTheExecutable) {
    const TemporaryFolder folder("quoddle-bundle");
    const fs::path& root = folder.path();
    folder.write("selfcontained/app", "");
    folder.write("selfcontained/Info.plist", xmlPlist(completeDictionary));
    folder.write("installed/bin/app", "");
    folder.write("installed/share/app/Info.plist", xmlPlist(completeDictionary));
    folder.write("bare/bin/app", "");
    EXPECT_EQ(internal::mainBundlePath(root / "selfcontained/app"), root / "selfcontained");
    EXPECT_EQ(internal::mainBundlePath(root / "installed/bin/app"), root / "installed/share/app");
    EXPECT_EQ(internal::mainBundlePath(root / "bare/bin/app"), root / "bare/bin");

    // This test program has no Info.plist beside it.
    EXPECT_EQ(Bundle::main().bundlePath(), internal::runningExecutablePath().parent_path());
    EXPECT_EQ(internal::runningExecutablePath().filename(), "runtime_tests");
    EXPECT_EQ(InfoPlist::main(), std::nullopt);
}

TEST(ProcessInfo, AppleSiliconIsAnArm64MachineField) {
    const std::pair<std::string_view, bool> machines[] = {
        {"arm64", true},    {"arm64e", true}, {"x86_64", false},
        {"aarch64", false}, {"", false},      {"arm64\xC3\xA9", false}};
    for (const auto& [machine, appleSilicon] : machines) {
        EXPECT_EQ(ProcessInfo::isAppleSiliconMachine(machine), appleSilicon) << machine;
    }
#if defined(__x86_64__)
    EXPECT_FALSE(ProcessInfo::processInfo().isAppleSilicon());
#endif
}

}  // namespace
}  // namespace quod
