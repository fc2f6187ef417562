#include <QApplication>
#include <QCheckBox>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <clocale>
#include <cstdlib>
#include <functional>
#include <string>

#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/qt/Alert.h"
#include "quoddle/qt/MainMenuLocalization.h"
#include "quoddle/runtime/Localize.h"
#include "tests/support/AlertAnswers.h"

using namespace quod;
using namespace quod::testing::AlertAnswers;

namespace {

ModalResponse threeButtonAlert(const std::optional<std::string>& suppression = std::nullopt) {
    return Interface::alert("Replace?", "It exists.", "Replace", "Keep Both", "Stop", suppression);
}

// The process's message language while it lives, read by gettext once a locale is active.
class MessageLanguage {
  public:
    explicit MessageLanguage(const char* language)
        : previousLocale_(std::setlocale(LC_ALL, nullptr)) {
        setenv("LANGUAGE", language, 1);
        std::setlocale(LC_ALL, "C.UTF-8");  // also drops what gettext cached
    }
    ~MessageLanguage() {
        unsetenv("LANGUAGE");
        std::setlocale(LC_ALL, previousLocale_.c_str());
    }
    MessageLanguage(const MessageLanguage&) = delete;
    MessageLanguage& operator=(const MessageLanguage&) = delete;

  private:
    std::string previousLocale_;
};

}  // namespace

class AlertAndMenuTests : public QObject {
    Q_OBJECT

    std::shared_ptr<UserDefaults> store_;

  private Q_SLOTS:
    void init() {
        store_ = UserDefaults::inMemory();
        UserDefaults::setStandard(store_);
    }

    void responsesCountTheButtonsShown() {
        press(QStringLiteral("Replace"));
        QCOMPARE(threeButtonAlert(), ModalResponse::alertFirstButtonReturn);
        press(QStringLiteral("Keep Both"));
        QCOMPARE(threeButtonAlert(), ModalResponse::alertSecondButtonReturn);
        press(QStringLiteral("Stop"));
        QCOMPARE(threeButtonAlert(), ModalResponse::alertThirdButtonReturn);

        // An absent alternate title leaves no gap: the other button is the second shown.
        press(QStringLiteral("Stop"));
        QCOMPARE(Interface::alert("Replace?", "", "Replace", std::nullopt, "Stop", std::nullopt),
                 ModalResponse::alertSecondButtonReturn);
    }

    void alertShowsItsTextsAndDefaultsToTheFirstButton() {
        QString text, informative, defaultTitle;
        qsizetype buttons = 0;
        bool hasCheckBox = true;
        whenAlertShows([&](QMessageBox& box) {
            text = box.text();
            informative = box.informativeText();
            defaultTitle = box.defaultButton()->text();
            buttons = box.buttons().size();
            hasCheckBox = box.checkBox() != nullptr;
            box.defaultButton()->click();
        });
        QCOMPARE(Interface::alert("Reload?", "Changes are lost.", "Reload", "Cancel", std::nullopt,
                                  std::nullopt),
                 ModalResponse::alertFirstButtonReturn);
        QCOMPARE(text, QStringLiteral("Reload?"));
        QCOMPARE(informative, QStringLiteral("Changes are lost."));
        QCOMPARE(defaultTitle, QStringLiteral("Reload"));
        QCOMPARE(buttons, qsizetype{2});
        QVERIFY(!hasCheckBox);
        QVERIFY(store_->persistentDomain().empty());

        // Escape answers with the Cancel button.
        whenAlertShows([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
        QCOMPARE(Interface::alert("Reload?", "", "Reload", "Cancel", std::nullopt, std::nullopt),
                 ModalResponse::alertSecondButtonReturn);
    }

    void suppressionIsStoredOnlyWhenTicked() {
        press(QStringLiteral("Keep Both"), Suppression::tick);
        QCOMPARE(threeButtonAlert("SkipReplace"), ModalResponse::alertSecondButtonReturn);
        QCOMPARE(store_->objectForKey("SkipReplace"), std::optional<PlistValue>(true));

        press(QStringLiteral("Replace"), Suppression::tick);
        QCOMPARE(threeButtonAlert("SkipAgain"), ModalResponse::alertFirstButtonReturn);
        QVERIFY(store_->boolForKey("SkipAgain"));

        QString checkBoxText;
        whenAlertShows([&checkBoxText](QMessageBox& box) {
            checkBoxText = box.checkBox()->text();
            buttonTitled(box, QStringLiteral("Stop"))->click();
        });
        QCOMPARE(threeButtonAlert("NotTicked"), ModalResponse::alertThirdButtonReturn);
        QCOMPARE(store_->objectForKey("NotTicked"), std::nullopt);
        QCOMPARE(checkBoxText,
                 QString::fromStdString(Localize::string("Do not show this message again")));
    }

    void errorsAreWarningsWithOneOkButton() {
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QStringList titles;
        QString text, informative;
        whenAlertShows([&](QMessageBox& box) {
            icon = box.icon();
            text = box.text();
            informative = box.informativeText();
            for (QAbstractButton* button : box.buttons())
                titles << button->text();
            box.buttons().first()->click();
        });
        Interface::saveError();
        QCOMPARE(icon, QMessageBox::Warning);
        QCOMPARE(titles, QStringList{QString::fromStdString(Localize::ok())});
        QCOMPARE(text, QString::fromStdString(Localize::anErrorOccurredWhileSaving()));
        QCOMPARE(informative, QString::fromStdString(Localize::pleaseTryAgain()));
    }

    void mainMenuTranslatesEveryTitleButSeparators() {
        QMenuBar bar;
        QMenu* edit = bar.addMenu(QStringLiteral("&Edit"));
        QAction* unknown = edit->addAction(QStringLiteral("&Frobnicate"));
        QAction* separator = edit->addSeparator();
        separator->setText(QStringLiteral("Help"));
        QMenu* find = edit->addMenu(QStringLiteral("Find"));
        QAction* close = find->addAction(QStringLiteral("Close"));
        QMenu* deeper = find->addMenu(QStringLiteral("Open"));
        QAction* save = deeper->addAction(QStringLiteral("Sa&ve"));
        QAction* ampersand = deeper->addAction(QStringLiteral("Cut && Paste"));
        deeper->addAction(find->menuAction());  // a loop must not make it translate for ever

        {
            MessageLanguage german("de");
            QCOMPARE(Localize::string("Edit"), std::string("Bearbeiten"));
            Localize::mainMenu(bar);
            Localize::mainMenu(bar);  // a second pass finds nothing more to translate
        }
        QCOMPARE(edit->title(), QStringLiteral("Bearbeiten"));
        QCOMPARE(unknown->text(), QStringLiteral("&Frobnicate"));
        QCOMPARE(separator->text(), QStringLiteral("Help"));
        QCOMPARE(find->title(), QStringLiteral("Suchen"));
        QCOMPARE(close->text(), QStringLiteral("Schließen"));
        QCOMPARE(deeper->title(), QStringLiteral("Öffnen"));
        QCOMPARE(save->text(), QStringLiteral("Sichern"));
        QCOMPARE(ampersand->text(), QStringLiteral("Cut && Paste"));
    }

    void mainMenuReachesEveryMainWindow() {
        QMainWindow first;
        QMenu* help = first.menuBar()->addMenu(QStringLiteral("Help"));
        QMainWindow withoutMenuBar;
        {
            MessageLanguage german("de");
            Localize::mainMenu();
        }
        QCOMPARE(help->title(), QStringLiteral("Hilfe"));
        QVERIFY(withoutMenuBar.menuWidget() == nullptr);
    }
};

QTEST_MAIN(AlertAndMenuTests)
#include "AlertAndMenuTests.moc"
