// Counting grapheme clusters and words (see SelectionStatistics.h) over a text given in pieces:
// a table-driven scan for the code points whose segmentation the locale's rules settle locally,
// and ICU's break iterators for the stretches around anything else.
//
// The scan covers letters, digits, spaces and punctuation below U+3000 that are single-code-point
// clusters and none of ICU's special word classes (Hebrew letters, kana, ideographs, dictionary
// scripts, extenders, format characters): for those the word-break rules decide a boundary from
// the two units before it and the one after it. A boundary found by the scan is certain once
// those units are known, so ICU can start there as it would from the start of a text, and stop
// at the next such boundary after the units it has to decide, or just after a line break. The
// scan runs only for locales whose ICU word rules are ones it was checked against (the differential
// test); any other locale counts through ICU alone, cut only after line breaks.
#pragma once

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/utext.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "quoddle/text/SelectionStatistics.h"

namespace quod::Text::internal {

// Clusters and words of whole texts through ICU alone, with one pair of iterators reused across
// texts.
class IcuSegmentCount {
  public:
    explicit IcuSegmentCount(const icu::Locale& locale);
    ~IcuSegmentCount();
    IcuSegmentCount(const IcuSegmentCount&) = delete;
    IcuSegmentCount& operator=(const IcuSegmentCount&) = delete;

    [[nodiscard]] SelectionCount count(std::u16string_view text);
    [[nodiscard]] const icu::BreakIterator& wordIterator() const { return *words_; }

  private:
    std::unique_ptr<icu::BreakIterator> characters_;
    std::unique_ptr<icu::BreakIterator> words_;
    UText utext_ = UTEXT_INITIALIZER;
};

struct ScanClasses;

// The counter behind SelectionCounter and selectionCount.
class SegmentCounter {
  public:
    enum class Path { fastest, icuOnly };

    explicit SegmentCounter(const icu::Locale& locale, Path path = Path::fastest);

    // `last` says no piece follows, so nothing needs carrying.
    void add(std::u16string_view piece, bool last = false);
    // Everything added so far, as if the text ended there.
    [[nodiscard]] SelectionCount count();
    // Forgets what was added, to count another text.
    void reset();

    // Whether the scan runs for this locale (the tests check that the usual ones take it).
    [[nodiscard]] bool scans() const { return classes_ != nullptr; }

  private:
    void scanPiece(const char16_t* units, int64_t size, bool last);
    int64_t scan(const char16_t* units, int64_t from, int64_t size);
    int64_t findResume(const char16_t* units, int64_t from, int64_t size);
    void enterStretch(int64_t at);
    void countStretch(std::u16string_view text);

    IcuSegmentCount icu_;
    Path path_;
    const ScanClasses* classes_ = nullptr;  // null: the locale's rules are not known to the scan

    // Everything before the current segment (scanning) or stretch, counted.
    SelectionCount counted_;
    int64_t consumed_ = 0;  // units added before the current piece
    bool stretching_ = false;
    // Scanning: the state after the last unit, and where its segment starts (a certain boundary).
    // The current segment is counted already, eagerly, as soon as it holds a letter or digit.
    uint8_t state_ = 0;
    int64_t segmentStart_ = 0;
    // Stretching: where the stretch starts, and the scan's view of the units since the last one
    // it cannot classify, to see the next certain boundary.
    int64_t stretchStart_ = 0;
    uint8_t probeState_ = 0;
    int64_t probeRun_ = 0;
    bool afterCarriageReturn_ = false;
    // The units from segmentStart_ (scanning) or stretchStart_ (stretching) to the end of what
    // was added, kept when they reach back before the current piece.
    std::u16string carried_;
};

}  // namespace quod::Text::internal
