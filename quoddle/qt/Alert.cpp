#include "quoddle/qt/Alert.h"

#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>
#include <vector>

#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/runtime/Localize.h"

namespace quod::Interface {
namespace {

QString fromUtf8(const std::string& text) {
    return QString::fromStdString(text);
}

ModalResponse run(QMessageBox::Icon icon, const std::string& message,
                  const std::string& informativeText,
                  const std::vector<std::optional<std::string>>& titles,
                  const std::optional<std::string>& suppression) {
    QMessageBox box(icon, QString(), fromUtf8(message));
    box.setInformativeText(fromUtf8(informativeText));
    std::vector<QAbstractButton*> buttons;
    const QString cancel = fromUtf8(Localize::cancel());
    for (const auto& title : titles) {
        if (!title) continue;
        // Roles only place the buttons; which one was pressed is read from the button itself.
        QPushButton* button = box.addButton(
            fromUtf8(*title), buttons.empty() ? QMessageBox::AcceptRole : QMessageBox::ActionRole);
        if (buttons.empty()) box.setDefaultButton(button);
        if (button->text() == cancel) box.setEscapeButton(button);
        buttons.push_back(button);
    }
    if (buttons.empty()) {
        QPushButton* ok = box.addButton(fromUtf8(Localize::ok()), QMessageBox::AcceptRole);
        box.setDefaultButton(ok);
        buttons.push_back(ok);
    }
    if (suppression) {
        box.setCheckBox(
            new QCheckBox(fromUtf8(Localize::string("Do not show this message again"))));
    }

    box.exec();

    if (suppression && box.checkBox()->isChecked()) {
        UserDefaults::standard()->setBool(*suppression, true);
    }
    // A box closed without a button (only possible with one button, which is then the escape
    // button) counts as its first.
    int index = 0;
    for (size_t i = 0; i < buttons.size(); ++i) {
        if (box.clickedButton() == buttons[i]) index = static_cast<int>(i);
    }
    return static_cast<ModalResponse>(static_cast<int>(ModalResponse::alertFirstButtonReturn) +
                                      index);
}

}  // namespace

ModalResponse alert(const std::string& message, const std::string& informativeText,
                    const std::optional<std::string>& defaultTitle,
                    const std::optional<std::string>& alternateTitle,
                    const std::optional<std::string>& otherTitle,
                    const std::optional<std::string>& suppression) {
    return run(QMessageBox::Information, message, informativeText,
               {defaultTitle, alternateTitle, otherTitle}, suppression);
}

void error(const std::string& message, const std::string& informativeText) {
    run(QMessageBox::Warning, message, informativeText, {Localize::ok()}, std::nullopt);
}

void saveError() {
    error(Localize::anErrorOccurredWhileSaving(), Localize::pleaseTryAgain());
}

}  // namespace quod::Interface
