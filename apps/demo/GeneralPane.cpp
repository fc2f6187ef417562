#include "demo/GeneralPane.h"

#include <QFormLayout>

#include "demo/EditorArea.h"
#include "quoddle/interface/NotificationName.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/NotificationCenter.h"
#include "quoddle/strings/LineEnding.h"
#include "quoddle/strings/StringEncoding.h"

namespace quod::demo {
namespace {

QString label(const std::string& text) {
    return QString::fromStdString(text);
}

// Binds a check box to a boolean preference: shown from the store, stored on every click.
template <typename Accessor>
QCheckBox* boundCheckBox(const std::string& title, Accessor preference, NotificationName posted,
                         QWidget* parent) {
    auto* box = new QCheckBox(label(title), parent);
    box->setChecked(preference.get());
    QObject::connect(box, &QCheckBox::toggled, parent, [preference, posted](bool on) {
        preference.set(on);
        Notifications().post(posted);
    });
    return box;
}

// Selects the item whose data is `value`, or none.
void selectData(QComboBox& box, int64_t value) {
    box.setCurrentIndex(box.findData(QVariant::fromValue(value)));
}

}  // namespace

GeneralPane::GeneralPane(QWidget* parent)
    : PreferenceTabViewController(parent),
      tabWidth_(new QSpinBox(this)),
      indentWithSpaces_(boundCheckBox(Localize::useSpacesInsteadOfTabs(),
                                      Defaults::indentWithSpaces,
                                      NotificationName::tabWidthChanged(), this)),
      convertLineEndings_(boundCheckBox(Localize::convertLineEndingsWhenSaving(),
                                        Defaults::convertLineEndings,
                                        NotificationName::updateStatusBar(), this)),
      lineEndings_(new QComboBox(this)),
      alwaysUseTextEncoding_(boundCheckBox(Localize::openDocumentWithTextEncoding(),
                                           Defaults::alwaysUseTextEncoding,
                                           NotificationName::updateStatusBar(), this)),
      encodings_(new QComboBox(this)),
      resume_(boundCheckBox(Localize::resume(), Defaults::resume, NotificationName::resumeChanged(),
                            this)) {
    tabWidth_->setObjectName("tabWidth");
    tabWidth_->setRange(1, 64);
    tabWidth_->setValue(tabWidthPreference());
    connect(tabWidth_, &QSpinBox::valueChanged, this, [](int columns) {
        Defaults::tabWidth.set(columns);
        Notifications().post(NotificationName::tabWidthChanged());
    });

    lineEndings_->setObjectName("lineEndings");
    lineEndings_->addItem("LF", QVariant::fromValue<int64_t>(static_cast<int>(LineEnding::unix)));
    lineEndings_->addItem("CR LF",
                          QVariant::fromValue<int64_t>(static_cast<int>(LineEnding::windows)));
    lineEndings_->addItem("CR", QVariant::fromValue<int64_t>(static_cast<int>(LineEnding::macOS9)));
    selectData(*lineEndings_, Defaults::lineEndings.get());

    encodings_->setObjectName("encodings");
    // 0, the stored value until the user picks one, opens documents in the encoding they are
    // detected in; without an entry of its own the list would show nothing chosen.
    encodings_->addItem(label(Localize::automatic()),
                        QVariant::fromValue(static_cast<int64_t>(Encodings::none)));
    encodings_->insertSeparator(1);
    for (const StringEncoding& entry : Misc::allStringEncodings()) {
        encodings_->addItem(label(entry.name), QVariant::fromValue(entry.tag));
    }
    selectData(*encodings_, Defaults::encodingsPopUp.get());

    // Connected after the initial selection, so that showing the pane stores nothing.
    connect(lineEndings_, &QComboBox::activated, this, [this](int index) {
        Defaults::lineEndings.set(lineEndings_->itemData(index).toLongLong());
        Notifications().post(NotificationName::updateStatusBar());
    });
    connect(encodings_, &QComboBox::activated, this, [this](int index) {
        Defaults::encodingsPopUp.set(encodings_->itemData(index).toLongLong());
        Notifications().post(NotificationName::updateStatusBar());
    });

    auto* form = new QFormLayout(this);
    form->addRow(label(Localize::tabWidth()), tabWidth_);
    form->addRow(QString(), indentWithSpaces_);
    form->addRow(QString(), convertLineEndings_);
    form->addRow(label(Localize::lines()), lineEndings_);
    form->addRow(QString(), alwaysUseTextEncoding_);
    form->addRow(label(Localize::encoding()), encodings_);
    form->addRow(QString(), resume_);
}

QString GeneralPane::tabLabel() const {
    return label(Localize::general());
}

std::optional<QIcon> GeneralPane::tabImage() const {
    return QIcon::fromTheme("preferences-system");
}

}  // namespace quod::demo
