// The editing area of the demo window: a slot for a line-number gutter on the left, then the
// TextViewWidget that shows the current document.
//
// Colours follow the preferences: the text and the background are Color::forKey of "TextColour"
// and "BackgroundColour" (their defaults, black on white, when nothing usable is stored), read
// again by `applyThemeColors` whenever the theme changes. The tab width is "TabWidth" (4 when
// unset).
#pragma once

#include <QColor>
#include <QHBoxLayout>
#include <QWidget>
#include <memory>

#include "quoddle/preferences/Color.h"
#include "quoddle/qt/TextViewWidget.h"

namespace quod::demo {

// Color::forKey as Qt draws it: the colour in sRGB, no value conversions beyond that.
[[nodiscard]] QColor toQColor(const Color& color);

// "TabWidth" in columns: 4 when unset, not positive or beyond 64 (a damaged preference).
[[nodiscard]] int tabWidthPreference();

class EditorArea : public QWidget {
    Q_OBJECT

  public:
    explicit EditorArea(std::shared_ptr<QuodTextView> view, QWidget* parent = nullptr);

    [[nodiscard]] TextViewWidget& textViewWidget() { return *textView_; }
    // Shows another document.
    void setTextView(std::shared_ptr<QuodTextView> view);
    // Puts `gutter` left of the text (the area takes it over); a second call replaces the first.
    void setGutter(QWidget* gutter);

    void applyThemeColors();
    void applyTabWidth();

  private:
    QHBoxLayout* layout_;
    QWidget* gutter_ = nullptr;
    TextViewWidget* textView_;
};

}  // namespace quod::demo
