// A pane background that, on the classic look, shades from the window colour at the top to a
// slightly darker tone (the window colour shadowed by 0.12) at the bottom; on the flat look it
// draws nothing of its own, so the window background shows.
//
// The gradient spans the whole view, whatever part is repainted, so partial updates leave no
// seams. Colours follow the application palette (QtPlatform). Accessible name: "Tab", localized.
#pragma once

#include <QWidget>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT GradientBackgroundView : public QWidget {
    Q_OBJECT

  public:
    explicit GradientBackgroundView(QWidget* parent = nullptr);

    static constexpr double shadowLevel = 0.12;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace quod
