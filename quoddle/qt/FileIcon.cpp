#include "quoddle/qt/FileIcon.h"

#include <QApplication>
#include <QStyle>
#include <algorithm>

#include "quoddle/interface/ContentTypeIcon.h"

namespace quod::Interface {
namespace {

QIcon styleIcon(const std::vector<std::string>& names) {
    // Widgets' styles need a QApplication; a bare QGuiApplication has no style.
    auto* const application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (application == nullptr) return {};
    const bool folder = std::ranges::find(names, "folder") != names.end();
    return QApplication::style()->standardIcon(folder ? QStyle::SP_DirIcon : QStyle::SP_FileIcon);
}

}  // namespace

QIcon icon(const Url& url, int size) {
    if (size < 1 || qGuiApp == nullptr) return {};
    const std::vector<std::string> names = iconNames(url);
    QIcon found;
    for (const std::string& name : names) {
        const QString themeName = QString::fromStdString(name);
        if (QIcon::hasThemeIcon(themeName)) {
            found = QIcon::fromTheme(themeName);
            break;
        }
    }
    if (found.isNull()) found = styleIcon(names);
    if (found.isNull()) return {};
    return QIcon(found.pixmap(QSize(size, size), qGuiApp->devicePixelRatio()));
}

}  // namespace quod::Interface
