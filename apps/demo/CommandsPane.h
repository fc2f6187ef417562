// The Commands preferences: the user's shell commands ("Commands") in stored order, with name,
// command line, "inline" and "suppress result". Every edit stores the whole list at once and posts
// "CommandsChanged"; deleting asks first, suppressibly under "AlertDeleteCommand".
#pragma once

#include "demo/ItemTableEditor.h"
#include "quoddle/qt/PreferenceTabViewController.h"

namespace quod::demo {

class CommandsPane : public PreferenceTabViewController, public PreferenceTabType {
    Q_OBJECT

  public:
    static constexpr const char* deleteSuppressionKey = "AlertDeleteCommand";

    explicit CommandsPane(QWidget* parent = nullptr);

    [[nodiscard]] QString tabLabel() const override;
    [[nodiscard]] std::optional<QIcon> tabImage() const override;

    [[nodiscard]] ItemTableEditor& editor() { return *editor_; }

  private:
    void store();

    ItemTableEditor* editor_;
};

}  // namespace quod::demo
