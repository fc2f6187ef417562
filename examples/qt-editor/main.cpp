// qt-editor: a window with Quoddle's editor pane (the text view and its line-number gutter) on a
// file, and a menu of two Text operations with undo.
//
//     qt-editor [FILE]            edits FILE, or a few lines of sample text
//     qt-editor --check [FILE]    shows the window, checks that the gutter numbered every line
//                                 of the text, and quits (status 1 if it did not)
//
// Quoddle::qt gives its hosts QT_NO_KEYWORDS (the core's Signal has an `emit` member): Qt code of
// the host spells Q_EMIT, Q_SIGNALS and Q_SLOTS.
#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QTimer>
#include <iostream>

#include "quoddle/base/FileBytes.h"
#include "quoddle/gutter/LineLocationArray.h"
#include "quoddle/qt/EditorPane.h"
#include "quoddle/qt/GutterWidget.h"
#include "quoddle/qt/MainLoopBridge.h"
#include "quoddle/text/DecodedText.h"
#include "quoddle/text/LineOperations.h"
#include "quoddle/text/QuodTextView.h"

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    // The gutter follows edits through the framework's main run loop; Qt's loop drives it.
    quod::MainLoopBridge bridge;

    QStringList arguments = application.arguments().mid(1);
    const bool check = arguments.removeAll("--check") > 0;
    auto view = std::make_shared<quod::QuodTextView>(u"pear\napple\nfig\nbanana\n");
    if (!arguments.isEmpty()) {
        const auto file = quod::FileBytes::read(arguments.front().toStdString());
        auto document = file ? quod::decodeDocument(file->bytes()) : std::nullopt;
        if (!document) {
            std::cerr << "qt-editor: cannot read " << arguments.front().toStdString()
                      << " as text\n";
            return 1;
        }
        view = std::make_shared<quod::QuodTextView>(std::move(document->storage));
    }

    QMainWindow window;
    auto* pane = new quod::EditorPane(view);
    window.setCentralWidget(pane);
    QMenu* menu = window.menuBar()->addMenu("&Text");
    menu->addAction("&Sort Lines", [view] {
        view->selectAll();
        quod::Text::sort(*view, false);
    });
    menu->addAction("&Duplicate Line", [view] { quod::Text::duplicateLine(*view); });
    menu->addAction("&Undo", QKeySequence::Undo, [view] { view->undo(); });
    window.resize(640, 400);
    window.show();

    if (check) {
        // The gutter indexes the lines 0.3 s after it is set up.
        QTimer::singleShot(1000, [&] {
            const quod::LineLocationArray& lines =
                pane->gutter().lineNumberView().lineLocationArray();
            const bool numbered =
                !lines.empty() &&
                lines == quod::LineLocationArray::locationsByRebuilding(view->textStorage());
            std::cout << "qt-editor: " << lines.size() << " lines numbered, gutter "
                      << pane->gutter().width() << " px wide\n";
            application.exit(numbered && pane->gutter().width() > 0 ? 0 : 1);
        });
    }
    return application.exec();
}
