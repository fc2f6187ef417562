// The Commands preferences: the user's shell commands ("Commands") in stored order, with name,
// command line, "inline" and "suppress result". Every edit stores the whole list at once and posts
// "CommandsChanged"; deleting asks first, suppressibly under "AlertDeleteCommand".
#pragma once

#include <array>

#include "demo/ItemTablePane.h"
#include "quoddle/runtime/Localize.h"

namespace quod::demo {

enum class CommandColumn { name, command, isInline, suppressResult };

// The table's columns. The two check-box columns have no identifier in the framework's
// catalogue, so the demo names them itself.
struct CommandColumns : ColumnProtocol<CommandColumns, CommandColumn> {
    static const UserInterfaceItemIdentifier& inlineIdentifier();
    static const UserInterfaceItemIdentifier& suppressResultIdentifier();

    static constexpr std::array entries{
        ColumnEntry<CommandColumn>{CommandColumn::name, &UserInterfaceItemIdentifier::Column::name,
                                   &Localize::name},
        ColumnEntry<CommandColumn>{CommandColumn::command,
                                   &UserInterfaceItemIdentifier::Column::commands,
                                   &Localize::command},
        ColumnEntry<CommandColumn>{CommandColumn::isInline, &inlineIdentifier,
                                   &Localize::inlineString},
        ColumnEntry<CommandColumn>{CommandColumn::suppressResult, &suppressResultIdentifier,
                                   &Localize::suppressCommandResult}};
};

class CommandsPane : public ItemTablePane {
    Q_OBJECT

  public:
    static constexpr const char* deleteSuppressionKey = "AlertDeleteCommand";

    explicit CommandsPane(QWidget* parent = nullptr);

  private:
    void store();
};

}  // namespace quod::demo
