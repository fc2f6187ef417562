#include "quoddle/text/TagOperations.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "quoddle/strings/StringEditing.h"
#include "quoddle/strings/TextBoundaries.h"
#include "quoddle/text/EditingSteps.h"

namespace quod::Text {
namespace {

using internal::changeText;
using internal::clampToText;
using internal::textOf;

// Openings that never need a closing tag, by the number of units compared. The 4-unit group is
// tested with "contains", the others with equality, all ignoring case.
constexpr std::array<std::u16string_view, 5> containedIn4 = {u"<br>", u"<hr>", u"<!--", u"<?",
                                                             u"<%"};
constexpr std::array<std::u16string_view, 2> openings5 = {u"<img ", u"<br/>"};
constexpr std::array<std::u16string_view, 5> openings6 = {u"<br />", u"<hr />", u"<area ",
                                                          u"<base ", u"<link "};
constexpr std::array<std::u16string_view, 3> openings7 = {u"<frame ", u"<input ", u"<param "};

// Case-insensitive comparisons under full case folding ("<lin\u212A " is "<link "), with a plain
// ASCII path for the usual case, so a document full of "<" is not folded unit by unit.
bool isAscii(std::u16string_view text) {
    for (const char16_t unit : text) {
        if (unit >= 0x80) return false;
    }
    return true;
}

char16_t asciiLower(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? unit + 32 : unit;
}

bool equalsIgnoringCase(std::u16string_view text, std::u16string_view opening) {
    if (!isAscii(text)) return equalsCaseInsensitive(text, opening);
    if (text.size() != opening.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (asciiLower(text[i]) != opening[i]) return false;
    }
    return true;
}

bool containsIgnoringCase(std::u16string_view text, std::u16string_view opening) {
    if (!isAscii(text)) return containsCaseInsensitive(text, opening);
    for (std::size_t at = 0; at + opening.size() <= text.size(); ++at) {
        if (equalsIgnoringCase(text.substr(at, opening.size()), opening)) return true;
    }
    return false;
}

template <std::size_t count>
bool equalsAny(std::u16string_view text, const std::array<std::u16string_view, count>& openings) {
    for (const auto opening : openings) {
        if (equalsIgnoringCase(text, opening)) return true;
    }
    return false;
}

// `text` holds at least the seven units from `at` that exist in the document of `length` units.
bool needsNoClosing(std::u16string_view text, std::size_t at, std::size_t length) {
    if (at + 4 <= length) {
        for (const auto opening : containedIn4) {
            if (containsIgnoringCase(text.substr(at, 4), opening)) return true;
        }
    }
    if (at + 5 <= length && equalsAny(text.substr(at, 5), openings5)) return true;
    if (at + 6 <= length && equalsAny(text.substr(at, 6), openings6)) return true;
    // One unit more than the other groups need: kept as the command has always behaved.
    return at + 7 < length && equalsAny(text.substr(at, 7), openings7);
}

// True when the unit at `at` starts a grapheme cluster. Before "<" or ">" (neither extends nor
// joins a cluster) there is a boundary unless the previous code point is a prepended concatenation
// mark, which binds to what follows it.
bool startsCharacter(std::u16string_view text, std::size_t at) {
    if (at == 0) return true;
    UChar32 previous;
    std::size_t before = at;
    U16_PREV(text.data(), 0, before, previous);
    return u_getIntPropertyValue(previous, UCHAR_GRAPHEME_CLUSTER_BREAK) != U_GCB_PREPEND;
}

// The text from `at` up to the first unit of `stops` (or the end).
std::u16string_view scanUpTo(std::u16string_view text, std::size_t at, std::u16string_view stops) {
    const std::size_t end = text.find_first_of(stops, at);
    return text.substr(at, end == std::u16string_view::npos ? std::u16string_view::npos : end - at);
}

// The second character of a tag's content, for telling "</name" from "<name".
std::u16string_view secondCharacter(std::u16string_view content) {
    // A character rarely spans more than a few units; a window keeps this cheap on huge tags.
    const std::u16string_view window = content.substr(0, 64);
    const std::vector<int64_t> boundaries = characterBoundaries(window);
    if (boundaries.size() < 3) return {};
    return window.substr(boundaries[1], boundaries[2] - boundaries[1]);
}

// The closing tag for the innermost open element before `cursor`, or none. `text` is the document
// from its start up to at least seven units past the cursor; `length` is the whole document's.
std::optional<std::u16string> closingTagBefore(std::u16string_view text, std::size_t cursor,
                                               std::size_t length) {
    std::size_t at = cursor;
    // First the last ">" before the cursor; "<" on the way is ignored.
    std::optional<std::size_t> nextGreaterThan;
    while (at > 0) {
        --at;
        if (text[at] == u'>' && startsCharacter(text, at)) {
            nextGreaterThan = at;
            break;
        }
    }
    if (!nextGreaterThan) return std::nullopt;

    int64_t depth = 0;
    while (at > 0) {
        --at;
        // Any ">" unit ends a tag's content scan, whatever cluster it sits in.
        if (text[at] == u'>') nextGreaterThan = at;
        if (text[at] != u'<' || !startsCharacter(text, at)) continue;
        if (needsNoClosing(text, at, length)) continue;
        const std::u16string_view content = text.substr(at, *nextGreaterThan - at);
        if (content.empty()) continue;
        if (content.back() == u'/') continue;  // self-closing
        if (secondCharacter(content) == u"/") {
            ++depth;
            continue;
        }
        if (depth > 0) {
            --depth;
            continue;
        }
        const std::u16string_view name = scanUpTo(text.substr(0, cursor), at, u" >/");
        if (name.empty()) return std::nullopt;
        const std::u16string_view first =
            name.substr(0, characterBoundaries(name.substr(0, 64))[1]);
        std::u16string closing(first);
        closing += u'/';
        closing += name.substr(first.size());
        closing += u'>';
        return closing;
    }
    return std::nullopt;
}

}  // namespace

void closeTag(QuodTextView& view) {
    const Range raw = view.selectedRange();
    if (raw.length != 0) return;
    // The openings that never close are compared a few units past the insertion point too.
    const std::u16string text = textOf(view, {0, std::min(view.length(), raw.location + 7)});
    const auto closing = closingTagBefore(text, static_cast<std::size_t>(raw.location),
                                          static_cast<std::size_t>(view.length()));
    if (!closing) return;
    QuodTextView::UndoGroup command(view);
    changeText(view, {raw.location, 0}, *closing);
}

void newTag(QuodTextView& view) {
    QuodTextView::UndoGroup command(view);
    const Range original = view.selectedRange();
    if (view.selectionRangeForProposedRange(original, SelectionGranularity::selectByWord).length ==
        0) {
        view.setSelectedRange(original);
        view.beep();
        return;
    }
    view.selectWord();
    const Range word = view.selectedRange();
    const std::u16string name = trim(textOf(view, word), true, StringEdge::both);
    if (name.empty()) {
        view.setSelectedRange(original);
        view.beep();
        return;
    }
    const std::u16string tag = u"<" + name + u"></" + name + u">";
    const int64_t caret = word.end() + 2;
    changeText(view, word, tag);
    if (view.length() + 5 + static_cast<int64_t>(name.size()) >= caret) {
        view.setSelectedRange({clampToText(view, caret), 0});
    }
}

}  // namespace quod::Text
