// A tab's content background: the window background colour, filled with the painter's current
// composition mode. Colours follow the application palette (QtPlatform).
#pragma once

#include <QWidget>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT TabView : public QWidget {
    Q_OBJECT

  public:
    explicit TabView(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace quod
