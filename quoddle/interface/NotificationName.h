// The names of the notifications that the framework and its host applications exchange.
//
// Posted and observed through NotificationCenter (runtime/NotificationCenter.h):
//
//     Notifications().post(NotificationName::themeChanged());
//
// Values are kept exactly as the applications have always used them, including the two that do
// not follow the member-name pattern: `loadingChanged` is "Loading" and `removeAllColors` is
// "RemoveColors". All other values are the member name with a capital first letter ("URL" in
// full capitals for `urlChanged`).
#pragma once

#include <span>

#include "quoddle/Export.h"
#include "quoddle/interface/Identifier.h"

// clang-format off
#define QUOD_NOTIFICATION_NAMES(X) \
    X(appStatusChanged, "AppStatusChanged") \
    X(backgroundColorChanged, "BackgroundColorChanged") \
    X(commandsChanged, "CommandsChanged") \
    X(documentSaved, "DocumentSaved") \
    X(documentsChanged, "DocumentsChanged") \
    X(findBarChanged, "FindBarChanged") \
    X(foldersChanged, "FoldersChanged") \
    X(foldersItemChanged, "FoldersItemChanged") \
    X(foldersWillChange, "FoldersWillChange") \
    X(jobsUpdated, "JobsUpdated") \
    X(lineNumberFontChanged, "LineNumberFontChanged") \
    X(lineNumberColorsChanged, "LineNumberColorsChanged") \
    X(loadingChanged, "Loading") \
    X(pageGuideValueChanged, "PageGuideValueChanged") \
    X(removeAllColors, "RemoveColors") \
    X(resumeChanged, "ResumeChanged") \
    X(rootChanged, "RootChanged") \
    X(selectionChanged, "SelectionChanged") \
    X(selectedTextAttributesChanged, "SelectedTextAttributesChanged") \
    X(sidebarChanged, "SidebarChanged") \
    X(snippetsChanged, "SnippetsChanged") \
    X(tabWidthChanged, "TabWidthChanged") \
    X(textColorChanged, "TextColorChanged") \
    X(textFontChanged, "TextFontChanged") \
    X(themeChanged, "ThemeChanged") \
    X(turnOnHighlightLine, "TurnOnHighlightLine") \
    X(turnOnSyntaxColors, "TurnOnSyntaxColors") \
    X(updateLineNumbers, "UpdateLineNumbers") \
    X(updateNotifications, "UpdateNotifications") \
    X(updateStatusBar, "UpdateStatusBar") \
    X(urlChanged, "URLChanged")
// clang-format on

namespace quod {

class QUODDLE_EXPORT NotificationName : public Identifier<NotificationName> {
  public:
    using Identifier::Identifier;

#define QUOD_DECLARE_IDENTIFIER(member, value) \
    [[nodiscard]] static const NotificationName& member();
    QUOD_NOTIFICATION_NAMES(QUOD_DECLARE_IDENTIFIER)
#undef QUOD_DECLARE_IDENTIFIER

    [[nodiscard]] static std::span<const Entry> entries();
};

}  // namespace quod
