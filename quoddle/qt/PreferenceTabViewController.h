// A preference pane: the base of every pane that PreferencesTabViewController shows as a tab.
//
// A pane asks for 600 × 100 points of content each time it is about to appear (`viewWillAppear`,
// called from the first show event of each showing), and the tab view controller sizes the window
// to that, grown to what the pane's layout needs at least. A pane names its tab by also adopting
// PreferenceTabType; a pane that does not keeps whatever label and image its tab was given.
//
//     class GeneralPane : public PreferenceTabViewController, public PreferenceTabType {
//         QString tabLabel() const override { return toQString(Localize::general()); }
//         std::optional<QIcon> tabImage() const override { return std::nullopt; }
//     };
#pragma once

#include <QIcon>
#include <QSize>
#include <QString>
#include <QWidget>
#include <optional>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT PreferenceTabType {
  public:
    virtual ~PreferenceTabType() = default;
    [[nodiscard]] virtual QString tabLabel() const = 0;
    [[nodiscard]] virtual std::optional<QIcon> tabImage() const = 0;
};

class QUODDLE_EXPORT PreferenceTabViewController : public QWidget {
    Q_OBJECT

  public:
    explicit PreferenceTabViewController(QWidget* parent = nullptr);

    // No size (0 × 0) until the pane first appears.
    [[nodiscard]] QSize preferredContentSize() const { return preferredContentSize_; }
    // Tells preferredContentSizeChanged every time, also when the size stays the same, so that
    // each appearance sizes the window again.
    void setPreferredContentSize(QSize size) {
        preferredContentSize_ = size;
        Q_EMIT preferredContentSizeChanged(size);
    }

    // Overrides call this first.
    virtual void viewWillAppear();

  Q_SIGNALS:
    void preferredContentSizeChanged(QSize size);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    QSize preferredContentSize_{0, 0};
};

}  // namespace quod
