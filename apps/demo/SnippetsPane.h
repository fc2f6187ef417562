// The Snippets preferences: the user's snippets ("Snippets") in stored order, with name and text
// (the text may hold the snippet markers that Text::insertSnippet reads). Every edit stores the
// whole list at once and posts "SnippetsChanged"; deleting asks first, suppressibly under
// "AlertDeleteSnippet".
#pragma once

#include "demo/ItemTablePane.h"

namespace quod::demo {

class SnippetsPane : public ItemTablePane {
    Q_OBJECT

  public:
    static constexpr const char* deleteSuppressionKey = "AlertDeleteSnippet";

    explicit SnippetsPane(QWidget* parent = nullptr);

  private:
    void store();
};

}  // namespace quod::demo
