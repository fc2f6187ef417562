#include "quoddle/strings/EncodingStatistics.h"

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <unordered_map>
#include <vector>

namespace quod::internal {
namespace {

constexpr int deepestLevel = 20;

struct LanguageModel {
    std::string_view name;
    Script script;
    // Where the keys of level n + 1 begin in `keys`, counted in keys; the last entry is their
    // count.
    std::array<std::uint16_t, deepestLevel + 1> levelStarts;
    // Character pairs, or single characters for the ideographic scripts, rarest level last.
    std::u16string_view keys;
};

#include "data/LanguageModels.inc"

constexpr bool isIdeographic(Script script) {
    return script == Script::japanese || script == Script::simplifiedChinese ||
           script == Script::traditionalChinese || script == Script::korean;
}

using LevelTable = std::unordered_map<std::uint32_t, std::uint8_t>;

// One table per language, in the order of the models.
const std::vector<LevelTable>& languageTables() {
    static const auto tables = [] {
        std::vector<LevelTable> built;
        for (const LanguageModel& model : languageModels) {
            LevelTable& table = built.emplace_back();
            const std::size_t width = isIdeographic(model.script) ? 1 : 2;
            for (int level = 1; level <= deepestLevel; ++level) {
                for (std::size_t key = model.levelStarts[level - 1]; key < model.levelStarts[level];
                     ++key) {
                    const std::u16string_view units = model.keys.substr(key * width, width);
                    const std::uint32_t packed =
                        width == 1 ? units[0] : (std::uint32_t{units[0]} << 16) | units[1];
                    const auto [entry, added] =
                        table.emplace(packed, static_cast<std::uint8_t>(level));
                    if (!added)
                        entry->second = std::min(entry->second, static_cast<std::uint8_t>(level));
                }
            }
        }
        return built;
    }();
    return tables;
}

int levelOf(const LevelTable& table, std::uint32_t key) {
    const auto found = table.find(key);
    return found != table.end() ? found->second : unseenLevel;
}

constexpr char16_t boundary = u' ';

// What a character costs on its own, besides the pairs it forms. Letters cost nothing here; the
// punctuation that real text uses costs a little, so that an encoding cannot win by turning letters
// into punctuation; anything else outside ASCII (C1 controls, box drawing, rare symbols) is what a
// wrong decoding produces, and costs as much as a letter no pair explains.
constexpr int punctuationCost = 6;
constexpr int symbolCost = 2 * unseenLevel;

bool isCommonPunctuation(char16_t c) {
    switch (c) {
        case 0x00A0:  // no-break space
        case 0x00A7:  // §
        case 0x00A9:  // ©
        case 0x00AB:  // «
        case 0x00AE:  // ®
        case 0x00B0:  // °
        case 0x00B7:  // ·
        case 0x00BB:  // »
        case 0x20AC:  // €
        case 0x2013:  // –
        case 0x2014:  // —
        case 0x2018:  // ‘
        case 0x2019:  // ’
        case 0x201A:  // ‚
        case 0x201C:  // “
        case 0x201D:  // ”
        case 0x201E:  // „
        case 0x2022:  // •
        case 0x2026:  // …
        case 0x2122:  // ™
            return true;
        default:
            return false;
    }
}

struct Folded {
    char16_t character;  // lower case, or `boundary`
    int cost;
    UScriptCode script;  // of a letter; USCRIPT_COMMON for anything else
    bool upper;
};

Folded fold(char16_t c) {
    if (c < 0x80) {
        const bool letter = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
        // ASCII reads alike in every candidate; binary data, with its control characters, is
        // turned away before any scoring.
        return {letter ? static_cast<char16_t>(c | 0x20) : boundary, 0,
                letter ? USCRIPT_LATIN : USCRIPT_COMMON, c >= u'A' && c <= u'Z'};
    }
    const auto mask = U_GET_GC_MASK(c);
    if ((mask & (U_GC_L_MASK | U_GC_M_MASK)) != 0) {
        const UChar32 lower = u_tolower(c);
        UErrorCode status = U_ZERO_ERROR;
        const UScriptCode script = uscript_getScript(c, &status);
        return {lower <= 0xFFFF ? static_cast<char16_t>(lower) : c, 0,
                U_SUCCESS(status) ? script : USCRIPT_COMMON, (mask & U_GC_LU_MASK) != 0};
    }
    return {boundary, isCommonPunctuation(c) ? punctuationCost : symbolCost, USCRIPT_COMMON, false};
}

// Two letters side by side in different scripts (a Latin letter inside a Cyrillic word), or a
// capital right after a small letter in the middle of a word: real text almost never has either,
// while reading a text in another script's encoding, or in an encoding that swaps the cases
// (KOI8 against windows-1251), makes them in nearly every word. Marks (combining accents) carry
// no script of their own and are left out.
constexpr int mixedScriptCost = 2 * unseenLevel;
constexpr int capitalInWordCost = unseenLevel;

int neighbourCost(const Folded& previous, const Folded& current, char16_t raw) {
    if (previous.character == boundary || current.character == boundary) return 0;
    const bool scripted = previous.script > USCRIPT_INHERITED && current.script > USCRIPT_INHERITED;
    if (scripted && previous.script != current.script) return mixedScriptCost;
    if (raw >= 0x80 && current.upper && !previous.upper) return capitalInWordCost;
    return 0;
}

struct Totals {
    std::int64_t total;
    std::int64_t telling;
};

// Text scored against each language of its script, keeping the one that explains the whole text
// best, with its telling total: a wrong decoding mixes letters that no one language puts together,
// and letting its few telling letters pick a language of their own hides that. `cost` answers the
// total and the telling total.
template <typename Cost>
TextScore bestLanguage(Script script, std::int64_t characters, Cost cost) {
    TextScore best{INT64_MIN, characters, INT64_MIN};
    for (std::size_t i = 0; i < std::size(languageModels); ++i) {
        if (languageModels[i].script != script) continue;
        const auto [total, telling] = cost(languageTables()[i]);
        if (total > best.total) {
            best.total = total;
            best.tellingTotal = telling;
        }
    }
    return best;
}

bool isTelling(std::span<const char16_t> telling, char16_t c) {
    return c >= 0x80 && std::binary_search(telling.begin(), telling.end(), c);
}

// Punctuation that real text puts between two letters: the apostrophe (l’ordre), the no-break
// space (10 MB, where a format's letter comes first: %.1f MB), and the Catalan middle dot of l·l.
// Any other symbol there is a letter that a wrong encoding turned into punctuation (actúa read as
// act·a).
bool joinsWord(char16_t before, char16_t c, char16_t after) {
    if (c == 0x2019 || c == 0x00A0) return true;
    return c == 0x00B7 && before == u'l' && (after == u'l' || after == u'L');
}

// Characters that mark a keyboard shortcut inside a word in menus and dialogs ("_Αρχεία",
// "Ф&айл"): skipped, so that the word around them reads as one.
constexpr bool isMnemonicMark(char16_t c) {
    return c == u'_' || c == u'&';
}

// Guillemets come in pairs, whichever way round a language uses them; one kind alone in a text
// is a letter that a wrong encoding turned into a quotation mark (otvoriť read as otvori»).
struct Guillemets {
    bool left = false;
    bool right = false;
};

Guillemets guillemetsIn(std::u16string_view text) {
    return {text.find(u'\u00AB') != std::u16string_view::npos,
            text.find(u'\u00BB') != std::u16string_view::npos};
}

bool isLetterAt(std::u16string_view text, std::size_t at) {
    return at < text.size() && fold(text[at]).character != boundary;
}

// What `c` at `at` costs beyond its own cost for where it stands: punctuation inside a word, a
// lone guillemet, a copyright sign glued to the word after it.
int placementCost(std::u16string_view text, std::size_t at, char16_t previous,
                  const Guillemets& guillemets) {
    const char16_t c = text[at];
    if (c < 0x80 || fold(c).character != boundary) return 0;
    const bool letterBefore = previous != boundary;
    const bool letterAfter = isLetterAt(text, at + 1);
    if (letterBefore && letterAfter && !joinsWord(previous, c, text[at + 1])) return symbolCost;
    if ((c == 0x00AB && !guillemets.right) || (c == 0x00BB && !guillemets.left)) return symbolCost;
    if ((c == 0x00A9 || c == 0x00AE) && letterAfter) return symbolCost;
    // An apostrophe or closing quote follows a letter; one that opens a word is more likely a
    // capital of another encoding (Greek Άδεια read as ’δεια).
    if (c == 0x2019 && letterAfter && !letterBefore) return symbolCost;
    return 0;
}

TextScore scoreAlphabetic(std::u16string_view text, Script script,
                          std::span<const char16_t> telling) {
    // The pairs once, then their levels in each language.
    struct Pair {
        std::uint32_t characters;
        bool telling;
        bool scored;  // within the characters scored in full, so part of the total
    };
    std::vector<Pair> pairs;
    std::int64_t ownCosts = 0;
    std::int64_t tellingOwnCosts = 0;
    std::int64_t characters = 0;
    char16_t previous = boundary;
    bool previousTells = false;
    Folded previousFolded{boundary, 0, USCRIPT_COMMON, false};
    const Guillemets guillemets = guillemetsIn(text);
    std::size_t end = text.size();
    std::vector<bool> scoredKinds(0x10000);  // the characters the scored part holds
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c >= 0x80 && ++characters > scoredCharacters) {
            end = i;
            break;
        }
        if (isMnemonicMark(c) && previous != boundary && isLetterAt(text, i + 1)) continue;
        const Folded folded = fold(c);
        const bool tells = isTelling(telling, c);
        const int cost = std::max(folded.cost + neighbourCost(previousFolded, folded, c),
                                  placementCost(text, i, previous, guillemets));
        ownCosts += cost;
        tellingOwnCosts += tells || previousTells ? cost : 0;
        if (c >= 0x80) scoredKinds[c] = true;
        if ((previous >= 0x80 || folded.character >= 0x80) &&
            !(previous == boundary && folded.character == boundary)) {
            pairs.push_back(
                {(std::uint32_t{previous} << 16) | folded.character, tells || previousTells, true});
        }
        previous = folded.character;
        previousFolded = folded;
        previousTells = tells;
    }
    // Past the characters scored in full, telling characters the scored part did not hold still
    // count towards the telling total, with their pairs: one letter deep in a long text can be all
    // that tells two encodings apart (a Greek capital that another encoding reads as a symbol).
    // Characters already scored add nothing new.
    const auto late = [&](std::size_t at) {
        return isTelling(telling, text[at]) && !scoredKinds[text[at]];
    };
    for (std::size_t i = std::max<std::size_t>(end, 1); i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c < 0x80 || !late(i)) continue;
        const Folded before = fold(text[i - 1]);
        const Folded here = fold(c);
        tellingOwnCosts += std::max(here.cost + neighbourCost(before, here, c),
                                    placementCost(text, i, before.character, guillemets));
        // A late character before this one has already counted the pair they make.
        if (!late(i - 1)) {
            pairs.push_back(
                {(std::uint32_t{before.character} << 16) | here.character, true, false});
        }
        if (i + 1 < text.size()) {
            pairs.push_back(
                {(std::uint32_t{here.character} << 16) | fold(text[i + 1]).character, true, false});
        }
    }
    return bestLanguage(script, std::min(characters, scoredCharacters),
                        [&](const LevelTable& table) {
                            Totals totals{-ownCosts, -tellingOwnCosts};
                            for (const Pair& pair : pairs) {
                                const int level = levelOf(table, pair.characters);
                                totals.total -= pair.scored ? level : 0;
                                totals.telling -= pair.telling ? level : 0;
                            }
                            return totals;
                        });
}

// Ideographic punctuation (、。「」 and the full-width forms) is common in real text and rare in a
// wrong decoding, which lands anywhere in the character set.
constexpr int ideographicPunctuationCost = 4;

TextScore scoreIdeographic(std::u16string_view text, Script script) {
    std::vector<char16_t> letters;
    std::int64_t ownCosts = 0;
    std::int64_t characters = 0;
    const auto asciiLetter = [&text](std::size_t at) {
        if (at >= text.size()) return false;
        const char16_t c = text[at];
        return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c < 0x80) continue;
        if (++characters > scoredCharacters) break;
        const auto mask = U_GET_GC_MASK(c);
        if ((mask & (U_GC_L_MASK | U_GC_M_MASK)) != 0) {
            letters.push_back(c);
            // Chinese, Japanese or Korean text puts Latin words next to its own characters, but
            // never one of its characters inside a Latin word; two accented bytes of a Latin text
            // read as one ideograph land exactly there.
            if (i > 0 && asciiLetter(i - 1) && asciiLetter(i + 1)) ownCosts += symbolCost;
        } else {
            ownCosts += (mask & (U_GC_P_MASK | U_GC_ZS_MASK)) != 0 ? ideographicPunctuationCost
                                                                   : symbolCost;
        }
    }
    return bestLanguage(script, std::min(characters, scoredCharacters),
                        [&](const LevelTable& table) {
                            std::int64_t total = -ownCosts;
                            for (const char16_t letter : letters)
                                total -= levelOf(table, letter);
                            return Totals{total, total};
                        });
}

}  // namespace

TextScore scoreText(std::u16string_view text, Script script, std::span<const char16_t> telling) {
    return isIdeographic(script) ? scoreIdeographic(text, script)
                                 : scoreAlphabetic(text, script, telling);
}

}  // namespace quod::internal
