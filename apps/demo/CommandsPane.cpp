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

ItemColumn column(CommandColumn column, ItemColumn::Kind kind) {
    return {{CommandColumns::identifier(column), CommandColumns::title(column)}, kind};
}

ItemTablePane::Description description() {
    using Kind = ItemColumn::Kind;
    return {{column(CommandColumn::name, Kind::text), column(CommandColumn::command, Kind::text),
             column(CommandColumn::isInline, Kind::checkBox),
             column(CommandColumn::suppressResult, Kind::checkBox)},
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

const UserInterfaceItemIdentifier& CommandColumns::inlineIdentifier() {
    static const UserInterfaceItemIdentifier identifier("Inline");
    return identifier;
}

const UserInterfaceItemIdentifier& CommandColumns::suppressResultIdentifier() {
    static const UserInterfaceItemIdentifier identifier("SuppressResult");
    return identifier;
}

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
