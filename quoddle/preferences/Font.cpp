#include "quoddle/preferences/Font.h"

#include <cmath>
#include <mutex>

#include "quoddle/base/Precondition.h"

namespace quod {
namespace {

std::mutex catalogueMutex;
std::shared_ptr<const FontCatalogue> installedCatalogue;  // null until first use

double effectiveSize(const FontCatalogue& catalogue, double pointSize) {
    return pointSize > 0 ? pointSize : catalogue.defaultPointSize();
}

}  // namespace

std::shared_ptr<const FontCatalogue> Font::catalogue() {
    const std::lock_guard lock(catalogueMutex);
    if (!installedCatalogue) installedCatalogue = FontCatalogue::fontconfig();
    return installedCatalogue;
}

void Font::setCatalogue(std::shared_ptr<const FontCatalogue> catalogue) {
    const std::lock_guard lock(catalogueMutex);
    installedCatalogue = std::move(catalogue);
}

std::optional<Font> Font::withName(std::string_view name, double pointSize) {
    if (!std::isfinite(pointSize)) return std::nullopt;
    const auto fonts = catalogue();
    auto found = fonts->postScriptName(name);
    if (!found) return std::nullopt;
    return Font(std::move(*found), effectiveSize(*fonts, pointSize));
}

Font Font::systemFont(double pointSize) {
    QUOD_PRECONDITION(std::isfinite(pointSize), "font size must be a finite number");
    const auto fonts = catalogue();
    return Font(fonts->systemFontName(), effectiveSize(*fonts, pointSize));
}

std::optional<Font> Font::userFixedPitchFont(double pointSize) {
    QUOD_PRECONDITION(std::isfinite(pointSize), "font size must be a finite number");
    const auto fonts = catalogue();
    auto name = fonts->fixedPitchFontName();
    if (!name) return std::nullopt;
    return Font(std::move(*name), effectiveSize(*fonts, pointSize));
}

}  // namespace quod
