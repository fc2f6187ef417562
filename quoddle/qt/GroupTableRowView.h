// The background of a group row in outline and table views: `color()` (Interface::groupRowColor,
// a light tint of the under-page colour, translucent unless the user asked for reduced
// transparency) filled over the row.
//
// `drawBackground` is static so item delegates and views that draw rows themselves can use it
// without a widget; it fills with the painter's current composition mode, so a caller that set
// one (say, to replace rather than blend) gets it. Colours follow the application palette
// (QtPlatform) and the current appearance at each call. Accessible name: "Group", localized.
#pragma once

#include <QColor>
#include <QRect>
#include <QWidget>

#include "quoddle/Export.h"

class QPainter;

namespace quod {

class QUODDLE_EXPORT GroupTableRowView : public QWidget {
    Q_OBJECT

  public:
    explicit GroupTableRowView(QWidget* parent = nullptr);

    [[nodiscard]] static QColor color();
    static void drawBackground(QPainter& painter, const QRect& rect);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace quod
