// Text::unique for UTF-8 text that arrives in pieces, such as a large file gone through window by
// window: the first line of each group of canonically equivalent lines, in order, joined with LF,
// then the text's final line terminator as it stands. That is what `Text::unique` makes of a view
// whose raw selection is all its lines without the last line's terminator (how `quod unique`
// selects a file), and what comes out here for the same text, byte for byte.
//
// Output comes as lines arrive: a line is written when it is the first of its kind. Kept lines
// are not copied: the stream remembers where they lie, so the pieces must stay readable at the
// same addresses until `finish` (pieces of one mapped file, or of one buffer that holds the whole
// text). Each piece but the last must end just after a line feed, so that no line, and no CR LF
// pair, is cut in two. The text must be well-formed UTF-8.
//
//   UniqueLinesStream unique;
//   for (std::string_view piece : wholeLinePieces) unique.append(piece, out);
//   unique.finish(out);
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT UniqueLinesStream {
  public:
    UniqueLinesStream();
    ~UniqueLinesStream();
    UniqueLinesStream(UniqueLinesStream&&) noexcept;
    UniqueLinesStream& operator=(UniqueLinesStream&&) noexcept;

    // Appends to `out` the lines of `piece` that are the first of their kind.
    void append(std::string_view piece, std::string& out);
    // Appends the text's final line terminator, if it has one.
    void finish(std::string& out);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quod
