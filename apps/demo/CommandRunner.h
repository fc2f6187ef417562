// Runs the user's commands and shows what they print.
//
// The Commands menu lists the "Commands" preference by name (read again each time the menu
// opens) and "Run Command…", which asks for a command line and remembers it under "RunText".
//
// A command line is split into arguments with Text::separateCommand (quotes group, a backslash
// keeps a space) and run with Task::run on the background queue, so the window never waits.
// The program is started through /usr/bin/env with PATH set to Misc::defaultPATH(): it is found
// where the user's terminal would find it, although a desktop session's own PATH is often short.
// What the command prints (output and errors together) goes to the output pane under a line
// naming it; a command marked `inline` puts it in place of the selection of the document it was
// run from instead (one undo step, if that document is still open), and one marked
// `suppressResult` shows nothing. Commands do not share a queue: several may run at once and
// report in the order they end.
//
// Task::run returns when the command closes its output, so a command that never ends (or never
// stops printing) keeps one background thread busy for good; there is no stopping it from here.
#pragma once

#include <QMenuBar>
#include <QObject>
#include <QPlainTextEdit>
#include <functional>
#include <string>
#include <vector>

#include "demo/Document.h"
#include "quoddle/preferences/Command.h"

namespace quod::demo {

class CommandRunner : public QObject {
    Q_OBJECT

  public:
    using CurrentDocument = std::function<Document*()>;

    CommandRunner(QMenuBar& bar, QPlainTextEdit& output, CurrentDocument currentDocument);

    // Starts the command and returns at once; an empty command line does nothing.
    void run(const Command& command);

    // The arguments /usr/bin/env is given for a command line: the PATH setting, then the split
    // command line. Empty when the line holds no argument.
    [[nodiscard]] static std::vector<std::string> environmentArguments(std::string_view line);

  Q_SIGNALS:
    // A command ended; `output` is everything it printed.
    void finished(const QString& name, const QString& output);

  private:
    void rebuildMenu(QMenu& menu);
    void askForCommand();
    void report(const Command& command, const std::string& output,
                const std::weak_ptr<QuodTextView>& origin);

    QPlainTextEdit& output_;
    CurrentDocument currentDocument_;
};

}  // namespace quod::demo
