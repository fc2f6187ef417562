// The General preferences: how text is indented, how line endings are written and which encoding
// opens documents.
//
// Every control shows the standard store's value when the pane is made and writes it back the
// moment the user changes it; the editor hears of it through a notification:
//   - "TabWidth" (1 to 64) and "IndentWithSpaces": "TabWidthChanged";
//   - "ConvertLineEndings" and "LineEndings" (0 LF, 1 CR LF, 2 CR), "AlwaysUseTextEncoding" and
//     "EncodingsPopUp" (an encoding number of the framework's encoding list, or 0, listed first as
//     "Automatic": the encoding a document is detected in): "UpdateStatusBar";
//   - "Resume" (reopen the windows at the next launch): "ResumeChanged", which every open window
//     follows at once.
// A stored line ending or encoding the lists do not know selects nothing and is kept until the user
// picks another.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QSpinBox>

#include "quoddle/qt/PreferenceTabViewController.h"

namespace quod::demo {

class GeneralPane : public PreferenceTabViewController, public PreferenceTabType {
    Q_OBJECT

  public:
    explicit GeneralPane(QWidget* parent = nullptr);

    [[nodiscard]] QString tabLabel() const override;
    [[nodiscard]] std::optional<QIcon> tabImage() const override;

    [[nodiscard]] QSpinBox& tabWidth() { return *tabWidth_; }
    [[nodiscard]] QCheckBox& indentWithSpaces() { return *indentWithSpaces_; }
    [[nodiscard]] QCheckBox& convertLineEndings() { return *convertLineEndings_; }
    [[nodiscard]] QComboBox& lineEndings() { return *lineEndings_; }
    [[nodiscard]] QCheckBox& alwaysUseTextEncoding() { return *alwaysUseTextEncoding_; }
    [[nodiscard]] QComboBox& encodings() { return *encodings_; }
    [[nodiscard]] QCheckBox& resume() { return *resume_; }

  private:
    QSpinBox* tabWidth_;
    QCheckBox* indentWithSpaces_;
    QCheckBox* convertLineEndings_;
    QComboBox* lineEndings_;
    QCheckBox* alwaysUseTextEncoding_;
    QComboBox* encodings_;
    QCheckBox* resume_;
};

}  // namespace quod::demo
