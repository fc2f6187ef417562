#include "quoddle/interface/ViewRules.h"

#include "quoddle/interface/Accessibility.h"
#include "quoddle/preferences/Appearance.h"

namespace quod::Interface {

Color groupRowColor() {
    const bool dark = Appearance::match(PlatformAppearance::current()) == Appearance::dark;
    // A system colour is never a pattern, so there is always a highlighted value.
    const Color highlighted = *Color::underPageBackgroundColor().highlight(dark ? 0.2 : 0.7);
    if (reduceTransparency()) return highlighted;
    return Color::withRed(highlighted.redComponent(), highlighted.greenComponent(),
                          highlighted.blueComponent(), groupRowAlpha);
}

Rect centeredTitleRect(Rect titleRect, double naturalHeight) {
    return Rect{
        {titleRect.origin.x, titleRect.origin.y + (titleRect.size.height - naturalHeight) * 0.5},
        {titleRect.size.width, naturalHeight}};
}

}  // namespace quod::Interface
