// Answering the framework's modal alerts in Qt tests: the answer is scheduled before the call
// that runs the alert, and given as soon as the alert is up and modal.
//
//     AlertAnswers::press("Delete", AlertAnswers::Suppression::tick);
//     const ModalResponse response = Interface::alert(...);
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QTimer>
#include <functional>

namespace quod::testing::AlertAnswers {

// Calls `answer` with the next alert once it shows; `answer` must close it.
inline void whenAlertShows(std::function<void(QMessageBox&)> answer) {
    auto* poll = new QTimer;
    QObject::connect(poll, &QTimer::timeout, [poll, answer = std::move(answer)] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr || !box->isVisible()) return;
        poll->stop();
        poll->deleteLater();
        answer(*box);
    });
    poll->start(10);
}

inline QAbstractButton* buttonTitled(QMessageBox& box, const QString& title) {
    for (QAbstractButton* button : box.buttons()) {
        if (button->text() == title) return button;
    }
    return nullptr;
}

enum class Suppression { leave, tick };

// Presses the button titled `title`, ticking the "don't show again" box first if asked. A missing
// button closes the alert with Escape, so a failing test does not hang on it.
inline void press(const QString& title, Suppression suppression = Suppression::leave) {
    whenAlertShows([title, suppression](QMessageBox& box) {
        if (suppression == Suppression::tick && box.checkBox() != nullptr) {
            box.checkBox()->setChecked(true);
        }
        if (QAbstractButton* button = buttonTitled(box, title)) {
            button->click();
        } else {
            box.reject();
        }
    });
}

}  // namespace quod::testing::AlertAnswers
