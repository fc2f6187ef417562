// The three line-ending conventions a document can be saved with, and rewrites of them: of a whole
// text, or of one that arrives in pieces (LineEndingConverter).
//
// A line ending here is CR LF (one ending of two units), a lone CR or a lone LF; NEL (U+0085), LINE
// SEPARATOR and PARAGRAPH SEPARATOR are left alone by every function below. Each rewrite behaves
// like a fixed series of literal replace-all passes, but runs as one pass over the text:
//   - convert to unix:    CR LF -> LF, then the remaining CR -> LF;
//   - convert to windows: CR LF -> LF, CR -> LF, then LF -> CR LF (so "LF CR" becomes two CR LFs);
//   - convert to macOS9:  CR LF -> CR, then LF -> CR;
//   - replaceLineEndingCharacters: CR -> "¶", then LF -> "¶" (CR LF shows as two pilcrows, so the
//     user sees that the file really holds two characters there);
//   - removeLineEndings: CR LF, CR and LF all vanish.
// Converting text that already uses the target convention returns it unchanged.
//
// The GNU modes (-std=gnu++20, what CMake gives a target unless told otherwise) predefine `unix`
// as the macro 1. The declarations that spell the word set that macro aside and restore it after
// them, so this header compiles in every mode and leaves the host's macros as they were. Code of
// the host's own that writes `LineEnding::unix` in a GNU mode needs `#undef unix` before it (or
// -Uunix, or a strict mode such as -std=c++20); `allLineEndings[0]` and
// `lineEndingFromRawValue(0)` name the same ending without the word.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

#pragma push_macro("unix")
#undef unix

namespace quod {

// The raw values are part of the interface (see lineEndingFromRawValue): never renumber them.
enum class LineEnding : int { unix = 0, windows = 1, macOS9 = 2 };

// The ending with that raw value; no value for anything but 0, 1 and 2.
[[nodiscard]] constexpr std::optional<LineEnding> lineEndingFromRawValue(int64_t rawValue) {
    // One unsigned comparison rejects negatives and values too large together.
    if (static_cast<uint64_t>(rawValue) >= 3) {
        return std::nullopt;
    }
    return static_cast<LineEnding>(rawValue);
}

// Every ending, in raw-value order.
inline constexpr std::array<LineEnding, 3> allLineEndings{LineEnding::unix, LineEnding::windows,
                                                          LineEnding::macOS9};

// The units that line-ending code looks for, by name.
namespace Const::UniChar::LineEnding {
inline constexpr char16_t unix = 0x000A;
inline constexpr char16_t cr = 0x000D;
inline constexpr char16_t lineSeparator = 0x2028;
inline constexpr char16_t paragraphSeparator = 0x2029;
inline constexpr char16_t nextLine = 0x0085;
}  // namespace Const::UniChar::LineEnding

}  // namespace quod

#pragma pop_macro("unix")

namespace quod::Text {

[[nodiscard]] QUODDLE_EXPORT std::u16string convert(std::u16string_view string,
                                                    LineEnding toLineEnding);

[[nodiscard]] QUODDLE_EXPORT std::u16string replaceLineEndingCharacters(std::u16string_view in);

[[nodiscard]] QUODDLE_EXPORT std::u16string removeLineEndings(std::u16string_view in);

}  // namespace quod::Text

namespace quod {

// The rewrites above for a text that arrives in pieces (a large file read window by window), with
// the result of rewriting the whole at once: only a CR that ends a piece is held back until the
// next piece tells whether an LF follows it. The pieces are UTF-16 text, or UTF-8 bytes (in which
// a CR or LF byte is always that character), one kind for the whole text.
//
//   auto converter = LineEndingConverter::converting(LineEnding::windows);
//   for (std::string_view window : windows) { out.clear(); converter.convert(window, out); ... }
//   out.clear(); converter.finish(out); ...
class QUODDLE_EXPORT LineEndingConverter {
  public:
    // Text::convert.
    [[nodiscard]] static LineEndingConverter converting(LineEnding to);
    // Text::replaceLineEndingCharacters.
    [[nodiscard]] static LineEndingConverter showingCharacters();
    // Text::removeLineEndings.
    [[nodiscard]] static LineEndingConverter removing();

    // Appends the piece, rewritten, to `out`; a CR that ends it waits for the next piece.
    void convert(std::u16string_view piece, std::u16string& out);
    void convert(std::string_view utf8Piece, std::string& out);
    // Appends what the end of the text settles: a CR held back is a lone CR.
    void finish(std::u16string& out);
    void finish(std::string& out);

  private:
    enum class Rewrite : uint8_t { toUnix, toWindows, toMacOS9, showing, removing };
    explicit LineEndingConverter(Rewrite rewrite) : rewrite_(rewrite) {}

    Rewrite rewrite_;
    bool heldCr_ = false;
};

}  // namespace quod
