#include "demo/MainWindow.h"

#include <QApplication>
#include <QDockWidget>
#include <QFileDialog>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>

#include "demo/TextMenus.h"
#include "demo/ThemeMenu.h"
#include "demo/ThemePalette.h"
#include "quoddle/Version.h"
#include "quoddle/filesystem/Url.h"
#include "quoddle/interface/Attributes.h"
#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/qt/Alert.h"
#include "quoddle/qt/MainMenuLocalization.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/qt/WindowController.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/NotificationCenter.h"

namespace quod::demo {
namespace {

QDockWidget* addDock(QMainWindow& window, const QString& title, const char* name, QWidget* content,
                     Qt::DockWidgetArea area) {
    auto* dock = new QDockWidget(title, &window);
    dock->setObjectName(name);
    dock->setWidget(content);
    dock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    window.addDockWidget(area, dock);
    return dock;
}

}  // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent),
      document_(std::make_unique<Document>()),
      editor_(new EditorArea(document_->textView(), this)),
      sidebar_(new FolderSidebar(this)),
      output_(new QPlainTextEdit(this)),
      statusLine_(new StatusLine(*statusBar())) {
    setCentralWidget(editor_);
    addDock(*this, QString::fromStdString(Localize::sidebar()), "sidebarDock", sidebar_,
            Qt::LeftDockWidgetArea);
    output_->setObjectName("outputPane");
    output_->setReadOnly(true);
    output_->setMaximumBlockCount(10'000);
    addDock(*this, QString::fromStdString(Localize::result()), "outputDock", output_,
            Qt::BottomDockWidgetArea);
    resizeDocks({findChild<QDockWidget*>("sidebarDock")}, {220}, Qt::Horizontal);
    resizeDocks({findChild<QDockWidget*>("outputDock")}, {120}, Qt::Vertical);

    addFileMenu();
    new TextMenus(*menuBar(), [this] { return document_.get(); });
    commands_ = new CommandRunner(*menuBar(), *output_, [this] { return document_.get(); });
    new ThemeMenu(*menuBar());
    addViewMenu();
    addHelpMenu();

    TextViewWidget& textView = editor_->textView();
    connect(&textView, &TextViewWidget::selectionChanged, this,
            [this] { statusLine_->update(*document_->textView()); });
    connect(&textView, &TextViewWidget::textChanged, this, [this] {
        statusLine_->update(*document_->textView());
        updateTitle();
    });
    connect(sidebar_, &FolderSidebar::fileActivated, this, [this](const QString& path) {
        QString error;
        if (!openDocument(path, &error)) showError(error);
    });
    themeChanged_ =
        Notifications().addObserver(NotificationName::themeChanged().rawValue(), nullptr,
                                    [this](const Notification&) { applyThemeColors(); });
    tabWidthChanged_ =
        Notifications().addObserver(NotificationName::tabWidthChanged().rawValue(), nullptr,
                                    [this](const Notification&) { editor_->applyTabWidth(); });
    textFontChanged_ =
        Notifications().addObserver(NotificationName::textFontChanged().rawValue(), nullptr,
                                    [this](const Notification&) { editor_->applyTextFont(); });
    applyThemeColors();
    documentChanged();
    // The framework's catalogue translates what it knows of the menus; the rest stays English.
    Localize::mainMenu(*menuBar());
    resize(1100, 720);
}

MainWindow::~MainWindow() = default;

bool MainWindow::openDocument(const QString& path, QString* error) {
    std::string reason;
    auto document = Document::open(path.toStdString(), &reason);
    if (!document) {
        if (error != nullptr) *error = QString::fromStdString(reason);
        return false;
    }
    editor_->setTextView(document->textView());
    document_ = std::move(document);
    if (sidebar_->folder().empty()) {
        chooseFolder(QString::fromStdString(
            Url::fileURL(document_->path(), false).deletingLastPathComponent().path()));
    }
    documentChanged();
    return true;
}

bool MainWindow::saveDocument(QString* error) {
    std::string reason;
    bool saved = false;
    if (document_->path().empty()) {
        const QString path = QFileDialog::getSaveFileName(this);
        if (path.isEmpty()) return false;
        saved = document_->saveAs(path.toStdString(), &reason);
    } else {
        saved = document_->save(&reason);
    }
    if (!saved && error != nullptr) *error = QString::fromStdString(reason);
    updateTitle();
    return saved;
}

void MainWindow::chooseFolder(const QString& path) {
    sidebar_->setFolder(path.toStdString());
}

void MainWindow::addFileMenu() {
    QMenu* menu = menuBar()->addMenu("File");
    QAction* newWindow = menu->addAction("New Window");
    newWindow->setObjectName("newWindow");
    newWindow->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N));
    connect(newWindow, &QAction::triggered, this, &MainWindow::newWindowRequested);
    QAction* open =
        menu->addAction(QString::fromStdString(Localize::open()) + QString::fromUtf8("…"));
    open->setShortcut(QKeySequence::Open);
    connect(open, &QAction::triggered, this, [this] {
        const QString path = QFileDialog::getOpenFileName(this);
        QString error;
        if (!path.isEmpty() && !openDocument(path, &error)) showError(error);
    });
    QAction* save = menu->addAction(QString::fromStdString(Localize::save()));
    save->setObjectName("save");
    save->setShortcut(QKeySequence::Save);
    connect(save, &QAction::triggered, this, [this] {
        QString error;
        if (!saveDocument(&error) && !error.isEmpty()) {
            Interface::error(Localize::couldntSaveDocument(), error.toStdString());
        }
    });
    QAction* saveAs = menu->addAction(QString::fromStdString(Localize::Ellipsis::save()));
    // Qt's standard Save As and Preferences keys are empty outside some desktops; the demo's
    // keys are the same everywhere.
    saveAs->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    connect(saveAs, &QAction::triggered, this, [this] {
        const QString path = QFileDialog::getSaveFileName(this);
        std::string reason;
        if (path.isEmpty()) return;
        if (!document_->saveAs(path.toStdString(), &reason)) {
            Interface::error(Localize::couldntSaveDocument(), reason);
        }
        updateTitle();
    });
    menu->addSeparator();
    QAction* folder = menu->addAction(QString::fromStdString(Localize::Ellipsis::chooseFolder()));
    connect(folder, &QAction::triggered, this, [this] {
        const QString path = QFileDialog::getExistingDirectory(this);
        if (!path.isEmpty()) chooseFolder(path);
    });
    menu->addSeparator();
    QAction* preferences =
        menu->addAction(QString::fromStdString(Localize::preferences()) + QString::fromUtf8("…"));
    preferences->setObjectName("preferences");
    preferences->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    connect(preferences, &QAction::triggered, this,
            [] { WindowController::show(Singleton::WindowController::preferences); });
    menu->addSeparator();
    QAction* close = menu->addAction(QString::fromStdString(Localize::close()));
    close->setShortcut(QKeySequence::Close);
    connect(close, &QAction::triggered, this, &QWidget::close);
    // Quitting leaves the windows open, so that they are saved for the next launch ("Resume").
    QAction* quit = menu->addAction("Quit");
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, qApp, &QApplication::quit, Qt::QueuedConnection);
}

void MainWindow::addViewMenu() {
    QMenu* menu = menuBar()->addMenu(QString::fromStdString(Localize::show()));
    for (auto* dock : findChildren<QDockWidget*>())
        menu->addAction(dock->toggleViewAction());
    menu->actions().front()->setText(QString::fromStdString(Localize::toggleSidebar()));
}

void MainWindow::addHelpMenu() {
    QMenu* menu = menuBar()->addMenu("Help");
    menu->setObjectName("helpMenu");
    QAction* about = menu->addAction("About Quoddle Demo");
    about->setMenuRole(QAction::AboutRole);
    connect(about, &QAction::triggered, this, [this] {
        // The version of the library the demo runs with, which a newer package may have replaced.
        QMessageBox::about(this, "About Quoddle Demo",
                           QString("Quoddle Demo shows the Quoddle text-services framework.\n\n"
                                   "Quoddle %1, MIT licence.")
                               .arg(QString::fromUtf8(quod::version())));
    });
}

void MainWindow::documentChanged() {
    statusLine_->update(*document_->textView());
    statusLine_->setEncoding(document_->encoding());
    updateTitle();
    editor_->setFocus();
}

void MainWindow::updateTitle() {
    setWindowTitle(QString::fromStdString(document_->displayName()) + "[*] — Quoddle Demo");
    setWindowModified(document_->isModified());
}

void MainWindow::applyThemeColors() {
    ThemePalette::apply();
    editor_->applyThemeColors();
    editor_->applyTextFont();
    editor_->applyTabWidth();
    // The command output and the status line are drawn with the framework's attribute sets for
    // them: the text font and the theme's colours, and the small system font.
    const QTextCharFormat result = toQTextCharFormat(Attributes::result());
    QPalette palette = output_->palette();
    if (result.hasProperty(QTextFormat::BackgroundBrush))
        palette.setColor(QPalette::Base, result.background().color());
    if (result.hasProperty(QTextFormat::ForegroundBrush))
        palette.setColor(QPalette::Text, result.foreground().color());
    output_->setPalette(palette);
    output_->setFont(result.font());
    statusBar()->setFont(toQTextCharFormat(Attributes::statusLine()).font());
}

void MainWindow::showError(const QString& message) {
    Interface::error(message.toStdString(), std::string());
}

}  // namespace quod::demo
