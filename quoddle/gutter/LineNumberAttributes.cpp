#include "quoddle/gutter/LineNumberAttributes.h"

#include <cmath>

#include "quoddle/gutter/FontMetrics.h"
#include "quoddle/interface/Attributes.h"
#include "quoddle/interface/UserInterfaceLayoutDirection.h"

namespace quod {
namespace {

LineNumberAttributes& mutableShared() {
    static LineNumberAttributes* const attributes = [] {
        const Attributes look = Attributes::lineNumbers();
        return new LineNumberAttributes{
            .font = *look.font,
            .fontSize = look.font->pointSize(),
            .digitWidth = 6.0,
            .digitHeight = 10.0,
            // The theme's background comes with the first refresh, which every gutter makes.
            .backgroundColor = Color::windowBackgroundColor(),
            .textColor = *look.foregroundColor,
            // The platform's light gray (white 2/3), faint.
            .separatorColor = Color::withWhite(2.0 / 3.0, 0.4),
            .numberInset = Interface::rtl() ? 3.0 : 1.0,
            .alignment = look.paragraphStyle->alignment,
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
    const Attributes look = Attributes::lineNumbers();
    const Size digit = FontMetrics::installed()->sizeOfString("0", *look.font);
    attributes.font = *look.font;
    attributes.fontSize = look.font->pointSize();
    attributes.digitWidth = std::ceil(digit.width);
    attributes.digitHeight = digit.height;
    attributes.backgroundColor = *look.backgroundColor;
    attributes.textColor = *look.foregroundColor;
}

}  // namespace quod
