// What the core leaves to the toolkit, supplied by Qt: fonts, font measurement, system colours,
// the light or dark appearance, the layout direction and the making of thumbnails.
//
// `QtPlatform::install()` needs the QApplication (or QGuiApplication) to exist; the first call
// installs, later calls return the same object (after the application is destroyed, the next call
// installs anew). It
//   - installs QtFontCatalogue as the font catalogue, QtFontMetrics as the gutter's metrics and
//     QtThumbnailGenerator as the thumbnail cache's generator (interface/QuickLook.h);
//   - takes the current appearance from the application palette: dark when the window colour's
//     lightness is below one half, else light;
//   - feeds every SystemColor the matching palette colour (selected-text background: Highlight,
//     window background: Window, text: Text, text background: Base, separator: Dark, grid: Mid,
//     under-page background: Mid) as the value for the palette's appearance; the other
//     appearance keeps the values it had;
//   - sets the interface layout direction from QGuiApplication::layoutDirection.
// It keeps following the application: a new palette (QEvent::ApplicationPaletteChange) updates
// the appearance and colours and then emits `appearanceChanged`, which ExtraTextView follows; a
// new layout direction updates Interface's. The gutter and ExtraTextView install the platform
// themselves, so a host needs to call this only to have fonts and colours before its first such
// widget (the font catalogue should be in place before the first Font is made).
// When the application goes, the core gets its own font catalogue and metrics back, since Qt's
// font database goes with it, and has no thumbnail generator again. Main thread only.
#pragma once

#include <QObject>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT QtPlatform : public QObject {
    Q_OBJECT

  public:
    static QtPlatform& install();
    ~QtPlatform() override;

  Q_SIGNALS:
    // The application palette changed; system colours and the current appearance follow it now.
    void appearanceChanged();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QtPlatform();
    void followPalette();
};

}  // namespace quod
