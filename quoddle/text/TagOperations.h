// Markup commands: close the innermost open element, or make an element of the word under the
// insertion point.
#pragma once

#include "quoddle/Export.h"
#include "quoddle/text/QuodTextView.h"

namespace quod::Text {

// With an insertion point, inserts the closing tag of the innermost element still open before it,
// spelt as the opening tag spells it. The search starts at the last ">" before the insertion
// point and walks back over characters (grapheme clusters), pairing closing and opening tags by
// depth alone; self-closing tags and openings that never need closing (line breaks, rules,
// images, inputs, links, params, frames, areas, bases, comments, processing instructions,
// server-side blocks) are passed over. Does nothing with a real selection or when no element is
// open. Costs one pass back over the text before the insertion point at most.
QUODDLE_EXPORT void closeTag(QuodTextView& view);

// Replaces the word under the insertion point by an empty element of that name, with the
// insertion point between the tags. Without a word there it sounds the alert and changes nothing.
// The insertion point is placed as if the word selection held no surrounding spaces.
QUODDLE_EXPORT void newTag(QuodTextView& view);

}  // namespace quod::Text
