// Joins short texts (a path's components, a name and a place, list items) into one line that
// reads correctly whatever script each text is in and whichever way the interface runs.
//
// Left to the Unicode bidirectional algorithm alone, "Notes" › "תקציר" › "2024" would not stay in
// that order: the number next to Hebrew letters joins their right-to-left run and the parts swap
// places. So each part is wrapped in FIRST STRONG ISOLATE (U+2068) … POP DIRECTIONAL ISOLATE
// (U+2069): inside, a part takes the direction of its own first letter; outside, it is one
// unit that neither moves nor moves its neighbours.
//
// The parts keep their order in the text. How they appear is the interface's layout direction
// (Interface::userInterfaceLayoutDirection()), as mirrored interfaces show such sequences: left
// to right the first part is at the left, right to left it is at the right, and the separators
// point along the reading order. To make that hold in any label or paragraph the result is put
// into the interface's own isolate: LEFT-TO-RIGHT ISOLATE (U+2066) or RIGHT-TO-LEFT ISOLATE
// (U+2067) at the start, U+2069 at the end, so it can also be inserted into a longer text
// without disturbing it. The separator is not isolated: it is meant to be punctuation or words
// of the interface's language and takes the interface's direction (a mirrored character such as
// "›" turns to point the other way right to left).
//
// No parts give "" (no marks); empty parts stay, as empty isolates between separators. Texts
// are UTF-8 and are copied as they are, invalid bytes included.
//
//     Interface::bidirectionalString({"Documents", "תקציר.txt"}, " › ")
//         // "\u2066\u2068Documents\u2069 › \u2068תקציר.txt\u2069\u2069"
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod::Interface {

[[nodiscard]] QUODDLE_EXPORT std::string bidirectionalString(
    std::span<const std::string_view> parts, std::string_view separator);
[[nodiscard]] QUODDLE_EXPORT std::string bidirectionalString(std::span<const std::string> parts,
                                                             std::string_view separator);
[[nodiscard]] inline std::string bidirectionalString(std::initializer_list<std::string_view> parts,
                                                     std::string_view separator) {
    return bidirectionalString(std::span<const std::string_view>(parts.begin(), parts.size()),
                               separator);
}

}  // namespace quod::Interface
