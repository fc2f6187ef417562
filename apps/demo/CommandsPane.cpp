#include "demo/CommandsPane.h"

#include <QVBoxLayout>

#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/NotificationCenter.h"

namespace quod::demo {
namespace {

QString label(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

CommandsPane::CommandsPane(QWidget* parent)
    : PreferenceTabViewController(parent),
      editor_(new ItemTableEditor(
          {{label(Localize::name())},
           {label(Localize::command())},
           {label(Localize::inlineString()), ItemColumn::Kind::checkBox},
           {label(Localize::suppressCommandResult()), ItemColumn::Kind::checkBox}},
          {label(Localize::command()), QString("echo"), false, false}, Localize::deleteCommand(),
          deleteSuppressionKey, this)) {
    std::vector<ItemTableEditor::Row> rows;
    for (const Command& command : Defaults::commands.get()) {
        rows.push_back({label(command.name()), label(command.text()), command.isInline(),
                        command.suppressResult()});
    }
    editor_->setRows(rows);
    connect(editor_, &ItemTableEditor::edited, this, &CommandsPane::store);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(editor_);
}

QString CommandsPane::tabLabel() const {
    return label(Localize::commands());
}

std::optional<QIcon> CommandsPane::tabImage() const {
    return QIcon::fromTheme("utilities-terminal");
}

void CommandsPane::store() {
    std::vector<Command> commands;
    for (const ItemTableEditor::Row& row : editor_->rows()) {
        commands.emplace_back(row[0].toString().toStdString(), row[1].toString().toStdString(),
                              row[2].toBool(), row[3].toBool(), false);
    }
    Defaults::commands.set(commands);
    Notifications().post(NotificationName::commandsChanged());
}

}  // namespace quod::demo
