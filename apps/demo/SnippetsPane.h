// The Snippets preferences: the user's snippets ("Snippets") in stored order, with name and text
// (the text may hold the snippet markers that Text::insertSnippet reads). Every edit stores the
// whole list at once and posts "SnippetsChanged"; deleting asks first, suppressibly under
// "AlertDeleteSnippet".
#pragma once

#include "demo/ItemTableEditor.h"
#include "quoddle/qt/PreferenceTabViewController.h"

namespace quod::demo {

class SnippetsPane : public PreferenceTabViewController, public PreferenceTabType {
    Q_OBJECT

  public:
    static constexpr const char* deleteSuppressionKey = "AlertDeleteSnippet";

    explicit SnippetsPane(QWidget* parent = nullptr);

    [[nodiscard]] QString tabLabel() const override;
    [[nodiscard]] std::optional<QIcon> tabImage() const override;

    [[nodiscard]] ItemTableEditor& editor() { return *editor_; }

  private:
    void store();

    ItemTableEditor* editor_;
};

}  // namespace quod::demo
