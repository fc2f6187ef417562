#include "quoddle/qt/QtThumbnailGenerator.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>

namespace quod {

std::optional<std::vector<std::uint8_t>> QtThumbnailGenerator::pngData(
    const std::string& path, int size, std::span<const TextChunk> text) const {
    if (size <= 0) return std::nullopt;
    QImageReader reader(QString::fromStdString(path));
    // The name says nothing: a text file called "photo.png" is not a PNG.
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    if (!reader.canRead()) return std::nullopt;
    const QSize bounds(size, size);
    QSize original = reader.size();
    if (original.isValid() && (original.width() > size || original.height() > size))
        reader.setScaledSize(original.scaled(bounds, Qt::KeepAspectRatio));
    QImage image = reader.read();
    if (image.isNull()) return std::nullopt;
    if (!original.isValid()) original = image.size();
    if (image.width() > size || image.height() > size)
        image = image.scaled(bounds, Qt::KeepAspectRatio, Qt::SmoothTransformation);

    for (const auto& [key, value] : text)
        image.setText(QString::fromStdString(key), QString::fromStdString(value));
    image.setText("Thumb::Image::Width", QString::number(original.width()));
    image.setText("Thumb::Image::Height", QString::number(original.height()));

    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(image)) return std::nullopt;
    return std::vector<std::uint8_t>(png.begin(), png.end());
}

}  // namespace quod
