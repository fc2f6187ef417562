#include "quoddle/gutter/MonospacedTextLayout.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quod {

MonospacedTextLayout::MonospacedTextLayout(std::weak_ptr<const TextStorage> textStorage,
                                           Metrics metrics)
    : textStorage_(std::move(textStorage)), metrics_(metrics) {
    QUOD_PRECONDITION(metrics.lineHeight > 0, "a monospaced layout needs a positive line height");
}

Rect MonospacedTextLayout::rectOfLine(int64_t line) const {
    return {{0, static_cast<double>(line) * metrics_.lineHeight},
            {metrics_.containerWidth, metrics_.lineHeight}};
}

Rect MonospacedTextLayout::lineFragmentRectForCharacter(int64_t index) const {
    const auto storage = textStorage_.lock();
    if (!storage || index < 0 || index >= storage->length()) return {};
    return rectOfLine(storage->lineIndexOfPosition(index));
}

Rect MonospacedTextLayout::extraLineFragmentRect() const {
    const auto storage = textStorage_.lock();
    if (!storage) return {};
    const int64_t lastLine = storage->lineCount() - 1;
    if (storage->startOfLine(lastLine) != storage->length()) return {};
    return rectOfLine(lastLine);
}

Range MonospacedTextLayout::characterRangeForBoundingRect(Rect rect) const {
    const auto storage = textStorage_.lock();
    if (!storage || !std::isfinite(rect.minY()) || !std::isfinite(rect.maxY())) return {};
    const int64_t lines = storage->lineCount();
    const double height = metrics_.lineHeight;
    if (rect.maxY() <= 0) return {0, 0};
    if (rect.minY() >= static_cast<double>(lines) * height) return {storage->length(), 0};
    // Clamped before converting, so that huge coordinates cannot overflow the conversion.
    const auto clampedLine = [&](double line) {
        return static_cast<int64_t>(std::clamp(line, 0.0, static_cast<double>(lines - 1)));
    };
    const int64_t first = clampedLine(std::floor(rect.minY() / height));
    const int64_t last = clampedLine(std::ceil(rect.maxY() / height) - 1);
    const int64_t start = storage->startOfLine(first);
    if (last < first) return {start, 0};
    const int64_t end = last + 1 < lines ? storage->startOfLine(last + 1) : storage->length();
    return {start, end - start};
}

}  // namespace quod
