#include "quoddle/qt/QtPlatform.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPalette>
#include <QPointer>
#include <memory>
#include <string>
#include <utility>

#include "quoddle/base/Precondition.h"
#include "quoddle/gutter/FontMetrics.h"
#include "quoddle/interface/ThumbnailGenerator.h"
#include "quoddle/interface/UserInterfaceLayoutDirection.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/preferences/Font.h"
#include "quoddle/preferences/PlatformAppearance.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/qt/QtFontCatalogue.h"
#include "quoddle/qt/QtFontMetrics.h"
#include "quoddle/qt/QtThumbnailGenerator.h"

namespace quod {
namespace {

constexpr std::pair<SystemColor, QPalette::ColorRole> paletteRoles[] = {
    {SystemColor::selectedTextBackground, QPalette::Highlight},
    {SystemColor::windowBackground, QPalette::Window},
    {SystemColor::text, QPalette::Text},
    {SystemColor::textBackground, QPalette::Base},
    {SystemColor::separator, QPalette::Dark},
    {SystemColor::grid, QPalette::Mid},  // what Qt's own item views draw grids with
    {SystemColor::underPageBackground, QPalette::Mid},
};

void followLayoutDirection(Qt::LayoutDirection direction) {
    Interface::setUserInterfaceLayoutDirection(direction == Qt::RightToLeft
                                                   ? UserInterfaceLayoutDirection::rightToLeft
                                                   : UserInterfaceLayoutDirection::leftToRight);
}

}  // namespace

QtPlatform& QtPlatform::install() {
    QUOD_PRECONDITION(QGuiApplication::instance() != nullptr,
                      "the Qt platform needs a QGuiApplication");
    // Parented to the application, so it goes with it; a guarded pointer notices that.
    static QPointer<QtPlatform> installed;
    if (installed.isNull()) installed = new QtPlatform;
    return *installed;
}

QtPlatform::QtPlatform() : QObject(QGuiApplication::instance()) {
    Font::setCatalogue(std::make_shared<QtFontCatalogue>());
    FontMetrics::install(std::make_shared<QtFontMetrics>());
    ThumbnailGenerator::install(std::make_shared<QtThumbnailGenerator>());
    followPalette();
    followLayoutDirection(QGuiApplication::layoutDirection());
    connect(qGuiApp, &QGuiApplication::layoutDirectionChanged, this, &followLayoutDirection);
    QGuiApplication::instance()->installEventFilter(this);
}

QtPlatform::~QtPlatform() {
    Font::setCatalogue(nullptr);
    FontMetrics::install(nullptr);
    ThumbnailGenerator::install(nullptr);
}

bool QtPlatform::eventFilter(QObject* watched, QEvent* event) {
    // A filter on the application sees every object's events; widgets get their own copy of this
    // one, and the application's is the one to act on.
    if (event->type() == QEvent::ApplicationPaletteChange &&
        watched == QGuiApplication::instance()) {
        followPalette();
        Q_EMIT appearanceChanged();
    }
    return QObject::eventFilter(watched, event);
}

void QtPlatform::followPalette() {
    const QPalette palette = QGuiApplication::palette();
    const bool dark = palette.color(QPalette::Window).lightnessF() < 0.5;
    PlatformAppearance::setCurrent(PlatformAppearance(
        std::string(dark ? PlatformAppearance::darkAquaName : PlatformAppearance::aquaName)));
    for (const auto& [systemColor, role] : paletteRoles) {
        Color::setSystemColor(systemColor, dark, colorComponents(palette.color(role)));
    }
}

}  // namespace quod
