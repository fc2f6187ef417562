#include "quoddle/strings/LineEnding.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quoddle/base/Precondition.h"
#include "quoddle/strings/UnitBlocks.h"

namespace quod {
namespace {

namespace Ending = Const::UniChar::LineEnding;

// What each kind of line ending becomes. Every rewrite in this file is one of these tables: the
// replace-all passes it stands for never act on anything but CR and LF, so the only question a
// pass sequence answers is what a CR LF, a lone CR and a lone LF turn into.
template <typename Unit>
struct Replacements {
    std::basic_string_view<Unit> crlf;
    std::basic_string_view<Unit> cr;
    std::basic_string_view<Unit> lf;
};

template <typename Unit>
constexpr bool isCrOrLf(Unit unit) {
    return unit == Unit{Ending::cr} || unit == Unit{Ending::unix};
}

// Finds the CRs and LFs of UTF-16 text.
class UnitTerminators {
  public:
    explicit UnitTerminators(std::u16string_view text) : units_(text.data()), size_(text.size()) {}

    // The index of the first CR or LF at or after `from`, or the size when there is none.
    std::size_t next(std::size_t from) const {
        std::size_t i = from;
        // Most of a document is line contents: testing one unit per step made the scan cost as
        // much as the copy, so look at a block of units at once.
        for (; i + internal::unitsPerBlock <= size_; i += internal::unitsPerBlock) {
            const internal::UnitBlock block = internal::loadUnitBlock(units_ + i);
            const std::size_t lane = internal::firstMatchingLane((block == uint16_t{Ending::cr}) |
                                                                 (block == uint16_t{Ending::unix}));
            if (lane < internal::unitsPerBlock) return i + lane;
        }
        while (i < size_ && !isCrOrLf(units_[i]))
            ++i;
        return i;
    }

  private:
    const char16_t* units_;
    std::size_t size_;
};

// Finds the CR and LF bytes of UTF-8 text with memchr, which runs at memory speed. It remembers
// where the next of each lies, so text with only LFs is not searched to its end for a CR at every
// line.
class ByteTerminators {
  public:
    explicit ByteTerminators(std::string_view text)
        : text_(text), nextCr_(find('\r', 0)), nextLf_(find('\n', 0)) {}

    std::size_t next(std::size_t from) {
        if (nextCr_ < from) nextCr_ = find('\r', from);
        if (nextLf_ < from) nextLf_ = find('\n', from);
        return std::min(nextCr_, nextLf_);
    }

  private:
    std::size_t find(char byte, std::size_t from) const {
        const void* found = std::memchr(text_.data() + from, byte, text_.size() - from);
        return found == nullptr
                   ? text_.size()
                   : static_cast<std::size_t>(static_cast<const char*>(found) - text_.data());
    }

    std::string_view text_;
    std::size_t nextCr_;
    std::size_t nextLf_;
};

template <typename Unit>
struct TerminatorsOf;
template <>
struct TerminatorsOf<char16_t> {
    using Type = UnitTerminators;
};
template <>
struct TerminatorsOf<char> {
    using Type = ByteTerminators;
};

// Rewrites one piece into `out`. `heldCr` carries a CR that ended the previous piece in, and one
// that ends this piece out.
template <typename Unit>
void rewrite(std::basic_string_view<Unit> in, const Replacements<Unit>& to, bool& heldCr,
             std::basic_string<Unit>& out) {
    // Size the buffer once for the worst case, every unit being a CR or LF (a CR LF replacement
    // counts for two units). Capacity that is never written costs address space, not memory, and
    // counting the line endings first would read the whole text twice.
    const std::size_t unitsPerUnit =
        std::max({to.cr.size(), to.lf.size(), (to.crlf.size() + 1) / 2, std::size_t{1}});
    out.reserve(out.size() + to.cr.size() + in.size() * unitsPerUnit);

    const Unit* units = in.data();
    const std::size_t size = in.size();
    std::size_t runStart = 0;
    if (heldCr && size > 0) {
        heldCr = false;
        const bool pair = units[0] == Unit{Ending::unix};
        out.append(pair ? to.crlf : to.cr);
        runStart = pair ? 1 : 0;
    }
    typename TerminatorsOf<Unit>::Type terminators(in);
    for (std::size_t i = terminators.next(runStart); i < size; i = terminators.next(i)) {
        out.append(units + runStart, i - runStart);
        if (units[i] == Unit{Ending::unix}) {
            out.append(to.lf);
            i += 1;
        } else if (i + 1 == size) {
            heldCr = true;
            i += 1;
        } else if (units[i + 1] == Unit{Ending::unix}) {
            out.append(to.crlf);
            i += 2;
        } else {
            out.append(to.cr);
            i += 1;
        }
        runStart = i;
    }
    out.append(units + runStart, size - runStart);
}

template <typename Unit>
void finishRewrite(const Replacements<Unit>& to, bool& heldCr, std::basic_string<Unit>& out) {
    if (heldCr) out.append(to.cr);
    heldCr = false;
}

// The tables of the rewrites, by the converter's kinds, in UTF-16 and in UTF-8.
template <typename Unit>
struct Tables;
template <>
struct Tables<char16_t> {
    static constexpr Replacements<char16_t> toUnix{u"\n", u"\n", u"\n"};
    static constexpr Replacements<char16_t> toWindows{u"\r\n", u"\r\n", u"\r\n"};
    static constexpr Replacements<char16_t> toMacOS9{u"\r", u"\r", u"\r"};
    static constexpr Replacements<char16_t> showing{u"\u00B6\u00B6", u"\u00B6", u"\u00B6"};
    static constexpr Replacements<char16_t> removing{};
};
template <>
struct Tables<char> {
    static constexpr Replacements<char> toUnix{"\n", "\n", "\n"};
    static constexpr Replacements<char> toWindows{"\r\n", "\r\n", "\r\n"};
    static constexpr Replacements<char> toMacOS9{"\r", "\r", "\r"};
    static constexpr Replacements<char> showing{"\xC2\xB6\xC2\xB6", "\xC2\xB6", "\xC2\xB6"};
    static constexpr Replacements<char> removing{};
};

template <typename Unit, typename Rewrite>
const Replacements<Unit>& tableFor(Rewrite rewrite) {
    switch (rewrite) {
        case Rewrite::toUnix:
            return Tables<Unit>::toUnix;
        case Rewrite::toWindows:
            return Tables<Unit>::toWindows;
        case Rewrite::toMacOS9:
            return Tables<Unit>::toMacOS9;
        case Rewrite::showing:
            return Tables<Unit>::showing;
        case Rewrite::removing:
            break;
    }
    return Tables<Unit>::removing;
}

}  // namespace

LineEndingConverter LineEndingConverter::converting(LineEnding to) {
    switch (to) {
        case LineEnding::unix:
            return LineEndingConverter(Rewrite::toUnix);
        case LineEnding::windows:
            return LineEndingConverter(Rewrite::toWindows);
        case LineEnding::macOS9:
            return LineEndingConverter(Rewrite::toMacOS9);
    }
    QUOD_PRECONDITION(false, "not a line ending");
    return LineEndingConverter(Rewrite::toUnix);
}

LineEndingConverter LineEndingConverter::showingCharacters() {
    return LineEndingConverter(Rewrite::showing);
}

LineEndingConverter LineEndingConverter::removing() {
    return LineEndingConverter(Rewrite::removing);
}

void LineEndingConverter::convert(std::u16string_view piece, std::u16string& out) {
    rewrite(piece, tableFor<char16_t>(rewrite_), heldCr_, out);
}

void LineEndingConverter::convert(std::string_view utf8Piece, std::string& out) {
    rewrite(utf8Piece, tableFor<char>(rewrite_), heldCr_, out);
}

void LineEndingConverter::finish(std::u16string& out) {
    finishRewrite(tableFor<char16_t>(rewrite_), heldCr_, out);
}

void LineEndingConverter::finish(std::string& out) {
    finishRewrite(tableFor<char>(rewrite_), heldCr_, out);
}

namespace Text {
namespace {

std::u16string rewriteWhole(std::u16string_view in, LineEndingConverter converter) {
    std::u16string out;
    converter.convert(in, out);
    converter.finish(out);
    return out;
}

}  // namespace

std::u16string convert(std::u16string_view string, LineEnding toLineEnding) {
    return rewriteWhole(string, LineEndingConverter::converting(toLineEnding));
}

std::u16string replaceLineEndingCharacters(std::u16string_view in) {
    return rewriteWhole(in, LineEndingConverter::showingCharacters());
}

std::u16string removeLineEndings(std::u16string_view in) {
    return rewriteWhole(in, LineEndingConverter::removing());
}

}  // namespace Text
}  // namespace quod
