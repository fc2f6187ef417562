// Canonical equivalence: "é" precomposed and "e" + U+0301 are the same text to a user.
#pragma once

#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod {

// The text in Unicode Normalization Form C. Two texts are canonically equivalent exactly when
// their composed forms are equal, so comparing or hashing composed forms compares texts as the
// platform's string equality does. Already-composed text (most text) is returned after a quick
// check, without rebuilding it.
[[nodiscard]] QUODDLE_EXPORT std::u16string canonicalComposition(std::u16string_view text);

// True when the text is already in Normalization Form C (a quick check that answers "maybe" for
// rare sequences, which are then composed to decide).
[[nodiscard]] QUODDLE_EXPORT bool isCanonicalComposition(std::u16string_view text);

// The same for well-formed UTF-8, for text read in bytes: the answers are those for its UTF-16
// form, in UTF-8.
[[nodiscard]] QUODDLE_EXPORT std::string canonicalComposition(std::string_view utf8);
[[nodiscard]] QUODDLE_EXPORT bool isCanonicalComposition(std::string_view utf8);

}  // namespace quod
