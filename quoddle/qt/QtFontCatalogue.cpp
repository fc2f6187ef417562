#include "quoddle/qt/QtFontCatalogue.h"

#include <QFontDatabase>
#include <QFontInfo>

namespace quod {
namespace {

// The family Qt actually resolved for one of its system fonts (the requested family may be an
// alias such as "Monospace").
std::string systemFamily(QFontDatabase::SystemFont which) {
    return QFontInfo(QFontDatabase::systemFont(which)).family().toStdString();
}

}  // namespace

std::optional<std::string> QtFontCatalogue::postScriptName(std::string_view name) const {
    return fontconfig_->postScriptName(name);
}

std::string QtFontCatalogue::systemFontName() const {
    const std::string family = systemFamily(QFontDatabase::GeneralFont);
    if (auto name = fontconfig_->postScriptName(family)) return *name;
    return family.empty() ? fontconfig_->systemFontName() : family;
}

std::optional<std::string> QtFontCatalogue::fixedPitchFontName() const {
    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // Qt answers with some font even where nothing monospaced is installed.
    if (!QFontInfo(fixed).fixedPitch()) return std::nullopt;
    return fontconfig_->postScriptName(systemFamily(QFontDatabase::FixedFont));
}

double QtFontCatalogue::defaultPointSize() const {
    const double size = QFontDatabase::systemFont(QFontDatabase::GeneralFont).pointSizeF();
    return size > 0 ? size : fontconfig_->defaultPointSize();
}

}  // namespace quod
