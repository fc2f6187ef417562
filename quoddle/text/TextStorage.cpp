#include "quoddle/text/TextStorage.h"

#include <algorithm>
#include <vector>

#include "quoddle/base/CheckedArithmetic.h"
#include "quoddle/base/FileBytes.h"
#include "quoddle/base/Utf.h"
#include "quoddle/text/internal/SummedTree.h"
#include "quoddle/text/internal/TextChunk.h"

namespace quod {

using internal::By;
using internal::TextChunk;

struct TextStorage::Tree {
    internal::SummedTree<TextChunk> chunks;
    ChunkSizes sizes;
};

namespace {

using Chunks = std::vector<std::unique_ptr<TextChunk>>;

// Units that must stay in one chunk: a CR LF pair (so that a chunk's line ends are its own) and a
// surrogate pair (so that pieces handed to scans are whole characters).
bool isPair(char16_t first, char16_t second) {
    return (first == u'\r' && second == u'\n') ||
           ((first & 0xFC00) == 0xD800 && (second & 0xFC00) == 0xDC00);
}

// Cuts a stream of units into chunks of the target size without splitting a pair; the last
// chunk, when too short to stand alone, joins the one before it.
class ChunkBuilder {
  public:
    explicit ChunkBuilder(const TextStorage::ChunkSizes& sizes) : sizes_(sizes) {}

    [[nodiscard]] const TextStorage::ChunkSizes& sizes() const { return sizes_; }

    void append(std::u16string_view units) {
        // One unit beyond a cut must be known to see whether the cut splits a pair.
        const auto full = static_cast<std::size_t>(sizes_.target) + 1;
        while (!units.empty()) {
            const std::size_t take = std::min(units.size(), full + 1 - pending_.size());
            pending_.append(units.substr(0, take));
            units.remove_prefix(take);
            if (pending_.size() > full) {
                std::size_t cut = full - 1;
                if (isPair(pending_[cut - 1], pending_[cut])) ++cut;
                emit({pending_.data(), cut});
                pending_.erase(0, cut);
            }
        }
    }

    Chunks finish() {
        if (!chunks_.empty() && std::ssize(pending_) < sizes_.minimum) {
            const TextChunk& last = *chunks_.back();
            std::u16string joined(static_cast<std::size_t>(last.length()), u'\0');
            last.copyOut(0, last.length(), joined.data());
            pending_.insert(0, joined);
            chunks_.pop_back();
        }
        if (!pending_.empty()) emit(pending_);
        pending_.clear();
        return std::move(chunks_);
    }

  private:
    void emit(std::u16string_view units) { chunks_.push_back(std::make_unique<TextChunk>(units)); }

    TextStorage::ChunkSizes sizes_;
    std::u16string pending_;
    Chunks chunks_;
};

bool isContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Where to end a chunk of UTF-8 near `cut` so that decoding the pieces apart gives the units that
// decoding the whole would: before the lead byte of the sequence under the cut (a stray
// continuation byte stands alone, so one with three more before it is a border too), and never
// between a CR and its LF.
std::size_t utf8Border(std::string_view bytes, std::size_t start, std::size_t cut) {
    if (cut >= bytes.size()) return bytes.size();
    for (std::size_t back = 0; back <= 3 && cut - back > start; ++back) {
        if (!isContinuationByte(bytes[cut - back])) {
            cut -= back;
            break;
        }
    }
    if (bytes[cut - 1] == '\r' && bytes[cut] == '\n') ++cut;
    return cut;
}

}  // namespace

TextStorage::TextStorage() : TextStorage(std::u16string_view{}) {}

TextStorage::TextStorage(std::u16string_view text) : TextStorage(text, ChunkSizes{}) {}

TextStorage::TextStorage(std::u16string_view text, ChunkSizes sizes) {
    QUOD_PRECONDITION(sizes.minimum >= 1 && sizes.target >= 2 * sizes.minimum &&
                          sizes.maximum >= sizes.target + sizes.minimum + 1 &&
                          sizes.maximum <= TextChunk::capacityLimit,
                      "chunk sizes must leave room to split and join chunks");
    ChunkBuilder builder(sizes);
    builder.append(text);
    Chunks chunks = builder.finish();
    if (chunks.empty()) chunks.push_back(std::make_unique<TextChunk>());
    tree_ = std::make_unique<Tree>(Tree{internal::SummedTree<TextChunk>(std::move(chunks)), sizes});
}

TextStorage::TextStorage(std::unique_ptr<Tree> tree) : tree_(std::move(tree)) {}
TextStorage::TextStorage(TextStorage&& other) noexcept = default;
TextStorage& TextStorage::operator=(TextStorage&& other) noexcept = default;
TextStorage::~TextStorage() = default;

TextStorage TextStorage::fromUtf8(std::string_view bytes) {
    const ChunkSizes sizes;
    Chunks chunks;
    chunks.reserve(bytes.size() / static_cast<std::size_t>(sizes.target) + 1);
    std::vector<char16_t> units(static_cast<std::size_t>(sizes.maximum));
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t end =
            utf8Border(bytes, start, start + static_cast<std::size_t>(sizes.target));
        const std::string_view piece = bytes.substr(start, end - start);
        if (auto latin1 = TextChunk::fromMostlyLatin1Utf8(piece)) {
            chunks.push_back(std::make_unique<TextChunk>(std::move(*latin1)));
        } else {
            const auto decoded = internal::decodeUtf8(piece, units.data());
            chunks.push_back(std::make_unique<TextChunk>(
                std::u16string_view(units.data(), decoded.unitsWritten)));
        }
        start = end;
    }
    if (chunks.empty()) chunks.push_back(std::make_unique<TextChunk>());
    return TextStorage(
        std::make_unique<Tree>(Tree{internal::SummedTree<TextChunk>(std::move(chunks)), sizes}));
}

std::optional<TextStorage> TextStorage::fromUtf8File(const std::string& path) {
    const auto file = FileBytes::read(path);
    if (!file) return std::nullopt;
    const auto bytes = file->bytes();
    return fromUtf8({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

int64_t TextStorage::length() const {
    return tree_->chunks.total().units;
}

int64_t TextStorage::lineCount() const {
    return tree_->chunks.total().lines + 1;
}

std::u16string TextStorage::string() const {
    return substringWithRange({0, length()});
}

char16_t TextStorage::characterAtIndex(int64_t index) const {
    QUOD_PRECONDITION(index >= 0 && index < length(), "character index outside the text");
    const auto found = tree_->chunks.find(By::units, index);
    return found.leaf->at(index - found.before.units);
}

std::u16string TextStorage::substringWithRange(Range range) const {
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    std::u16string result(static_cast<std::size_t>(range.length), u'\0');
    tree_->chunks.forEachLeaf(
        By::units, range.location, range.end(),
        [&](const TextChunk& chunk, const internal::TreeMeasures& before) {
            const int64_t from = std::max(range.location, before.units);
            const int64_t to = std::min(range.end(), before.units + chunk.length());
            chunk.copyOut(from - before.units, to - from, result.data() + (from - range.location));
        });
    return result;
}

void TextStorage::forEachPiece(Range range,
                               const std::function<void(std::u16string_view)>& visit) const {
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    std::vector<char16_t> units;
    tree_->chunks.forEachLeaf(By::units, range.location, range.end(),
                              [&](const TextChunk& chunk, const internal::TreeMeasures& before) {
                                  const int64_t from = std::max(range.location, before.units);
                                  const int64_t to =
                                      std::min(range.end(), before.units + chunk.length());
                                  units.resize(static_cast<std::size_t>(to - from));
                                  chunk.copyOut(from - before.units, to - from, units.data());
                                  visit({units.data(), units.size()});
                              });
}

TextStorage TextStorage::storageWithRange(Range range) const {
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    Builder builder(*this);
    forEachPiece(range, [&](std::u16string_view piece) { builder.append(piece); });
    return builder.finish();
}

struct TextStorage::Builder::State {
    ChunkBuilder chunks;
};

TextStorage::Builder::Builder(const TextStorage& like)
    : state_(std::make_unique<State>(State{ChunkBuilder(like.tree_->sizes)})) {}
TextStorage::Builder::Builder(Builder&&) noexcept = default;
TextStorage::Builder& TextStorage::Builder::operator=(Builder&&) noexcept = default;
TextStorage::Builder::~Builder() = default;

void TextStorage::Builder::append(std::u16string_view units) {
    state_->chunks.append(units);
}

TextStorage TextStorage::Builder::finish() {
    Chunks chunks = state_->chunks.finish();
    // The tree always holds a chunk, empty when the text is.
    if (chunks.empty()) chunks.push_back(std::make_unique<TextChunk>());
    return TextStorage(std::make_unique<Tree>(
        Tree{internal::SummedTree<TextChunk>(std::move(chunks)), state_->chunks.sizes()}));
}

int64_t TextStorage::lineContaining(int64_t position) const {
    const auto found = tree_->chunks.find(By::units, position);
    return found.before.lines + found.leaf->linesEndingThrough(position - found.before.units);
}

int64_t TextStorage::lineIndexOfPosition(int64_t position) const {
    QUOD_PRECONDITION(position >= 0 && position <= length(), "position outside the text");
    return lineContaining(position);
}

int64_t TextStorage::startOfLine(int64_t line) const {
    QUOD_PRECONDITION(line >= 0 && line < lineCount(), "line number outside the text");
    if (line == 0) return 0;
    // Line k starts behind the k-th terminator.
    const auto found = tree_->chunks.find(By::lines, line - 1);
    return found.before.units +
           found.leaf->lineEnds()[static_cast<std::size_t>(line - 1 - found.before.lines)];
}

std::vector<int64_t> TextStorage::lineStarts() const {
    std::vector<int64_t> starts;
    starts.reserve(static_cast<std::size_t>(lineCount()));
    starts.push_back(0);
    tree_->chunks.forEachLeaf(By::units, 0, length(),
                              [&](const TextChunk& chunk, const internal::TreeMeasures& before) {
                                  for (const uint16_t end : chunk.lineEnds())
                                      starts.push_back(before.units + end);
                              });
    return starts;
}

int64_t TextStorage::endOfLine(int64_t line) const {
    return line + 1 < lineCount() ? startOfLine(line + 1) : length();
}

Range TextStorage::rangeOfLine(int64_t line) const {
    const int64_t start = startOfLine(line);
    return {start, endOfLine(line) - start};
}

int64_t TextStorage::terminatorLengthBefore(int64_t end, int64_t lineStart) const {
    if (end == lineStart || !isLineTerminator(characterAtIndex(end - 1))) return 0;
    const bool pair = end - 2 >= lineStart && characterAtIndex(end - 1) == u'\n' &&
                      characterAtIndex(end - 2) == u'\r';
    return pair ? 2 : 1;
}

LineBounds TextStorage::lineBoundsForRange(Range range) const {
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    const int64_t start = startOfLine(lineContaining(range.location));
    const int64_t last = range.length > 0 ? range.end() - 1 : range.location;
    if (last >= length()) return {start, length(), length()};
    const int64_t lastLine = lineContaining(last);
    const int64_t end = endOfLine(lastLine);
    return {start, end, end - terminatorLengthBefore(end, startOfLine(lastLine))};
}

LineBounds TextStorage::paragraphBoundsForRange(Range range) const {
    // Paragraph ends are a subset of line ends: walk whole lines, asking only about terminators.
    const LineBounds lines = lineBoundsForRange(range);
    int64_t firstLine = lineContaining(lines.start);
    while (firstLine > 0) {
        const int64_t previousEnd = startOfLine(firstLine);
        if (isParagraphTerminator(characterAtIndex(previousEnd - 1))) break;
        --firstLine;
    }
    int64_t end = lines.end;
    int64_t contentsEnd = lines.contentsEnd;
    while (end > contentsEnd && !isParagraphTerminator(characterAtIndex(end - 1))) {
        const int64_t nextLine = lineContaining(end);
        end = endOfLine(nextLine);
        contentsEnd = end - terminatorLengthBefore(end, startOfLine(nextLine));
    }
    return {startOfLine(firstLine), end, contentsEnd};
}

Range TextStorage::lineRangeForRange(Range range) const {
    return lineBoundsForRange(range).range();
}

void TextStorage::getLineStart(int64_t* start, int64_t* end, int64_t* contentsEnd,
                               Range range) const {
    const LineBounds bounds = lineBoundsForRange(range);
    if (start != nullptr) *start = bounds.start;
    if (end != nullptr) *end = bounds.end;
    if (contentsEnd != nullptr) *contentsEnd = bounds.contentsEnd;
}

template <typename Feed>
void TextStorage::replaceChunks(Range range, int64_t insertedLength, const Feed& feedInserted) {
    auto& chunks = tree_->chunks;
    const ChunkSizes& sizes = tree_->sizes;
    const int64_t total = length();
    // The chunks around the change are cut again. They reach one unit beyond it on each side, so
    // that the borders of the new chunks with the old ones lie between units the change leaves
    // alone, which never split a pair because they did not before.
    int64_t from = 0;
    int64_t to = total;
    if (total > 0) {
        from = chunks.find(By::units, std::max<int64_t>(range.location - 1, 0)).before.units;
        const auto last = chunks.find(By::units, std::min(range.end() + 1, total) - 1);
        to = last.before.units + last.leaf->length();
        // A stretch too short for a chunk of its own takes a neighbour along.
        if ((to - from) - range.length + insertedLength < sizes.minimum) {
            if (from > 0) {
                from = chunks.find(By::units, from - 1).before.units;
            } else if (to < total) {
                const auto next = chunks.find(By::units, to);
                to = next.before.units + next.leaf->length();
            }
        }
    }
    ChunkBuilder builder(sizes);
    const auto append = [&builder](std::u16string_view piece) { builder.append(piece); };
    forEachPiece({from, range.location - from}, append);
    feedInserted(builder);
    forEachPiece({range.end(), to - range.end()}, append);
    Chunks rebuilt = builder.finish();
    if (rebuilt.empty() && from == 0 && to == total)
        rebuilt.push_back(std::make_unique<TextChunk>());
    chunks.replaceLeaves(By::units, from, to, std::move(rebuilt));
}

void TextStorage::replaceCharactersInRange(Range range, std::u16string_view text) {
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    const int64_t inserted = std::ssize(text);
    const int64_t delta = checkedSubtract(inserted, range.length);
    const int64_t total = length();
    QUOD_PRECONDITION(checkedAdd(total, delta) >= 0, "negative text length");

    // Typing: an edit inside one chunk that leaves its first and last units alone (or has no
    // neighbour there) and keeps it within its sizes changes that chunk in place.
    const ChunkSizes& sizes = tree_->sizes;
    const bool inPlace =
        inserted <= sizes.maximum &&
        tree_->chunks.modifyLeaf(
            By::units, range.location, [&](TextChunk& chunk, const internal::TreeMeasures& before) {
                const int64_t start = before.units;
                const int64_t end = start + chunk.length();
                const int64_t newLength = chunk.length() + delta;
                if (range.end() > end || (range.location == start && start > 0) ||
                    (range.end() == end && end < total) || newLength > sizes.maximum ||
                    (newLength < sizes.minimum && chunk.length() != total)) {
                    return false;
                }
                chunk.replace(range.location - start, range.length, text);
                return true;
            });
    if (!inPlace) {
        replaceChunks(range, inserted, [text](ChunkBuilder& builder) { builder.append(text); });
    }
    didProcessEditing.emit(TextStorageEdit{{range.location, inserted}, delta});
}

TextStorage TextStorage::exchangeCharactersInRange(Range range, TextStorage&& text) {
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    // Trading chunks pays when the text around the range is no longer than the range: that text
    // is copied over into `text`, the two trade their chunks whole, and the old text is cut down
    // to the range. Otherwise copying the range out costs less.
    const int64_t around = length() - range.length;
    if (around > range.length || !(tree_->sizes == text.tree_->sizes)) {
        TextStorage replaced = storageWithRange(range);
        replaceCharactersInRange(range, text);
        return replaced;
    }
    const int64_t inserted = text.length();
    text.replaceCharactersInRange({0, 0}, substringWithRange({0, range.location}));
    text.replaceCharactersInRange({text.length(), 0},
                                  substringWithRange({range.end(), length() - range.end()}));
    std::swap(tree_, text.tree_);
    text.replaceCharactersInRange({range.end(), text.length() - range.end()}, u"");
    text.replaceCharactersInRange({0, range.location}, u"");
    didProcessEditing.emit(
        TextStorageEdit{{range.location, inserted}, checkedSubtract(inserted, range.length)});
    return std::move(text);
}

void TextStorage::replaceCharactersInRange(Range range, const TextStorage& text) {
    const int64_t inserted = text.length();
    if (inserted <= tree_->sizes.maximum) {
        replaceCharactersInRange(range, text.string());
        return;
    }
    QUOD_PRECONDITION(range.isInside(length()), "range outside the text");
    const int64_t delta = checkedSubtract(inserted, range.length);
    replaceChunks(range, inserted, [&text](ChunkBuilder& builder) {
        text.forEachPiece({0, text.length()},
                          [&builder](std::u16string_view piece) { builder.append(piece); });
    });
    didProcessEditing.emit(TextStorageEdit{{range.location, inserted}, delta});
}

}  // namespace quod
