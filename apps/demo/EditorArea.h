// The editing area of the demo window: the framework's EditorPane (line-number gutter and text
// view) with the preferences applied to it.
//
// Colours follow the preferences: the text and the background are Color::forKey of "TextColour"
// and "BackgroundColour" (their defaults, black on white, when nothing usable is stored), read
// again by `applyThemeColors` whenever the theme changes; the gutter follows the theme by itself.
// The tab width is "TabWidth". The text font is "TextFont" once one is stored (a theme stores
// one); until then the editor keeps the desktop's fixed-pitch font, which reads better than the
// framework's fallback where that face is missing.
#pragma once

#include <memory>

#include "quoddle/qt/EditorPane.h"
#include "quoddle/qt/GutterWidget.h"
#include "quoddle/qt/TextViewWidget.h"

namespace quod::demo {

// "TabWidth" in columns: 4 when unset, not positive or beyond 64 (a damaged preference).
[[nodiscard]] int tabWidthPreference();

class EditorArea : public EditorPane {
    Q_OBJECT

  public:
    explicit EditorArea(std::shared_ptr<QuodTextView> view, QWidget* parent = nullptr);

    // Shows another document; the gutter follows it.
    void setTextView(std::shared_ptr<QuodTextView> view);

    void applyThemeColors();
    void applyTabWidth();
    void applyTextFont();
};

}  // namespace quod::demo
