// The named script and escape transforms of the Transform menu, each an ICU transliterator run
// forwards or backwards, over a whole text or (StringTransformStream) over one that arrives in
// pieces.
//
// `Kind` has raw values 0 to 33 in menu order (`allCases`); any other raw value is no kind. A
// transform that ICU cannot open in the needed direction gives no result rather than failing:
// callers leave the text alone then. Opened transliterators are kept per thread, because building
// one costs far more than running it over a line.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod {

struct QUODDLE_EXPORT StringTransform {
    enum class Kind : int {
        toLatin = 0,
        latinASCII = 1,
        stripDiacritics = 2,
        stripCombiningMarks = 3,
        toXMLHex = 4,
        fromXMLHex = 5,
        toCHex = 6,
        fromCHex = 7,
        toPerlHex = 8,
        fromPerlHex = 9,
        toPublishing = 10,
        fromPublishing = 11,
        toUnicodeName = 12,
        fromUnicodeName = 13,
        fullwidthToHalfwidth = 14,
        halfwidthToFullwidth = 15,
        latinToKatakana = 16,
        katakanaToLatin = 17,
        latinToHiragana = 18,
        hiraganaToLatin = 19,
        latinToHangul = 20,
        hangulToLatin = 21,
        latinToArabic = 22,
        arabicToLatin = 23,
        latinToHebrew = 24,
        hebrewToLatin = 25,
        latinToThai = 26,
        thaiToLatin = 27,
        latinToCyrillic = 28,
        cyrillicToLatin = 29,
        latinToGreek = 30,
        greekToLatin = 31,
        mandarinToLatin = 32,
        hiraganaToKatakana = 33,
    };

    static constexpr int caseCount = 34;

    // Every kind in raw-value order, for building a menu.
    static const std::array<Kind, caseCount> allCases;

    // The kind with that raw value; no value outside 0 to 33.
    [[nodiscard]] static std::optional<Kind> kind(int64_t rawValue);

    // The text run through the kind's transliterator in the kind's direction; no value when the
    // transliterator cannot be opened.
    [[nodiscard]] static std::optional<std::u16string> transformed(Kind kind,
                                                                   std::u16string_view text);
};

// A transform run over a text that arrives in pieces (a large file decoded window by window), cut
// anywhere, with the result `StringTransform::transformed` gives for the whole text. Output comes
// line by line: what no later text can change, once its line has ended; the rest waits for the
// next piece or for `finish`. A stream keeps a line and the rules' context, however long the text.
class QUODDLE_EXPORT StringTransformStream {
  public:
    explicit StringTransformStream(StringTransform::Kind kind);
    ~StringTransformStream();
    StringTransformStream(StringTransformStream&&) noexcept;
    StringTransformStream& operator=(StringTransformStream&&) noexcept;

    // False when the transliterator cannot be opened: `transformed` gives no value then, and
    // pieces come out as they went in.
    [[nodiscard]] bool isAvailable() const;
    void transform(std::u16string_view piece, std::u16string& out);
    void finish(std::u16string& out);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quod
