#include "quoddle/strings/LineEnding.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quoddle/base/Precondition.h"
#include "quoddle/strings/UnitBlocks.h"

namespace quod {
namespace {

namespace Unit = Const::UniChar::LineEnding;

// What each kind of line ending becomes. Every rewrite in this file is one of these tables: the
// replace-all passes it stands for never act on anything but CR and LF, so the only question a
// pass sequence answers is what a CR LF, a lone CR and a lone LF turn into.
struct Replacements {
    std::u16string_view crlf;
    std::u16string_view cr;
    std::u16string_view lf;
};

constexpr bool isCrOrLf(char16_t unit) {
    return unit == Unit::cr || unit == Unit::unix;
}

// The index of the first CR or LF at or after `from`, or `size` when there is none.
std::size_t nextCrOrLf(const char16_t* units, std::size_t from, std::size_t size) {
    std::size_t i = from;
    // Most of a document is line contents: testing one unit per step made the scan cost as much
    // as the copy, so look at a block of units at once.
    for (; i + internal::unitsPerBlock <= size; i += internal::unitsPerBlock) {
        const internal::UnitBlock block = internal::loadUnitBlock(units + i);
        const std::size_t lane = internal::firstMatchingLane((block == uint16_t{Unit::cr}) |
                                                             (block == uint16_t{Unit::unix}));
        if (lane < internal::unitsPerBlock) {
            return i + lane;
        }
    }
    while (i < size && !isCrOrLf(units[i])) {
        ++i;
    }
    return i;
}

std::u16string rewrite(std::u16string_view in, const Replacements& to) {
    // Size the buffer once for the worst case, every unit being a CR or LF (a CR LF replacement
    // counts for two units). Capacity that is never written costs address space, not memory, and
    // counting the line endings first would read the whole text twice.
    const std::size_t unitsPerUnit =
        std::max({to.cr.size(), to.lf.size(), (to.crlf.size() + 1) / 2, std::size_t{1}});
    std::u16string out;
    out.reserve(in.size() * unitsPerUnit);

    const char16_t* units = in.data();
    const std::size_t size = in.size();
    std::size_t runStart = 0;
    for (std::size_t i = nextCrOrLf(units, 0, size); i < size; i = nextCrOrLf(units, i, size)) {
        out.append(units + runStart, i - runStart);
        if (units[i] == Unit::unix) {
            out.append(to.lf);
            i += 1;
        } else if (i + 1 < size && units[i + 1] == Unit::unix) {
            out.append(to.crlf);
            i += 2;
        } else {
            out.append(to.cr);
            i += 1;
        }
        runStart = i;
    }
    out.append(units + runStart, size - runStart);
    return out;
}

constexpr std::u16string_view lf = u"\n";
constexpr std::u16string_view cr = u"\r";
constexpr std::u16string_view crlf = u"\r\n";

}  // namespace

namespace Text {

std::u16string convert(std::u16string_view string, LineEnding toLineEnding) {
    switch (toLineEnding) {
        case LineEnding::unix:
            return rewrite(string, {lf, lf, lf});
        case LineEnding::windows:
            return rewrite(string, {crlf, crlf, crlf});
        case LineEnding::macOS9:
            return rewrite(string, {cr, cr, cr});
    }
    QUOD_PRECONDITION(false, "not a line ending");
    return {};
}

std::u16string replaceLineEndingCharacters(std::u16string_view in) {
    return rewrite(in, {u"\u00B6\u00B6", u"\u00B6", u"\u00B6"});
}

std::u16string removeLineEndings(std::u16string_view in) {
    return rewrite(in, {});
}

}  // namespace Text
}  // namespace quod
