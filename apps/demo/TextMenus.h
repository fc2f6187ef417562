// The menus that put the framework's text operations on the current document: Edit (undo, redo),
// Lines, Text (comments, case, transforms, XML escaping, line endings), Tags, Snippets and Go.
//
// Every item calls one `Text` operation on the current document's QuodTextView, so one item is
// one undo step, exactly as the operations define it. What an operation takes from the
// preferences is read when the item is chosen, never cached: the indent ("IndentWithSpaces" and
// "TabWidth", 4 when unset), and the snippets ("Snippets"), whose menu is rebuilt each time it
// opens. The comment token follows the document's file name extension ("#" for scripts, "--" for
// SQL and Lua, "//" otherwise).
//
// Each item has an object name naming its operation ("shiftRight", "uppercase",
// "transform.toLatin"...), so tests and scripts find it with findChild<QAction*>.
#pragma once

#include <QMenuBar>
#include <QObject>
#include <functional>
#include <string>

#include "demo/Document.h"

namespace quod::demo {

class TextMenus : public QObject {
    Q_OBJECT

  public:
    using CurrentDocument = std::function<Document*()>;

    // Adds the menus to `bar`; `currentDocument` may answer null (the items then do nothing).
    TextMenus(QMenuBar& bar, CurrentDocument currentDocument);

    // The line comment token for a file name ("//" when the extension says nothing).
    [[nodiscard]] static std::u16string commentToken(const std::string& path);
    // What Shift Right inserts: a tab, or "TabWidth" spaces with "IndentWithSpaces" on.
    [[nodiscard]] static std::u16string indent();

  private:
    using Operation = std::function<void(QuodTextView&)>;

    QAction* addOperation(QMenu& menu, const QString& title, const char* name, Operation operation,
                          const QKeySequence& shortcut = {});
    void addEditMenu(QMenuBar& bar);
    void addLinesMenu(QMenuBar& bar);
    void addTextMenu(QMenuBar& bar);
    void addTagsMenu(QMenuBar& bar);
    void addSnippetsMenu(QMenuBar& bar);
    void addGoMenu(QMenuBar& bar);
    void rebuildSnippets(QMenu& menu);
    void run(const Operation& operation);

    CurrentDocument currentDocument_;
};

}  // namespace quod::demo
