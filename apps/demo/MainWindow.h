// The demo's window: the folder sidebar on the left, the editor (line-number gutter and text view)
// in the middle, the read-only output of commands below it, the status line at the bottom, and
// menus for files, the text operations, snippets, commands and themes. The File menu also opens
// the shared preferences window, another window ("New Window", through `newWindowRequested`),
// closes this one and quits the application with its windows left open (so "Resume" brings them
// back). Help > About names the framework's version. Failures to open or save show the framework's
// error alert.
//
// The window always has a document: an untitled one until a file is opened. Opening replaces it
// (the demo edits one document at a time); a file that cannot be opened leaves the current one.
// The sidebar shows the chosen folder, or the folder of the first document opened.
//
// Everything the window shows of the preferences is read from the standard store when it is
// needed and again when "ThemeChanged" is posted; the frame around the text follows the theme
// through the application palette (ThemePalette.h).
#pragma once

#include <QMainWindow>
#include <QPlainTextEdit>
#include <memory>

#include "demo/CommandRunner.h"
#include "demo/Document.h"
#include "demo/EditorArea.h"
#include "demo/FolderSidebar.h"
#include "demo/StatusLine.h"
#include "quoddle/base/Signal.h"

namespace quod::demo {

class MainWindow : public QMainWindow {
    Q_OBJECT

  public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    // False, with a sentence for the user in `error`, when the file cannot be opened.
    bool openDocument(const QString& path, QString* error = nullptr);
    // False, with a sentence for the user in `error`, when the document could not be written. An
    // untitled document asks where to go with a file dialog (false, no sentence, if cancelled).
    bool saveDocument(QString* error = nullptr);
    void chooseFolder(const QString& path);

    [[nodiscard]] Document& document() { return *document_; }
    [[nodiscard]] EditorArea& editorArea() { return *editor_; }
    [[nodiscard]] FolderSidebar& sidebar() { return *sidebar_; }
    [[nodiscard]] StatusLine& statusLine() { return *statusLine_; }
    [[nodiscard]] QPlainTextEdit& outputPane() { return *output_; }
    [[nodiscard]] CommandRunner& commandRunner() { return *commands_; }

  Q_SIGNALS:
    // "New Window" was chosen; whoever manages the windows opens one.
    void newWindowRequested();

  private:
    void addFileMenu();
    void addViewMenu();
    void addHelpMenu();
    void documentChanged();
    void updateTitle();
    void applyThemeColors();
    void showError(const QString& message);

    std::unique_ptr<Document> document_;
    EditorArea* editor_;
    FolderSidebar* sidebar_;
    QPlainTextEdit* output_;
    StatusLine* statusLine_;
    CommandRunner* commands_ = nullptr;
    Connection themeChanged_;
    Connection tabWidthChanged_;
    Connection textFontChanged_;
};

}  // namespace quod::demo
