#include "demo/CommandRunner.h"

#include <QInputDialog>
#include <QMenu>
#include <QPointer>

#include "quoddle/base/Utf.h"
#include "quoddle/filesystem/Misc.h"
#include "quoddle/filesystem/Task.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/qt/StringConversion.h"
#include "quoddle/runtime/Background.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/RunLoop.h"
#include "quoddle/text/CommandSplitting.h"

namespace quod::demo {

CommandRunner::CommandRunner(QMenuBar& bar, QPlainTextEdit& output, CurrentDocument currentDocument)
    : QObject(&bar), output_(output), currentDocument_(std::move(currentDocument)) {
    QMenu* menu = bar.addMenu(QString::fromStdString(Localize::commands()));
    menu->setObjectName("commandsMenu");
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { rebuildMenu(*menu); });
    rebuildMenu(*menu);
}

std::vector<std::string> CommandRunner::environmentArguments(std::string_view line) {
    std::vector<std::string> arguments;
    for (const std::u16string& argument : Text::separateCommand(toUtf16(line))) {
        arguments.push_back(toUtf8(argument));
    }
    // Runs of spaces can leave empty arguments at the ends; a program name cannot be empty.
    while (!arguments.empty() && arguments.front().empty())
        arguments.erase(arguments.begin());
    if (arguments.empty()) return {};
    arguments.insert(arguments.begin(), "PATH=" + Misc::defaultPATH());
    return arguments;
}

void CommandRunner::run(const Command& command) {
    std::vector<std::string> arguments = environmentArguments(command.text());
    if (arguments.empty()) return;
    std::weak_ptr<QuodTextView> origin;
    if (Document* document = currentDocument_()) origin = document->textView();
    Background().async([target = QPointer<CommandRunner>(this), command,
                        arguments = std::move(arguments), origin = std::move(origin)]() mutable {
        std::string output = Task::run(std::move(arguments), "/usr/bin/env", true);
        // Back on the main thread, where the runner may be gone with its window.
        RunLoop::main().post([target = std::move(target), command = std::move(command),
                              output = std::move(output), origin = std::move(origin)] {
            if (!target.isNull()) target->report(command, output, origin);
        });
    });
}

void CommandRunner::report(const Command& command, const std::string& output,
                           const std::weak_ptr<QuodTextView>& origin) {
    if (command.isInline()) {
        if (auto view = origin.lock()) {
            view->replaceWithUndo(toUtf16(output), view->selectedRange(), true);
        }
    } else if (!command.suppressResult()) {
        output_.appendPlainText("$ " + QString::fromStdString(command.text()));
        output_.appendPlainText(QString::fromStdString(output));
    }
    Q_EMIT finished(QString::fromStdString(command.name()), QString::fromStdString(output));
}

void CommandRunner::rebuildMenu(QMenu& menu) {
    menu.clear();
    for (const Command& command : Command::sort(Defaults::commands.get())) {
        QAction* action = menu.addAction(QString::fromStdString(command.name()));
        connect(action, &QAction::triggered, this, [this, command] { run(command); });
    }
    if (!menu.isEmpty()) menu.addSeparator();
    QAction* ask = menu.addAction(QString::fromUtf8("Run Command…"));
    ask->setObjectName("runCommand");
    connect(ask, &QAction::triggered, this, &CommandRunner::askForCommand);
}

void CommandRunner::askForCommand() {
    bool chosen = false;
    const QString line = QInputDialog::getText(
        output_.window(), QString::fromStdString(Localize::run()),
        QString::fromStdString(Localize::command()), QLineEdit::Normal,
        QString::fromStdString(Defaults::runText.get().value_or("")), &chosen);
    if (!chosen || line.trimmed().isEmpty()) return;
    Defaults::runText.set(line.toStdString());
    run(Command(line.toStdString(), line.toStdString(), false, false, false));
}

}  // namespace quod::demo
