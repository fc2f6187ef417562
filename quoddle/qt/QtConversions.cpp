#include "quoddle/qt/QtConversions.h"

#include <fontconfig/fontconfig.h>

#include <QFontDatabase>
#include <QString>
#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace quod {
namespace {

float unitInterval(double value) {
    return std::isfinite(value) ? static_cast<float>(std::clamp(value, 0.0, 1.0)) : 0.0f;
}

struct FamilyAndStyle {
    QString family;
    QString style;
};

// The family and style of the face with this PostScript name, from fontconfig's current
// configuration: the one Qt's own font database was loaded from.
std::optional<FamilyAndStyle> lookUpFace(const std::string& postScriptName) {
    const auto destroyPattern = [](FcPattern* pattern) { FcPatternDestroy(pattern); };
    const auto destroyObjects = [](FcObjectSet* objects) { FcObjectSetDestroy(objects); };
    const auto destroyFonts = [](FcFontSet* fonts) { FcFontSetDestroy(fonts); };
    const std::unique_ptr<FcPattern, decltype(destroyPattern)> request(
        FcPatternBuild(nullptr, FC_POSTSCRIPT_NAME, FcTypeString,
                       reinterpret_cast<const FcChar8*>(postScriptName.c_str()), nullptr),
        destroyPattern);
    const std::unique_ptr<FcObjectSet, decltype(destroyObjects)> objects(
        FcObjectSetBuild(FC_FAMILY, FC_STYLE, nullptr), destroyObjects);
    if (!request || !objects) return std::nullopt;
    const std::unique_ptr<FcFontSet, decltype(destroyFonts)> fonts(
        FcFontList(nullptr, request.get(), objects.get()), destroyFonts);
    if (!fonts || fonts->nfont == 0) return std::nullopt;
    FcChar8* family = nullptr;
    FcChar8* style = nullptr;
    if (FcPatternGetString(fonts->fonts[0], FC_FAMILY, 0, &family) != FcResultMatch) {
        return std::nullopt;
    }
    FcPatternGetString(fonts->fonts[0], FC_STYLE, 0, &style);
    return FamilyAndStyle{
        QString::fromUtf8(reinterpret_cast<const char*>(family)),
        style ? QString::fromUtf8(reinterpret_cast<const char*>(style)) : QString()};
}

}  // namespace

QColor toQColor(const Color& color) {
    const std::optional<Color> rgb = color.usingColorSpace(ColorSpace::sRGB);
    if (!rgb) return {};
    return QColor::fromRgbF(unitInterval(rgb->redComponent()), unitInterval(rgb->greenComponent()),
                            unitInterval(rgb->blueComponent()),
                            unitInterval(rgb->alphaComponent()));
}

std::array<double, 4> colorComponents(const QColor& color) {
    const QColor rgb = color.toRgb();
    return {rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF()};
}

QFont toQFont(const Font& font, double pointSize) {
    static std::mutex mutex;
    static std::map<std::string, std::optional<FamilyAndStyle>, std::less<>> faces;
    const std::lock_guard lock(mutex);
    auto found = faces.find(font.fontName());
    if (found == faces.end()) {
        found = faces.emplace(font.fontName(), lookUpFace(font.fontName())).first;
    }
    // Qt's database gives the face's weight and slant along with it, so the font also reads as
    // bold or italic where it is.
    QFont result = found->second
                       ? QFontDatabase::font(found->second->family, found->second->style, 12)
                       : QFont(QString::fromStdString(font.fontName()));
    if (pointSize > 0 && std::isfinite(pointSize)) result.setPointSizeF(pointSize);
    return result;
}

Qt::Alignment toQtAlignment(TextAlignment alignment) {
    switch (alignment) {
        case TextAlignment::left:
            return Qt::AlignLeft | Qt::AlignAbsolute;
        case TextAlignment::right:
            return Qt::AlignRight | Qt::AlignAbsolute;
        case TextAlignment::center:
            return Qt::AlignHCenter;
        case TextAlignment::justified:
            return Qt::AlignJustify;
        case TextAlignment::natural:
            break;
    }
    return Qt::AlignLeading;
}

QTextCharFormat toQTextCharFormat(const Attributes& attributes) {
    QTextCharFormat format;
    if (attributes.font) format.setFont(toQFont(*attributes.font));
    if (attributes.foregroundColor) {
        if (const QColor color = toQColor(*attributes.foregroundColor); color.isValid())
            format.setForeground(color);
    }
    if (attributes.backgroundColor) {
        if (const QColor color = toQColor(*attributes.backgroundColor); color.isValid())
            format.setBackground(color);
    }
    return format;
}

QTextBlockFormat toQTextBlockFormat(const ParagraphStyle& style) {
    QTextBlockFormat format;
    format.setAlignment(toQtAlignment(style.alignment));
    const double spacing =
        std::isfinite(style.lineSpacing) ? std::max(style.lineSpacing, 0.0) : 0.0;
    format.setLineHeight(spacing, QTextBlockFormat::LineDistanceHeight);
    return format;
}

}  // namespace quod
