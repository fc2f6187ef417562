// printf-style formatting of UTF-8 text with the platform's placeholders, for translated formats.
//
// Placeholders: `%@` (the argument's text: a string as is, a number in decimal), `%d %i`, `%u`,
// `%x %X %o`, `%f %F %e %E %g %G`, `%c` (a code point), `%s` (like `%@`) and `%%`. Length
// modifiers (`l`, `ll`, `h`, `q`, `z`, `t`, `j`) are accepted and change nothing: arguments carry
// their own width. Flags `-`, `+`, space, `0` and `#`, a field width and a precision work as in
// printf; widths count code points. Positional placeholders (`%2$@ %1$@`) let a translation
// reorder the arguments. Numbers never follow the process's C locale: the decimal point is ".".
//
// The format is often a translation, so mistakes in it fail quietly: a placeholder with no
// argument, or one this function does not know (`%n`, `%p`, `%*d`), is copied as written; a
// string given for a numeric placeholder is written as is; a number given for `%@` is written in
// decimal; a floating-point number for `%d` is truncated toward zero.
//
//     formatString("%@ of %ld", {"Line", 12})      // "Line of 12"
//     formatString("%2$@, %1$@", {"World", "Hi"})  // "Hi, World"
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include "quoddle/Export.h"

namespace quod {

class FormatArgument {
  public:
    using Value = std::variant<std::int64_t, std::uint64_t, double, std::string_view>;

    template <typename Integer>
    requires(std::is_integral_v<Integer> && !std::is_same_v<Integer, bool>)
        FormatArgument(Integer value) {  // NOLINT: implicit, for brace lists
        if constexpr (std::is_signed_v<Integer>) {
            value_ = static_cast<std::int64_t>(value);
        } else {
            value_ = static_cast<std::uint64_t>(value);
        }
    }
    FormatArgument(double value) : value_(value) {}
    // The text must outlive the formatting call.
    FormatArgument(std::string_view text) : value_(text) {}
    FormatArgument(const char* text) : value_(std::string_view(text)) {}
    FormatArgument(const std::string& text) : value_(std::string_view(text)) {}

    [[nodiscard]] const Value& value() const { return value_; }

  private:
    Value value_;
};

[[nodiscard]] QUODDLE_EXPORT std::string formatString(std::string_view format,
                                                      std::span<const FormatArgument> arguments);

inline std::string formatString(std::string_view format,
                                std::initializer_list<FormatArgument> arguments) {
    return formatString(format,
                        std::span<const FormatArgument>(arguments.begin(), arguments.size()));
}

}  // namespace quod
