// A plain, read-mostly text view that follows the desktop's light or dark appearance.
//
// A TextViewWidget whose document is not editable when it is made (a host may turn editing on
// through `textView().setEditable`). Its text and background are the system colours
// `Color::textColor()` and `Color::textBackgroundColor()` resolved for the current appearance,
// applied when it is made and again whenever the appearance changes (QtPlatform's
// `appearanceChanged`, after which the system colours already hold the new palette's values): the
// widget's own palette does not decide them. Making one installs QtPlatform. Main thread only.
#pragma once

#include <memory>

#include "quoddle/Export.h"
#include "quoddle/qt/TextViewWidget.h"

namespace quod {

class QUODDLE_EXPORT ExtraTextView : public TextViewWidget {
    Q_OBJECT

  public:
    explicit ExtraTextView(std::shared_ptr<QuodTextView> view = std::make_shared<QuodTextView>(),
                           QWidget* parent = nullptr);

  private:
    void viewDidChangeEffectiveAppearance();
};

}  // namespace quod
