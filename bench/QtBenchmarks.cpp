// A 100 MB document in the Qt layer's editor pane (text view and line-number gutter), drawn by
// the offscreen platform: how long each step a user waits for takes, against a budget of one
// second a step.
//   - open: map, decode and index the file, make the pane;
//   - first paint: show the pane and paint it;
//   - gutter ready: the gutter builds its line index once its 0.3 s start has passed (the figure
//     counts from the gutter's set-up, when the pane is made, so it includes that fixed delay and
//     the first paint; the build alone is also timed on its own);
//   - paint with line numbers, jump to the end and paint, type a line break there and paint;
//   - the preferences window (four panes of a dozen controls each, made by its storyboard entry):
//     shown the first time, another tab chosen and painted, shown again.
// A plain timed program rather than Google Benchmark: one QApplication, one document, and steps
// that each happen once in a user's session. Prints one line per step and exits 1 when a step is
// over budget.
#include <QApplication>
#include <QCheckBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QScrollBar>
#include <QWindow>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "DocumentGenerator.h"
#include "quoddle/gutter/LineLocationArray.h"
#include "quoddle/qt/EditorPane.h"
#include "quoddle/qt/GutterWidget.h"
#include "quoddle/qt/MainLoopBridge.h"
#include "quoddle/qt/PreferenceTabViewController.h"
#include "quoddle/qt/PreferencesWindowController.h"
#include "quoddle/qt/QtPlatform.h"
#include "quoddle/qt/Storyboard.h"
#include "quoddle/qt/TextViewWidget.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr double budgetSeconds = 1.0;
bool overBudget = false;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void report(const char* step, double seconds, bool budgeted = true) {
    const bool over = budgeted && seconds >= budgetSeconds;
    overBudget = overBudget || over;
    std::printf("%-56s %9.1f ms%s\n", step, seconds * 1000,
                over ? "  OVER BUDGET" : (budgeted ? "" : "  (not budgeted)"));
}

double timed(const std::function<void()>& step) {
    const auto start = Clock::now();
    step();
    return secondsSince(start);
}

void waitUntilExposed(QWidget& window) {
    while (window.windowHandle() == nullptr || !window.windowHandle()->isExposed())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

// A pane as the applications' are: a form of labelled fields and check boxes.
quod::PreferenceTabViewController* formPane() {
    auto* pane = new quod::PreferenceTabViewController;
    auto* form = new QFormLayout(pane);
    for (int row = 0; row < 6; ++row) {
        form->addRow(QString("Setting %1").arg(row), new QLineEdit(pane));
        form->addRow(QString(), new QCheckBox(QString("Option %1").arg(row), pane));
    }
    return pane;
}

void timePreferencesWindow() {
    using quod::Singleton::WindowController;
    auto storyboard = std::make_unique<quod::Storyboard>();
    storyboard->registerController("Preferences", [] {
        auto* tabs = new quod::PreferencesTabViewController;
        for (const char* label : {"General", "Themes", "Commands", "Snippets"})
            tabs->addTabViewItem(formPane(), label);
        return std::make_unique<quod::PreferencesWindowController>(tabs);
    });
    quod::Storyboard::setMain(std::move(storyboard));

    quod::PreferencesWindowController* controller = nullptr;
    report("preferences window: first show and paint", timed([&] {
               quod::WindowController::show(WindowController::preferences);
               controller = qobject_cast<quod::PreferencesWindowController*>(
                   quod::WindowController::controller(WindowController::preferences));
               waitUntilExposed(*controller->window());
               controller->window()->repaint();
           }));
    report("preferences window: choose another tab and paint", timed([&] {
               controller->tabViewController()->setSelectedTabViewItemIndex(2);
               controller->window()->repaint();
           }));
    report("preferences window: show again", timed([&] {
               quod::WindowController::show(WindowController::preferences);
               controller->window()->repaint();
           }));
    controller->window()->close();
}

}  // namespace

int main(int argc, char** argv) {
    using namespace quod;
    qputenv("QT_QPA_PLATFORM", "offscreen");  // no display needed, the drawing is the same

    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / "quoddle-qt-benchmark-100MB.txt";
    {
        std::ofstream out(file, std::ios::binary);
        const std::string& text = bench::utf8Document(100 * bench::megabyte);
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
    }

    QApplication application(argc, argv);
    MainLoopBridge bridge;
    QtPlatform::install();

    std::shared_ptr<QuodTextView> view;
    std::unique_ptr<EditorPane> pane;
    report("open (map, decode, index; make the pane)", timed([&] {
               auto storage = TextStorage::fromUtf8File(file.string());
               view = std::make_shared<QuodTextView>(std::move(*storage));
               pane = std::make_unique<EditorPane>(view);
               pane->resize(1000, 800);
           }));
    std::printf("  %lld lines, %lld UTF-16 units\n",
                static_cast<long long>(view->textStorage().lineCount()),
                static_cast<long long>(view->length()));
    const auto gutterSetUp = Clock::now();

    report("first paint (show the pane and paint it)", timed([&] {
               pane->show();
               waitUntilExposed(*pane);
               pane->repaint();
           }));

    const LineNumberView& gutter = pane->gutter().lineNumberView();
    while (gutter.lineLocationArray().empty())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    report("gutter ready (from its set-up, 0.3 s start included)", secondsSince(gutterSetUp));
    report("  the line index's full build, timed alone", timed([&] {
               LineLocationArray index;
               (void)index.rebuild(view->textStorage());
           }));

    report("paint with line numbers", timed([&] { pane->repaint(); }));

    report("jump to the end and paint", timed([&] {
               const int64_t end = view->length();
               view->setSelectedRange({end, 0});
               pane->textView().ensurePositionVisible(end);
               pane->repaint();
           }));
    if (pane->textView().firstVisibleLine() + pane->textView().visibleLineCount() <
        view->textStorage().lineCount()) {
        std::printf("the end of the document is not in view\n");
        overBudget = true;
    }

    report("type a line break at the end and paint", timed([&] {
               view->replaceWithUndo(u"\n", view->selectedRange(), false);
               pane->repaint();
           }));

    pane.reset();
    std::filesystem::remove(file);

    timePreferencesWindow();
    return overBudget ? 1 : 0;
}
