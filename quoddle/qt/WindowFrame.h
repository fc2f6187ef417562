// A window's frame as the stored rectangle text ("{{x, y}, {w, h}}", base/GeometryText.h).
//
// Coordinates are Qt's: origin at the top left of the virtual desktop, y growing downwards, and
// the rectangle is the window's client area (QWidget::geometry() of the top-level widget), not
// its decorated frame. The window manager draws the decorations, and only the client geometry
// is both readable and settable on every platform plugin, so a frame written here and applied
// again puts the window back exactly where it was. Text stored by another platform (y upwards,
// decorations included) still reads as a usable rectangle, only a few points off.
//
// `apply` refuses what cannot be a window: no text, a size that is not positive, numbers that
// are not finite or are beyond Qt's widget limits. It then changes nothing and returns false.
#pragma once

#include <QRect>
#include <QWidget>
#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod::WindowFrame {

[[nodiscard]] QUODDLE_EXPORT std::string text(const QWidget& window);

// The geometry that `text` stands for, when it can be one.
[[nodiscard]] QUODDLE_EXPORT std::optional<QRect> geometry(std::string_view text);

// Sets the window's client geometry (its size alone with Part::sizeOnly) from the text.
enum class Part { wholeFrame, sizeOnly };
QUODDLE_EXPORT bool apply(QWidget& window, std::string_view text, Part part = Part::wholeFrame);

}  // namespace quod::WindowFrame
