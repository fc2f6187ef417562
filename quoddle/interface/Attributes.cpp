#include "quoddle/interface/Attributes.h"

#include "quoddle/interface/UserInterfaceLayoutDirection.h"
#include "quoddle/preferences/Defaults.h"

namespace quod {

Attributes Attributes::lineNumbers() {
    // The numbers sit against the text, whichever side of the gutter that is.
    const TextAlignment alignment = Interface::rtl() ? TextAlignment::left : TextAlignment::right;
    return {
        .font = Defaults::lineNumberFont.get(),
        .foregroundColor = Color::forKey(Defaults::Key::Color::lineNumberText),
        .backgroundColor = Color::forKey(Defaults::Key::Color::lineNumberBackground),
        .paragraphStyle = ParagraphStyle{.alignment = alignment},
    };
}

Attributes Attributes::statusLine() {
    return {
        .font = Font::systemFont(statusLineFontSize),
        .foregroundColor = Color::textColor(),
        .backgroundColor = std::nullopt,
        .paragraphStyle = ParagraphStyle{},
    };
}

Attributes Attributes::result() {
    return {
        .font = Defaults::textFont.get(),
        .foregroundColor = Color::forKey(Defaults::Key::Color::text),
        .backgroundColor = Color::forKey(Defaults::Key::Color::background),
        .paragraphStyle = ParagraphStyle{},
    };
}

}  // namespace quod
