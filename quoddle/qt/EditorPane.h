// A text view with its line-number gutter: what an editor window shows for one document.
//
// The gutter sits left of the text view, level with the text view's viewport and exactly as tall
// as it, since the core numbers lines against the visible text; under the gutter, beside the
// horizontal scroll bar when there is one, is an empty corner. The text view draws no frame, so
// its viewport starts at its top edge. The pane owns both widgets; the document is shared.
#pragma once

#include <QWidget>
#include <memory>

#include "quoddle/Export.h"

namespace quod {

class GutterWidget;
class QuodTextView;
class TextViewWidget;

class QUODDLE_EXPORT EditorPane : public QWidget {
    Q_OBJECT

  public:
    explicit EditorPane(std::shared_ptr<QuodTextView> view, QWidget* parent = nullptr);

    [[nodiscard]] TextViewWidget& textView() { return *textView_; }
    [[nodiscard]] GutterWidget& gutter() { return *gutter_; }

  private:
    TextViewWidget* textView_;
    GutterWidget* gutter_;
    QWidget* corner_;
};

}  // namespace quod
