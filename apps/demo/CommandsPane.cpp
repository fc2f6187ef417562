#include "demo/CommandsPane.h"

#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/NotificationCenter.h"

namespace quod::demo {
namespace {

QString label(const std::string& text) {
    return QString::fromStdString(text);
}

ItemTablePane::Description description() {
    return {{{label(Localize::name())},
             {label(Localize::command())},
             {label(Localize::inlineString()), ItemColumn::Kind::checkBox},
             {label(Localize::suppressCommandResult()), ItemColumn::Kind::checkBox}},
            {label(Localize::command()), QString("echo"), false, false},
            Localize::deleteCommand(),
            CommandsPane::deleteSuppressionKey,
            label(Localize::commands()),
            "utilities-terminal"};
}

std::vector<ItemTablePane::Row> storedRows() {
    std::vector<ItemTablePane::Row> rows;
    for (const Command& command : Defaults::commands.get()) {
        rows.push_back({label(command.name()), label(command.text()), command.isInline(),
                        command.suppressResult()});
    }
    return rows;
}

}  // namespace

CommandsPane::CommandsPane(QWidget* parent) : ItemTablePane(description(), storedRows(), parent) {
    connect(this, &ItemTablePane::edited, this, &CommandsPane::store);
}

void CommandsPane::store() {
    std::vector<Command> commands;
    for (const Row& row : rows()) {
        commands.emplace_back(row[0].toString().toStdString(), row[1].toString().toStdString(),
                              row[2].toBool(), row[3].toBool(), false);
    }
    Defaults::commands.set(commands);
    Notifications().post(NotificationName::commandsChanged());
}

}  // namespace quod::demo
