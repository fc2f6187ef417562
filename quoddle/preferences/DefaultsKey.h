// The names of every persistent setting: `Defaults::Key`, `Defaults::Key::Font` and
// `Defaults::Key::Color`.
//
// Each is a closed enumeration whose cases are constants of the type (`Defaults::Key::tabWidth`,
// `Defaults::Key::Font::text`, `Defaults::Key::Color::comment`) and whose raw value is the key
// string the setting is stored under. The key strings are the stored format: existing users' files
// hold them, so they are spelled here exactly as those files do, also where they do not match the
// case name ("AlertComplexWhat" for `suppressAlertComplexRun`, "Themes9" for `themes9`, British
// "Colour" in the colour keys).
//
//   Defaults::Key::tabWidth.rawValue()                 == "TabWidth"
//   Defaults::Key::fromRawValue("TabWidth")            == Defaults::Key::tabWidth
//   Defaults::Key::fromRawValue("tabwidth")            == std::nullopt  (exact, case-sensitive)
//   Defaults::Key::Color::fromRawValue("APIColour")    == Defaults::Key::Color::api
//
// Two cases are equal exactly when their key strings are; `std::hash` hashes the key string.
// `allCases()` lists the cases in declaration order. Everything here is constexpr and allocation
// free, so the accessors in Defaults.h are compile-time constants and need no start-up code.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

namespace quod {
namespace internal {

// What the three key enumerations share. `Enumeration` provides `rawValues`, a constexpr array of
// its key strings in declaration order, and a constructor from an index into it that only this
// base may call, so no other value than a named case can exist.
template <typename Enumeration>
class KeyEnumeration {
  public:
    [[nodiscard]] constexpr std::string_view rawValue() const {
        return Enumeration::rawValues[index_];
    }

    // The case whose key string is exactly `rawValue`; no value for any other string.
    [[nodiscard]] static constexpr std::optional<Enumeration> fromRawValue(
        std::string_view rawValue) {
        for (std::size_t i = 0; i < Enumeration::rawValues.size(); ++i) {
            if (Enumeration::rawValues[i] == rawValue) return at(i);
        }
        return std::nullopt;
    }

    // Every case, in declaration order.
    [[nodiscard]] static constexpr auto allCases() {
        return []<std::size_t... index>(std::index_sequence<index...>) {
            return std::array{at(index)...};
        }
        (std::make_index_sequence<Enumeration::rawValues.size()>());
    }

    friend constexpr bool operator==(const KeyEnumeration&, const KeyEnumeration&) = default;

  protected:
    constexpr explicit KeyEnumeration(std::size_t index)
        : index_(static_cast<std::uint8_t>(index)) {}

  private:
    static constexpr Enumeration at(std::size_t index) { return Enumeration(index); }

    std::uint8_t index_;
};

template <typename Enumeration>
struct KeyEnumerationHash {
    std::size_t operator()(const Enumeration& key) const noexcept {
        return std::hash<std::string_view>{}(key.rawValue());
    }
};

}  // namespace internal

// The catalogue, in declaration order: X(case, key string, accessor type) for the settings that
// Defaults.h gives an accessor, N(case, key string) for the seventeen keys that hosts read and
// write themselves (their value types are the hosts' business).
// clang-format off
#define QUOD_DEFAULTS_KEYS(X, N) \
    X(advancedFindIgnoreCase, "IgnoreCaseAdvancedFind", DefaultBool) \
    X(advancedFindOnlyInSelection, "OnlyInSelectionAdvancedFind", DefaultBool) \
    X(advancedFindScope, "AdvancedFindSearchScope", DefaultInt) \
    X(advancedFindUseRegularExpressions, "UseRegularExpressionsAdvancedFind", DefaultBool) \
    X(alwaysShowToolbarInFullScreen, "AlwaysShowToolbarInFullScreen", DefaultBool) \
    X(alwaysUseFileNameExtension, "AlwaysUseFileNameExtension", DefaultBool) \
    X(alwaysUseTextEncoding, "AlwaysUseTextEncoding", DefaultBool) \
    X(automaticallyCheckForUpdate, "AutomaticallyCheckForUpdate", DefaultBool) \
    X(automaticallyOpenInTabs, "AutomaticallyOpenInTabs", DefaultBool) \
    X(automaticHelp, "AutomaticHelp", DefaultBool) \
    X(automaticPATH, "AutomaticEnvPath", DefaultBool) \
    X(autoSave, "AutoSave", DefaultBool) \
    X(bookmarks, "Bookmarks", DefaultArrayData) \
    X(colorModel, "ColorModel", DefaultInt) \
    X(commands, "Commands", DefaultArrayCommand) \
    X(completeAutoAfterDelay, "AutocompleteAfterDelay", DefaultFloat) \
    X(completeIncludeStandardWords, "AutocompleteIncludeStandardWords", DefaultBool) \
    X(completeSuggestAutomatically, "AutocompleteSuggestAutomatically", DefaultBool) \
    X(convertLineEndings, "ConvertLineEndings", DefaultBool) \
    X(currentAction, "CurrentAction", DefaultInt) \
    X(currentTheme, "CurrentTheme", DefaultInt) \
    X(directLinkDetection, "DirectLinkDetection", DefaultBool) \
    X(editSystemJobs, "IWantToEditSystemJobsAndIUnderstandTheRisksAndITakeFullResponsibility", DefaultBool) \
    X(enableRowActions, "EnableRowActions", DefaultBool) \
    X(encodingsPopUp, "EncodingsPopUp", DefaultInt) \
    N(exceptions, "Exceptions") \
    X(fileNameExtension, "FileNameExtension", DefaultString) \
    X(firstLaunch, "FirstLaunch", DefaultBool) \
    X(firstLaunch1015, "FirstLaunch1015", DefaultBool) \
    X(firstX7Launch, "FirstX7Launch", DefaultBool) \
    X(firstX8Launch, "FirstX8Launch", DefaultBool) \
    X(folders, "Folders", DefaultArrayData) \
    X(foldersShowsHidden, "FoldersShowsHidden", DefaultBool) \
    X(hasManuallyChangedTheme, "HasManuallyChangedTheme", DefaultBool) \
    X(highlightLine, "HighlightCurrentLine", DefaultBool) \
    X(indentNewLinesAutomatically, "IndentNewLinesAutomatically", DefaultBool) \
    X(indentWithSpaces, "IndentWithSpaces", DefaultBool) \
    X(infoLaunchdTab, "InfoLaunchdTab", DefaultInt) \
    X(languageToken, "LanguageToken", DefaultString) \
    N(launchdSectionWhenCollapsed, "LaunchdSectionWhenCollapsed") \
    N(launchdSectionPathsCollapsed, "LaunchdSectionPathsCollapsed") \
    N(launchdSectionLimitsCollapsed, "LaunchdSectionLimitsCollapsed") \
    N(launchdSectionRootCollapsed, "LaunchdSectionRootCollapsed") \
    N(launchdSectionMiscellaneousCollapsed, "LaunchdSectionMiscellaneousCollapsed") \
    N(launchdSectionEnvironmentVariablesCollapsed, "LaunchdSectionEnvironmentVariablesCollapsed") \
    N(launchdSectionLaunchEventsCollapsed, "LaunchdSectionLaunchEventsCollapsed") \
    N(launchdSectionMachServicesCollapsed, "LaunchdSectionMachServicesCollapsed") \
    N(launchdSectionSocketsCollapsed, "LaunchdSectionSocketsCollapsed") \
    N(launchdSectionDeprecatedCollapsed, "LaunchdSectionDeprecatedCollapsed") \
    N(launchdSectionUnknownCollapsed, "LaunchdSectionUnknownCollapsed") \
    N(launchdSectionNotesCollapsed, "LaunchdSectionNotesCollapsed") \
    N(launchdSectionTagsCollapsed, "LaunchdSectionTagsCollapsed") \
    X(lineEndings, "LineEndings", DefaultInt) \
    X(lineWrap, "LineWrap", DefaultBool) \
    X(logLength, "LogLength", DefaultInt) \
    X(logPeriod, "LogPeriod", DefaultInt) \
    X(multiTouchGestures, "MultiTouchGestures", DefaultBool) \
    X(notificationTab, "NotificationTab", DefaultInt) \
    X(numberOfSavedRevisions, "NumberOfSavedRevisions", DefaultInt) \
    X(preferencesFrame, "PreferencesFrame", DefaultString) \
    X(preferencesTab, "PreferencesTab", DefaultInt) \
    X(preferFullScreen, "PreferFullScreen", DefaultBool) \
    X(printHeader, "PrintHeader", DefaultBool) \
    X(printLineNumbers, "PrintLineNumbers", DefaultBool) \
    X(printMarginsMin, "MarginsMin", DefaultFloat) \
    X(printOnlySelection, "OnlyPrintSelection", DefaultBool) \
    X(printSyntaxColors, "PrintSyntaxColours", DefaultBool) \
    X(randomColors, "RandomColors", DefaultBool) \
    X(rawKeys, "RawKeys", DefaultBool) \
    X(resume, "Resume", DefaultBoolResume) \
    N(resumeNS, "NSQuitAlwaysKeepsWindows") \
    X(runAgent, "RunAgent", DefaultBool) \
    X(runText, "RunText", DefaultString) \
    N(securityBookmarks, "SecurityBookmarks") \
    X(selectedMode, "ViewMode", DefaultInt) \
    N(selectedToolsMode, "SelectedToolsMode") \
    X(showInternalHelpers, "ListTessivHelper", DefaultBool) \
    X(showInvalidData, "ShowInvalidData", DefaultBool) \
    X(showInvisibleCharacters, "ShowInvisibleCharacters", DefaultBool) \
    X(showLineNumbers, "ShowLineNumbers", DefaultBool) \
    X(showPageGuide, "ShowPageGuide", DefaultBool) \
    X(showPageGuideAtColumn, "ShowPageGuideAtColumn", DefaultInt) \
    X(showPathBar, "ShowPathBar", DefaultBool) \
    X(showSidebar, "ShowSidebar", DefaultBool) \
    X(showStatusBar, "ShowStatusBar", DefaultBool) \
    X(showSyntaxColors, "ShowSyntaxColours", DefaultBool) \
    X(showSystemJobs, "ShowSystemJobs", DefaultBool) \
    X(showTitleBar, "ShowTitleBar", DefaultBool) \
    X(skipUpdateBuild, "SkipUpdateBuild", DefaultInt) \
    X(sidebar, "Sidebar", DefaultInt) \
    X(sidebarFirstShow, "SidebarFirstShow", DefaultBool) \
    X(snippets, "Snippets", DefaultArraySnippet) \
    X(spellingAutomaticSpellingCorrection, "AutomaticSpellingCorrection", DefaultBool) \
    X(spellingContinuousSpellChecking, "ContinuousSpellChecking", DefaultBool) \
    X(spellingGrammarChecking, "GrammarChecking", DefaultBool) \
    X(statusBarCharacters, "StatusBarCharacters", DefaultBool) \
    X(statusBarEncoding, "StatusBarEncoding", DefaultBool) \
    X(statusBarLine, "StatusBarLine", DefaultBool) \
    X(statusBarPosition, "StatusBarPosition", DefaultBool) \
    X(statusBarSelection, "StatusBarSelection", DefaultBool) \
    X(statusBarWords, "StatusBarWords", DefaultBool) \
    X(substitutionAutomaticDashSubstitution, "AutomaticDashSubstitution", DefaultBool) \
    X(substitutionAutomaticDataDetection, "AutomaticDataDetection", DefaultBool) \
    X(substitutionAutomaticLinkDetection, "AutomaticLinkDetection", DefaultBool) \
    X(substitutionAutomaticQuoteSubstitution, "AutomaticQuoteSubstitution", DefaultBool) \
    X(substitutionAutomaticTextReplacement, "AutomaticTextReplacement", DefaultBool) \
    X(substitutionSmartInsertDelete, "SmartInsertDelete", DefaultBool) \
    X(suppressAlertComplexRun, "AlertComplexWhat", DefaultBool) \
    X(syntaxExtensions, "SyntaxExtensions", DefaultStringDictionary) \
    X(tabIcon, "TabIcon", DefaultBool) \
    X(tabWidth, "TabWidth", DefaultInt) \
    X(themes9, "Themes9", DefaultArrayStandardDictionary) \
    X(useCommandNumberToSwitchTabs, "UseCommandNumberToSwitchTabs", DefaultBool) \
    X(utf8WithBOM, "UTF8WithBOM", DefaultBool) \
    X(verticalText, "VerticalText", DefaultBool)
// clang-format on

namespace Defaults {

class Key : public internal::KeyEnumeration<Key> {
  public:
    class Font;
    class Color;

#define QUOD_DECLARE_KEY(name, ...) static const Key name;
    QUOD_DEFAULTS_KEYS(QUOD_DECLARE_KEY, QUOD_DECLARE_KEY)
#undef QUOD_DECLARE_KEY

#define QUOD_KEY_STRING(name, rawValue, ...) rawValue,
    static constexpr auto rawValues =
        std::to_array<std::string_view>({QUOD_DEFAULTS_KEYS(QUOD_KEY_STRING, QUOD_KEY_STRING)});
#undef QUOD_KEY_STRING

  private:
    friend class internal::KeyEnumeration<Key>;
#define QUOD_KEY_CASE(name, ...) name,
    enum class Case : std::uint8_t { QUOD_DEFAULTS_KEYS(QUOD_KEY_CASE, QUOD_KEY_CASE) };
#undef QUOD_KEY_CASE
    constexpr explicit Key(std::size_t index) : KeyEnumeration(index) {}
};

static_assert(Key::rawValues.size() <= 256, "case indexes are bytes");

#define QUOD_DEFINE_KEY(name, ...) \
    inline constexpr Key Key::name{static_cast<std::size_t>(Key::Case::name)};
QUOD_DEFAULTS_KEYS(QUOD_DEFINE_KEY, QUOD_DEFINE_KEY)
#undef QUOD_DEFINE_KEY

// The three stored fonts.
class Key::Font : public internal::KeyEnumeration<Key::Font> {
  public:
    static const Font lineNumber;
    static const Font print;
    static const Font text;

    static constexpr std::array<std::string_view, 3> rawValues{"LineNumberFont", "PrintFont",
                                                               "TextFont"};

  private:
    friend class internal::KeyEnumeration<Font>;
    constexpr explicit Font(std::size_t index) : KeyEnumeration(index) {}
};

// Each case is its key string's case: a misspelt string fails to compile.
inline constexpr Key::Font Key::Font::lineNumber = *fromRawValue("LineNumberFont");
inline constexpr Key::Font Key::Font::print = *fromRawValue("PrintFont");
inline constexpr Key::Font Key::Font::text = *fromRawValue("TextFont");

// The fifteen colour entries of a theme.
class Key::Color : public internal::KeyEnumeration<Key::Color> {
  public:
    static const Color api;
    static const Color attribute;
    static const Color background;
    static const Color command;
    static const Color comment;
    static const Color highlightLine;
    static const Color instruction;
    static const Color invisibleText;
    static const Color keyword;
    static const Color lineNumberBackground;
    static const Color lineNumberText;
    static const Color selectedText;
    static const Color string;
    static const Color text;
    static const Color variable;

    static constexpr std::array<std::string_view, 15> rawValues{"APIColour",
                                                                "AttributesColour",
                                                                "BackgroundColour",
                                                                "CommandsColour",
                                                                "CommentsColour",
                                                                "HighlightLineColour",
                                                                "InstructionsColour",
                                                                "InvisibleTextColour",
                                                                "KeywordsColour",
                                                                "LineNumberBackgroundColour",
                                                                "LineNumberTextColour",
                                                                "SelectedTextColour",
                                                                "StringsColour",
                                                                "TextColour",
                                                                "VariablesColour"};

  private:
    friend class internal::KeyEnumeration<Color>;
    constexpr explicit Color(std::size_t index) : KeyEnumeration(index) {}
};

// Each case is its key string's case: a misspelt string fails to compile.
inline constexpr Key::Color Key::Color::api = *fromRawValue("APIColour");
inline constexpr Key::Color Key::Color::attribute = *fromRawValue("AttributesColour");
inline constexpr Key::Color Key::Color::background = *fromRawValue("BackgroundColour");
inline constexpr Key::Color Key::Color::command = *fromRawValue("CommandsColour");
inline constexpr Key::Color Key::Color::comment = *fromRawValue("CommentsColour");
inline constexpr Key::Color Key::Color::highlightLine = *fromRawValue("HighlightLineColour");
inline constexpr Key::Color Key::Color::instruction = *fromRawValue("InstructionsColour");
inline constexpr Key::Color Key::Color::invisibleText = *fromRawValue("InvisibleTextColour");
inline constexpr Key::Color Key::Color::keyword = *fromRawValue("KeywordsColour");
inline constexpr Key::Color Key::Color::lineNumberBackground =
    *fromRawValue("LineNumberBackgroundColour");
inline constexpr Key::Color Key::Color::lineNumberText = *fromRawValue("LineNumberTextColour");
inline constexpr Key::Color Key::Color::selectedText = *fromRawValue("SelectedTextColour");
inline constexpr Key::Color Key::Color::string = *fromRawValue("StringsColour");
inline constexpr Key::Color Key::Color::text = *fromRawValue("TextColour");
inline constexpr Key::Color Key::Color::variable = *fromRawValue("VariablesColour");

}  // namespace Defaults
}  // namespace quod

template <>
struct std::hash<quod::Defaults::Key> : quod::internal::KeyEnumerationHash<quod::Defaults::Key> {};
template <>
struct std::hash<quod::Defaults::Key::Font>
    : quod::internal::KeyEnumerationHash<quod::Defaults::Key::Font> {};
template <>
struct std::hash<quod::Defaults::Key::Color>
    : quod::internal::KeyEnumerationHash<quod::Defaults::Key::Color> {};
