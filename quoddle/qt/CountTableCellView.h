// A table cell with a text label and, optionally, a count badge beside it (how many items a
// source list entry holds, say).
//
// `updateCount(count)`: a count other than zero shows the badge titled with the count in plain
// decimal ("12", "-3"); zero hides it. The badge starts hidden, and a cell made without a badge
// ignores counts. The badge's accessible name and tool tip are "Count", localized, so a screen
// reader says what the bare number means.
//
//     CountTableCellView cell;
//     cell.textField()->setText("Inbox");
//     cell.updateCount(12);   // badge "12" shown
#pragma once

#include <QWidget>
#include <cstdint>

#include "quoddle/Export.h"

class QLabel;
class QPushButton;

namespace quod {

class QUODDLE_EXPORT CountTableCellView : public QWidget {
    Q_OBJECT

  public:
    enum class Badge { count, none };

    explicit CountTableCellView(Badge badge = Badge::count, QWidget* parent = nullptr);

    [[nodiscard]] QLabel* textField() const { return textField_; }
    // The badge; null for a cell made with Badge::none.
    [[nodiscard]] QPushButton* countButton() const { return countButton_; }

    void updateCount(std::int64_t count);

  private:
    // Gives the badge its accessible name and tool tip once the cell's parts exist.
    void awakeFromNib();

    QLabel* textField_;
    QPushButton* countButton_ = nullptr;
};

}  // namespace quod
