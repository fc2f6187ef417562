// The status line under the editor: line and position of the insertion point, characters and
// words of the selection, and the document's encoding.
//
// Line is 1-based; position is the UTF-16 offset of the selection's start, as every range of the
// framework counts. Characters (grapheme clusters) and words come from `Text::selectionCount`
// over a copy of the selected text only, on the main thread, and only for selections of at most
// `countLimit` units: counting costs time in proportion to the selection (ICU break iterators),
// and a select-all in a document of hundreds of megabytes must not stall every selection change.
// Above the limit the counts show as "—". Line and position are O(log lines) and always shown.
#pragma once

#include <QLabel>
#include <QStatusBar>
#include <cstdint>

#include "quoddle/strings/StringEncoding.h"
#include "quoddle/text/QuodTextView.h"

namespace quod::demo {

class StatusLine : public QObject {
    Q_OBJECT

  public:
    static constexpr int64_t countLimit = 1 << 20;

    // Adds its labels to `bar`.
    explicit StatusLine(QStatusBar& bar);

    void update(const QuodTextView& view);
    void setEncoding(EncodingNumber encoding);

    // What the labels show now (the tests read them).
    [[nodiscard]] QString selectionText() const { return selection_->text(); }
    [[nodiscard]] QString encodingText() const { return encoding_->text(); }

  private:
    QLabel* selection_;
    QLabel* encoding_;
};

}  // namespace quod::demo
