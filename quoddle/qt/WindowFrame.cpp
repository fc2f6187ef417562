#include "quoddle/qt/WindowFrame.h"

#include <cmath>

#include "quoddle/base/GeometryText.h"
#include "quoddle/qt/QtConversions.h"

namespace quod::WindowFrame {
namespace {

bool fitsWidget(double value) {
    return std::isfinite(value) && std::abs(value) <= double{QWIDGETSIZE_MAX};
}

}  // namespace

std::string text(const QWidget& window) {
    return stringFromRect(toRect(window.geometry()));
}

std::optional<QRect> geometry(std::string_view text) {
    const Rect rect = rectFromString(text);
    if (!fitsWidget(rect.origin.x) || !fitsWidget(rect.origin.y) || !fitsWidget(rect.width()) ||
        !fitsWidget(rect.height())) {
        return std::nullopt;
    }
    const QRect frame(int(std::lround(rect.origin.x)), int(std::lround(rect.origin.y)),
                      int(std::lround(rect.width())), int(std::lround(rect.height())));
    if (frame.width() <= 0 || frame.height() <= 0) return std::nullopt;
    return frame;
}

bool apply(QWidget& window, std::string_view text, Part part) {
    const auto frame = geometry(text);
    if (!frame) return false;
    if (part == Part::sizeOnly) {
        window.resize(frame->size());
    } else {
        window.setGeometry(*frame);
    }
    return true;
}

}  // namespace quod::WindowFrame
