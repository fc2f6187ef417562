// Document text between the core and Qt: both are UTF-16, so a conversion is one copy of the code
// units, never a decode. Unpaired surrogates pass through unchanged in both directions.
// UTF-8 text (names, paths, messages) goes through QString::fromStdString and toStdString.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace quod {

[[nodiscard]] inline QString toQString(std::u16string_view text) {
    return QString(reinterpret_cast<const QChar*>(text.data()),
                   static_cast<qsizetype>(text.size()));
}

[[nodiscard]] inline std::u16string toU16String(const QString& text) {
    return std::u16string(reinterpret_cast<const char16_t*>(text.utf16()),
                          static_cast<size_t>(text.size()));
}

}  // namespace quod
