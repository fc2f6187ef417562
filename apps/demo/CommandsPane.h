// The Commands preferences: the user's shell commands ("Commands") in stored order, with name,
// command line, "inline" and "suppress result". Every edit stores the whole list at once and posts
// "CommandsChanged"; deleting asks first, suppressibly under "AlertDeleteCommand".
#pragma once

#include "demo/ItemTablePane.h"

namespace quod::demo {

class CommandsPane : public ItemTablePane {
    Q_OBJECT

  public:
    static constexpr const char* deleteSuppressionKey = "AlertDeleteCommand";

    explicit CommandsPane(QWidget* parent = nullptr);

  private:
    void store();
};

}  // namespace quod::demo
