#include "quoddle/gutter/LineNumberAttributes.h"

#include <cmath>

#include "quoddle/gutter/FontMetrics.h"
#include "quoddle/interface/UserInterfaceLayoutDirection.h"
#include "quoddle/preferences/Defaults.h"

namespace quod {
namespace {

LineNumberAttributes& mutableShared() {
    static LineNumberAttributes* const attributes = [] {
        const Font font = Defaults::lineNumberFont.get();
        const bool rtl = Interface::rtl();
        return new LineNumberAttributes{
            .font = font,
            .fontSize = font.pointSize(),
            .digitWidth = 6.0,
            .digitHeight = 10.0,
            .backgroundColor = Color::windowBackgroundColor(),
            .textColor = Color::forKey(Defaults::Key::Color::lineNumberText),
            // The platform's light gray (white 2/3), faint.
            .separatorColor = Color::withWhite(2.0 / 3.0, 0.4),
            .numberInset = rtl ? 3.0 : 1.0,
            .alignment = rtl ? TextAlignment::left : TextAlignment::right,
        };
    }();
    return *attributes;
}

}  // namespace

const LineNumberAttributes& LineNumberAttributes::shared() {
    return mutableShared();
}

void LineNumberAttributes::refresh() {
    LineNumberAttributes& attributes = mutableShared();
    const Font font = Defaults::lineNumberFont.get();
    const Size digit = FontMetrics::installed()->sizeOfString("0", font);
    attributes.font = font;
    attributes.fontSize = font.pointSize();
    attributes.digitWidth = std::ceil(digit.width);
    attributes.digitHeight = digit.height;
    attributes.backgroundColor = Color::forKey(Defaults::Key::Color::lineNumberBackground);
    attributes.textColor = Color::forKey(Defaults::Key::Color::lineNumberText);
}

}  // namespace quod
