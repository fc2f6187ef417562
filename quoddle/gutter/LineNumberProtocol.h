// The gutter's delegate: told when the gutter needs to be wider.
//
// The host resizes the gutter (`LineNumberView::setBounds`) and the text view beside it. The
// gutter holds its delegate weakly, and takes the delegate's identity (its most-derived address)
// as the sender it accepts "FindBarChanged" from.
#pragma once

#include "quoddle/Export.h"

namespace quod {

class LineNumberView;

class QUODDLE_EXPORT LineNumberProtocol {
  public:
    virtual ~LineNumberProtocol() = default;

    // `width` is larger than any width the gutter asked for before.
    virtual void lineNumberViewNeedsWidth(LineNumberView& view, double width) = 0;
};

}  // namespace quod
