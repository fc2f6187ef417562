#include "quoddle/qt/QtFontMetrics.h"

#include <QFontMetricsF>

#include "quoddle/qt/QtConversions.h"

namespace quod {

Size QtFontMetrics::sizeOfString(std::string_view text, const Font& font) const {
    const QFontMetricsF metrics(toQFont(font));
    const QString string = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    return {metrics.horizontalAdvance(string), metrics.height()};
}

}  // namespace quod
