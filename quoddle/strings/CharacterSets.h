// The platform's whitespace and newline character sets, as code-point tests.
//
//   - whitespace: TAB and the space separators (Zs: U+0020, U+00A0, U+1680, U+2000-U+200A, U+202F,
//     U+205F, U+3000), plus U+200B ZERO WIDTH SPACE, which the platform counts although it is Cf.
//     Nothing outside the BMP, and not U+180E or U+FEFF.
//   - newline: LF, VT, FF, CR (U+000A-U+000D), NEL U+0085, U+2028 and U+2029. VT and FF are
//   newlines
//     here even though they end no line (see LineFunctions.h).
// The sets are small and fixed, so plain comparisons beat a table or an ICU property lookup.
#pragma once

namespace quod {

[[nodiscard]] constexpr bool isWhitespace(char32_t c) {
    return c == 0x0009 || c == 0x0020 || c == 0x00A0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200B) || c == 0x202F || c == 0x205F || c == 0x3000;
}

[[nodiscard]] constexpr bool isNewline(char32_t c) {
    return (c >= 0x000A && c <= 0x000D) || c == 0x0085 || c == 0x2028 || c == 0x2029;
}

[[nodiscard]] constexpr bool isWhitespaceOrNewline(char32_t c) {
    return isWhitespace(c) || isNewline(c);
}

}  // namespace quod
