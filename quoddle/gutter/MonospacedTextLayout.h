// A text layout without a toolkit, as a monospaced font without wrapping gives it: every line of
// the text is one layout line, all of the same height.
//
// Line k (numbered as `TextStorage` numbers them, from 0) lies at y = k × lineHeight and spans the
// container's width. The empty line after a final terminator (or of an empty text) is the extra
// line fragment. The layout reads the text storage on every query, so it always matches the text
// without being told about edits; it holds the storage weakly, and once the storage is gone every
// query answers as for an empty layout: zero rectangles and the range (0, 0).
//
// Each query costs O(log lines) (O(1) when walking lines in order, as the gutter does).
#pragma once

#include <memory>

#include "quoddle/Export.h"
#include "quoddle/gutter/TextLayout.h"
#include "quoddle/text/TextStorage.h"

namespace quod {

class QUODDLE_EXPORT MonospacedTextLayout : public TextLayout {
  public:
    struct Metrics {
        double lineHeight = 14.0;
        double containerWidth = 1.0e7;  // no wrapping: as wide as any line
        Size textContainerInset{0, 0};
    };

    // `metrics.lineHeight` must be positive.
    MonospacedTextLayout(std::weak_ptr<const TextStorage> textStorage, Metrics metrics);

    [[nodiscard]] Rect lineFragmentRectForCharacter(int64_t index) const override;
    [[nodiscard]] Rect extraLineFragmentRect() const override;
    [[nodiscard]] Range characterRangeForBoundingRect(Rect rect) const override;
    [[nodiscard]] Size textContainerInset() const override { return metrics_.textContainerInset; }

    [[nodiscard]] const Metrics& metrics() const { return metrics_; }

  private:
    [[nodiscard]] Rect rectOfLine(int64_t line) const;

    std::weak_ptr<const TextStorage> textStorage_;
    Metrics metrics_;
};

}  // namespace quod
