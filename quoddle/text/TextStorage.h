// The document text: UTF-16 units in a balanced tree of chunks of a few thousand units, whose
// inner nodes sum the units and line terminators below them.
//
// Every edit, wherever it happens, costs O(log n) plus the size of the edit; so do the line
// questions (the line of a position, the start of a line, `lineRangeForRange`), without scanning.
// Chunks of mostly Latin-1 text keep one byte per unit, so a mostly-ASCII document takes little
// more memory than its UTF-8 file. Every position and length counts UTF-16 units; ranges outside
// the text are programming errors that stop the process. Each replacement tells `didProcessEditing`
// observers the range the new text occupies and the change in length, so that they can update their
// own indexes without a rescan.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/base/Range.h"
#include "quoddle/base/Signal.h"
#include "quoddle/strings/LineFunctions.h"

namespace quod {

struct TextStorageEdit {
    Range editedRange;       // where the new text now lies
    int64_t changeInLength;  // new length minus old length
};

class QUODDLE_EXPORT TextStorage {
  public:
    TextStorage();
    explicit TextStorage(std::u16string_view text);
    // A moved-from storage may only be assigned to or destroyed.
    TextStorage(TextStorage&& other) noexcept;
    TextStorage& operator=(TextStorage&& other) noexcept;
    ~TextStorage();

    // Decodes UTF-8 (ill-formed sequences become U+FFFD) straight into chunks in one pass; ASCII
    // runs are copied as they are.
    [[nodiscard]] static TextStorage fromUtf8(std::string_view bytes);

    // Loads a UTF-8 file, decoding straight from a read-only mapping of it (so the bytes are never
    // copied), or by reading when it cannot be mapped (pipes, special files). No value when the
    // file cannot be opened or read.
    [[nodiscard]] static std::optional<TextStorage> fromUtf8File(const std::string& path);

    [[nodiscard]] std::u16string string() const;
    [[nodiscard]] int64_t length() const;
    [[nodiscard]] char16_t characterAtIndex(int64_t index) const;
    [[nodiscard]] std::u16string substringWithRange(Range range) const;
    // The text of a range as a storage of its own, as compact as this one: what an undo record
    // keeps of a large replaced stretch.
    [[nodiscard]] TextStorage storageWithRange(Range range) const;

    // Hands the text of `range` to `visit` in order, in pieces of at most a few thousand units,
    // without copying the whole: for scans over large texts. Pieces end where the storage's
    // chunks do, which is never between a CR and its LF nor inside a surrogate pair (except
    // where the range itself cuts one).
    void forEachPiece(Range range, const std::function<void(std::u16string_view)>& visit) const;

    // The platform's line functions (see LineFunctions.h for the rules), from the index.
    [[nodiscard]] Range lineRangeForRange(Range range) const;
    // Any of the outputs may be null.
    void getLineStart(int64_t* start, int64_t* end, int64_t* contentsEnd, Range range) const;
    [[nodiscard]] LineBounds lineBoundsForRange(Range range) const;
    [[nodiscard]] LineBounds paragraphBoundsForRange(Range range) const;

    // Lines as the index counts them: one more than there are terminators, so an empty text has
    // one line and a final terminator is followed by an empty last line. Lines are numbered from 0.
    [[nodiscard]] int64_t lineCount() const;
    [[nodiscard]] int64_t lineIndexOfPosition(int64_t position) const;
    [[nodiscard]] int64_t startOfLine(int64_t line) const;
    // The start of every line, in order, in O(lines).
    [[nodiscard]] std::vector<int64_t> lineStarts() const;
    // [start, end behind the terminator) of a line.
    [[nodiscard]] Range rangeOfLine(int64_t line) const;

    void replaceCharactersInRange(Range range, std::u16string_view text);
    void replaceCharactersInRange(Range range, const TextStorage& text);
    // Replaces `range` with `text` and answers what the range held, as a storage of its own. When
    // the range is most of the text (and `text` was cut into chunks as this storage cuts them,
    // see Builder), the two trade their chunks and only the text around the range is copied: a
    // rewrite of nearly a whole large document and its undo record then cost no copy of it.
    [[nodiscard]] TextStorage exchangeCharactersInRange(Range range, TextStorage&& text);

    Signal<TextStorage, const TextStorageEdit&> didProcessEditing;

    // Chunk sizes in units: chunks are cut at `target` when built and kept between `minimum`
    // and `maximum` under edits. The defaults suit documents of any size; tiny sizes make every
    // chunk border reachable in tests.
    struct ChunkSizes {
        int64_t target = 3072;
        int64_t minimum = 768;
        int64_t maximum = 6144;
        friend bool operator==(const ChunkSizes&, const ChunkSizes&) = default;
    };
    TextStorage(std::u16string_view text, ChunkSizes sizes);

    // Makes a storage from units appended in order, cut into chunks as they arrive, so that a
    // large text put together piece by piece (sorted lines, say) never exists whole in UTF-16.
    class QUODDLE_EXPORT Builder {
      public:
        // Chunks are cut as `like` cuts its own, so the result can trade places with it.
        explicit Builder(const TextStorage& like);
        Builder(Builder&&) noexcept;
        Builder& operator=(Builder&&) noexcept;
        ~Builder();
        void append(std::u16string_view units);
        // The storage of everything appended. Call once.
        [[nodiscard]] TextStorage finish();

      private:
        struct State;
        std::unique_ptr<State> state_;
    };

  private:
    struct Tree;
    explicit TextStorage(std::unique_ptr<Tree> tree);
    int64_t lineContaining(int64_t position) const;
    int64_t endOfLine(int64_t line) const;
    int64_t terminatorLengthBefore(int64_t end, int64_t lineStart) const;
    template <typename Feed>
    void replaceChunks(Range range, int64_t insertedLength, const Feed& feedInserted);

    std::unique_ptr<Tree> tree_;
};

}  // namespace quod
