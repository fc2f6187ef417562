// The document text: UTF-16 units in a gap buffer, with an index of line starts.
//
// Edits near the previous edit cost time proportional to the edit; line questions (the line of a
// position, the start of a line, `lineRangeForRange`) are answered from the index in O(log lines)
// without scanning. Every position and length counts UTF-16 units; ranges outside the text are
// programming errors that stop the process. Each replacement tells `didProcessEditing` observers
// the range the new text occupies and the change in length, so that they can update their own
// indexes without a rescan.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/base/Range.h"
#include "quoddle/base/Signal.h"
#include "quoddle/base/SplitVector.h"
#include "quoddle/strings/LineFunctions.h"
#include "quoddle/text/LineStartIndex.h"

namespace quod {

struct TextStorageEdit {
    Range editedRange;       // where the new text now lies
    int64_t changeInLength;  // new length minus old length
};

class QUODDLE_EXPORT TextStorage {
  public:
    TextStorage();
    explicit TextStorage(std::u16string_view text);

    // Decodes UTF-8 (ill-formed sequences become U+FFFD) straight into the buffer and indexes it;
    // for mostly-ASCII text the storage needs twice the bytes plus eight bytes a line.
    [[nodiscard]] static TextStorage fromUtf8(std::string_view bytes);

    // Loads a UTF-8 file, decoding straight from a read-only mapping of it (so the bytes are never
    // copied), or by reading when it cannot be mapped (pipes, special files). No value when the
    // file cannot be opened or read.
    [[nodiscard]] static std::optional<TextStorage> fromUtf8File(const std::string& path);

    [[nodiscard]] std::u16string string() const;
    [[nodiscard]] int64_t length() const { return buffer_.length(); }
    [[nodiscard]] char16_t characterAtIndex(int64_t index) const;
    [[nodiscard]] std::u16string substringWithRange(Range range) const;

    // The platform's line functions (see LineFunctions.h for the rules), from the index.
    [[nodiscard]] Range lineRangeForRange(Range range) const;
    // Any of the outputs may be null.
    void getLineStart(int64_t* start, int64_t* end, int64_t* contentsEnd, Range range) const;
    [[nodiscard]] LineBounds lineBoundsForRange(Range range) const;
    [[nodiscard]] LineBounds paragraphBoundsForRange(Range range) const;

    // Lines as the index counts them: one more than there are terminators, so an empty text has
    // one line and a final terminator is followed by an empty last line. Lines are numbered from 0.
    [[nodiscard]] int64_t lineCount() const { return lines_.lineCount(); }
    [[nodiscard]] int64_t lineIndexOfPosition(int64_t position) const;
    [[nodiscard]] int64_t startOfLine(int64_t line) const;
    // [start, end behind the terminator) of a line.
    [[nodiscard]] Range rangeOfLine(int64_t line) const;

    void replaceCharactersInRange(Range range, std::u16string_view text);

    Signal<TextStorage, const TextStorageEdit&> didProcessEditing;

  private:
    TextStorage(SplitVector<char16_t>&& buffer);
    void indexWholeText();
    int64_t endOfLine(int64_t line) const;
    int64_t terminatorLengthBefore(int64_t end, int64_t lineStart) const;

    SplitVector<char16_t> buffer_;
    LineStartIndex lines_;
};

}  // namespace quod
