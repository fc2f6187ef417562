// Operations that rewrite the text of the selection: line comments, letter case, transforms, XML
// escaping and snippets.
//
// Like the line operations, each reads the view's text and a selection, changes the text through
// the change protocol (one undo step per call) and sets the selection afterwards:
//   - commentOrUncomment, transform, rewriteSelection, prepareSnippet and insertSnippet read the
//     raw selection;
//   - the case changes and prepareForXML read `selection()` (an insertion point stands for its
//     line); transform takes an insertion point to mean the whole document.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/strings/StringTransform.h"
#include "quoddle/text/QuodTextView.h"

namespace quod::Text {

// Toggles a line comment on every line of the raw selection. The first line decides: if it
// starts with `comment` once spaces and tabs are ignored, every line loses the first occurrence of
// the token wherever it stands (also a trailing comment behind code); otherwise every line, blank
// ones too, gets the token at column 0 with no space after it.
QUODDLE_EXPORT void commentOrUncomment(QuodTextView& view, std::u16string_view comment);

// Locale-aware case changes of the selection. The selection keeps its old length afterwards even
// where the text grew or shrank ("ß" upper-cases to "SS").
QUODDLE_EXPORT void uppercase(QuodTextView& view);
QUODDLE_EXPORT void lowercase(QuodTextView& view);
QUODDLE_EXPORT void capitalize(QuodTextView& view);

// Runs the raw selection (the whole text for an insertion point) through a transform; a transform
// that cannot run, or changes nothing, leaves the text alone.
QUODDLE_EXPORT void transform(StringTransform::Kind transformer, QuodTextView& view);

// Replaces the raw selection by `rewrite` of its text, selected. For the operations that the
// framework has as rewrites of a string (Text::convert, replaceLineEndingCharacters) and a host
// applies to a selection. A rewrite that changes nothing leaves the text and the undo history
// alone.
QUODDLE_EXPORT void rewriteSelection(
    QuodTextView& view, const std::function<std::u16string(std::u16string_view)>& rewrite);

// Escapes "&", "<" and ">" for XML in four passes: "&amp;" to "&" first (so escaped text is not
// escaped twice), then "&" to "&amp;", "<" to "&lt;", ">" to "&gt;". Quotes stay; other entities
// are not protected ("&lt;" becomes "&amp;lt;").
[[nodiscard]] QUODDLE_EXPORT std::u16string prepareStringForXML(std::u16string_view string);

// Escapes the selection for XML and leaves an insertion point at its start.
QUODDLE_EXPORT void prepareForXML(QuodTextView& view);

struct PreparedSnippet {
    std::u16string text;
    int64_t locationOffset = 0;  // UTF-16 units from the insertion start to the cursor marker

    friend bool operator==(const PreparedSnippet&, const PreparedSnippet&) = default;
};

// The snippet with every "%%s" replaced by the selected text and every "%%c" removed; the offset
// is where the first "%%c" stood (0 without one).
[[nodiscard]] QUODDLE_EXPORT PreparedSnippet prepareSnippet(std::u16string_view snippet,
                                                            const QuodTextView& view);

// Replaces the raw selection by the prepared snippet and selects from the cursor marker on for the
// snippet's full length (clamped to the end of the text): with no marker the whole snippet ends up
// selected.
QUODDLE_EXPORT void insertSnippet(std::u16string_view snippet, QuodTextView& view);

}  // namespace quod::Text
