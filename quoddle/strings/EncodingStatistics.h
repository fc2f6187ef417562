// How much decoded text looks like real text of some language, for the encoding detector.
//
// Internal to the encoding code. The models are generated tables (data/LanguageModels.inc, made by
// data/train-language-models.py from translated manual pages and dictionaries): for alphabetic
// scripts, how often each pair of characters occurs where at least one of them is not ASCII; for
// Chinese, Japanese and Korean, how often each character occurs. A frequency is kept as a level,
// -log2 of its share, so a score is a sum of small integers: the log-likelihood of the text, up to
// a constant, under the language of the script that explains it best.
//
// The score only looks at characters outside ASCII and their neighbours: ASCII reads the same in
// every encoding the detector weighs, so it says nothing about which one is right.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace quod::internal {

enum class Script : std::uint8_t {
    latin,
    cyrillic,
    greek,
    arabic,
    hebrew,
    japanese,
    simplifiedChinese,
    traditionalChinese,
    korean,
};

struct TextScore {
    // Minus the summed levels: 0 is the best possible, and every unlikely character lowers it.
    std::int64_t total = 0;
    // How many characters outside ASCII were scored.
    std::int64_t characters = 0;
    // Like `total`, over the pairs that hold a telling character only, under the language that
    // explains the whole text best: a decoding must read as one language throughout.
    std::int64_t tellingTotal = 0;

    // The average cost of one scored character; 0 when nothing was scored.
    [[nodiscard]] double costPerCharacter() const {
        return characters == 0 ? 0.0
                               : -static_cast<double>(total) / static_cast<double>(characters);
    }
};

// The cost an unseen pair or character adds: a little more than the rarest one kept.
inline constexpr int unseenLevel = 24;

// At most this many characters outside ASCII are scored in full; past them only the telling
// characters are, which may be all that tells two encodings apart in a long text.
inline constexpr std::int64_t scoredCharacters = 4096;

// Scores text against the models of `script`. Text in an ideographic script is scored character by
// character, any other character pair by pair. `telling` (sorted) holds the characters where this
// decoding differs from another one; characters every decoding shares say nothing about which is
// right, and the language that best explains them would only add noise to the comparison.
[[nodiscard]] TextScore scoreText(std::u16string_view text, Script script,
                                  std::span<const char16_t> telling);

}  // namespace quod::internal
