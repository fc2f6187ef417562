// The background of a scope bar: a rule along each edge, in the separator colour on the flat look
// and the grid colour on the classic one.
//
// The bounds are stroked with a 2-point pen centred on them, so half of it falls outside the view
// and a 1-point line shows inside each edge; the interior is left to what lies below. Colours
// follow the application palette (QtPlatform). Accessible name: "No Items", localized.
#pragma once

#include <QWidget>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT ScopeBackgroundView : public QWidget {
    Q_OBJECT

  public:
    explicit ScopeBackgroundView(QWidget* parent = nullptr);

    static constexpr double lineWidth = 2.0;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace quod
