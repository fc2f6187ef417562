// The status line under the editor: line and position of the insertion point, characters and
// words of the selection, and the document's encoding.
//
// Line is 1-based; position is the UTF-16 offset of the selection's start, as every range of the
// framework counts. Characters (grapheme clusters) and words come from `Text::SelectionCounter`
// fed the storage's own pieces, so no copy of the selection is made. Selections of at most
// `countNowLimit` units are counted at once (a few milliseconds); larger ones, up to `countLimit`,
// are counted in slices of a few milliseconds between events, with "…" shown meanwhile; a result
// for a selection or text that has changed since is dropped. Above `countLimit` the counts show
// as "—". Line and position are O(log lines) and always shown.
//
// Why slices on the main thread rather than a worker: the storage may only be read on the thread
// that edits it, and it has no cheap snapshot (a copy of a 100 MB selection is what counting from
// the pieces avoids). The counting scan does a hundred megabytes in a fraction of a second, so
// slicing it keeps typing responsive at little cost, with nothing to lock.
#pragma once

#include <QElapsedTimer>
#include <QLabel>
#include <QStatusBar>
#include <QTimer>
#include <cstdint>
#include <optional>

#include "quoddle/strings/StringEncoding.h"
#include "quoddle/text/QuodTextView.h"
#include "quoddle/text/SelectionStatistics.h"

namespace quod::demo {

class StatusLine : public QObject {
    Q_OBJECT

  public:
    static constexpr int64_t countNowLimit = 1 << 20;
    static constexpr int64_t countLimit = 100'000'000;

    // Adds its labels to `bar`.
    explicit StatusLine(QStatusBar& bar);

    // Call on every change of the view's selection or text: it drops a count in progress.
    void update(const QuodTextView& view);
    void setEncoding(EncodingNumber encoding);

    // What the labels show now (the tests read them).
    [[nodiscard]] QString selectionText() const { return selection_->text(); }
    [[nodiscard]] QString encodingText() const { return encoding_->text(); }
    // Whether a large selection is still being counted.
    [[nodiscard]] bool isCounting() const { return counting_.has_value(); }

  private:
    // A count in slices: what it counts, and how far it got.
    struct Counting {
        const QuodTextView* view;
        Range range;
        int64_t textLength;
        int64_t next;
        Text::SelectionCounter counter;
    };

    // Counts on for about `milliseconds`, or to the end; shows the result when done.
    void countSlice(std::optional<qint64> milliseconds);
    void show(const QString& characters, const QString& words);

    QLabel* selection_;
    QLabel* encoding_;
    QTimer* slices_;
    QString place_;  // line and position
    std::optional<Counting> counting_;
};

}  // namespace quod::demo
