// A row of checkable segments of which at most one is selected: the tab switcher that the
// preferences window shows in its toolbar.
//
// Segments are numbered from 0 in the order they were added. `selectedSegment()` is -1 while none
// is selected; `setSelectedSegment` with an index outside the segments selects none. Only a click
// (or a key press) by the user emits `segmentChosen`, with the control itself as the sender to
// hand on; selecting from code emits nothing, so a controller that mirrors a selection into the
// control does not hear its own change back.
#pragma once

#include <QButtonGroup>
#include <QIcon>
#include <QString>
#include <QWidget>

#include "quoddle/Export.h"

class QHBoxLayout;

namespace quod {

class QUODDLE_EXPORT SegmentedControl : public QWidget {
    Q_OBJECT

  public:
    explicit SegmentedControl(QWidget* parent = nullptr);

    void addSegment(const QString& label, const QIcon& image = {});
    [[nodiscard]] int segmentCount() const;
    [[nodiscard]] QString labelForSegment(int segment) const;

    [[nodiscard]] int selectedSegment() const;
    void setSelectedSegment(int segment);

  Q_SIGNALS:
    void segmentChosen(quod::SegmentedControl* sender);

  private:
    QButtonGroup group_;
    QHBoxLayout* layout_;
};

}  // namespace quod
