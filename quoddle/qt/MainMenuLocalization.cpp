#include "quoddle/qt/MainMenuLocalization.h"

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSet>

#include "quoddle/runtime/Localize.h"

namespace quod::Localize {
namespace {

// The title as shown: "&&" is a literal '&', a single '&' marks the next letter as the mnemonic.
QString withoutMnemonic(const QString& title) {
    QString plain;
    plain.reserve(title.size());
    for (qsizetype i = 0; i < title.size(); ++i) {
        if (title[i] == QLatin1Char('&')) {
            if (i + 1 < title.size() && title[i + 1] == QLatin1Char('&')) {
                plain += QLatin1Char('&');
                ++i;
            }
            continue;
        }
        plain += title[i];
    }
    return plain;
}

void translate(const QList<QAction*>& actions, QSet<const QMenu*>& visited) {
    for (QAction* action : actions) {
        if (action->isSeparator()) continue;
        const QString key = withoutMnemonic(action->text());
        const std::string english = key.toStdString();
        const std::string translated = Localize::string(english);
        if (translated != english) {
            action->setText(
                QString::fromStdString(translated).replace(QLatin1Char('&'), QStringLiteral("&&")));
        }
        // A menu may be reached twice (or contain itself); each is translated once.
        if (const QMenu* menu = action->menu(); menu != nullptr && !visited.contains(menu)) {
            visited.insert(menu);
            translate(menu->actions(), visited);
        }
    }
}

}  // namespace

void mainMenu(QMenuBar& menuBar) {
    QSet<const QMenu*> visited;
    translate(menuBar.actions(), visited);
}

void mainMenu() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        const auto* window = qobject_cast<QMainWindow*>(widget);
        if (window == nullptr) continue;
        // menuBar() would make a bar for a window that has none.
        if (auto* bar = qobject_cast<QMenuBar*>(window->menuWidget())) mainMenu(*bar);
    }
}

}  // namespace quod::Localize
