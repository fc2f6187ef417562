// The content of a resizable sheet that reopens at the size the user last gave it.
//
// The frame is kept in the standard defaults store under "WindowFrame <frameName>" as rectangle
// text (WindowFrame.h); `frameName` is "SheetViewController" unless a subclass or client sets its
// own, so give each kind of sheet its own name.
//
//   * About to appear (the first show of each showing) inside a window: the controller starts
//     watching that window (it stands for the window's delegate) and sizes the window to the saved
//     frame; with nothing saved, the window keeps its designed size. A window with a parent (a
//     sheet, a dialog) takes only the saved size and stays where its parent puts it; a window of
//     its own also takes the saved position.
//   * At the end of a live resize by the user, `windowDidEndLiveResize()` saves the frame.
//     Nothing else saves it: not closing, not a resize from code.
//
// Qt reports no "live resize ended". The window system's resize events (spontaneous ones; a resize
// from code never produces one) mark a live resize, and `liveResizeQuietPeriod` without another
// ends it (as does the window hiding within that period); a maximised, full-screen or minimised
// window is not being resized by hand. Tests, and
// hosts that know better, may call `windowDidEndLiveResize()` themselves.
//
//     auto* sheet = new RenameSheet();            // a SheetViewController
//     sheet->setFrameName("RenameSheet");
//     sheet->presentAsSheet(documentWindow);      // window-modal; gone when closed
#pragma once

#include <QDialog>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT SheetViewController : public QWidget {
    Q_OBJECT

  public:
    static constexpr std::chrono::milliseconds liveResizeQuietPeriod{400};

    explicit SheetViewController(QWidget* parent = nullptr);

    [[nodiscard]] const std::string& frameName() const { return frameName_; }
    void setFrameName(std::string name) { frameName_ = std::move(name); }

    // The defaults key the frame is saved under: "WindowFrame " + name.
    [[nodiscard]] static std::string frameKey(std::string_view name);

    // Puts this controller in a new window-modal sheet over `window` and shows it. The sheet
    // takes the controller, and both are deleted when the sheet closes.
    QDialog* presentAsSheet(QWidget* window);

    // Overrides call these first.
    virtual void viewWillAppear();
    virtual void windowDidEndLiveResize();

  protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    std::string frameName_ = "SheetViewController";
    QPointer<QWidget> observedWindow_;
    QTimer liveResizeEnd_;
};

}  // namespace quod
