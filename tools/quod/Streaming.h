// Text commands that go through a file window by window, so that a file of any size takes a few
// megabytes of memory and its result starts to come out at once.
//
// A command streams when its result over the whole text is its results over consecutive pieces of
// the text, joined (line endings, case changes, XML escaping, counting), and when a first pass over
// the bytes settles that the document is UTF-8 (Text::EncodingScan): what a document in another
// encoding decodes to, or whether it decodes at all, only all of its bytes can tell, and those
// documents go the whole-text way. The windows of a mapped file are let go once read. Sorting,
// which needs all the text at once, still works on its bytes without decoding them.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Document.h"
#include "Progress.h"
#include "quoddle/strings/EncodingDetection.h"

namespace quod::tool {

// A command's work on UTF-8 text that arrives in pieces.
class PieceRewrite {
  public:
    // Where pieces may be cut. A rewrite that only looks at single bytes takes them cut anywhere;
    // one that decodes them wants whole characters; one whose units depend on their neighbours
    // (case mapping, word counting across a cut) wants whole lines.
    enum class Cut { anywhere, characterStart, afterLineFeed };

    virtual ~PieceRewrite() = default;
    [[nodiscard]] virtual Cut cut() const = 0;
    // Appends the output for `piece` to `out`. Pieces are views of the input's bytes, which stay
    // readable at the same addresses until the run ends (pages let go come back when read).
    virtual void rewrite(std::string_view piece, std::string& out) = 0;
    // Appends what the end of the text settles.
    virtual void finish(std::string& out) = 0;
};

// Runs `rewrite` over the input's text in windows and writes what it makes to `output`; a rewrite
// of the text (not a report) gets the input's byte-order mark in front, as writing a document
// does. Answers false, having written nothing, when the input is not settled as UTF-8.
[[nodiscard]] bool runInWindows(const InputBytes& input, PieceRewrite& rewrite, bool isReport,
                                Output& output, Progress& progress);

// Runs all of the input's bytes through an encoding scan, window by window, letting each go once
// read unless `letGo` is false.
[[nodiscard]] Text::EncodingScan scanInWindows(const InputBytes& input, Progress& progress,
                                               bool letGo = true);

// A command's work on the whole UTF-8 text at once, for what needs all of it but need not decode
// it (sorting): it gets the text and a writer for its result.
using WholeRewrite =
    std::function<void(std::string_view text, const std::function<void(std::string_view)>& write)>;

// Runs `rewrite` on the input's text after its byte-order mark, which goes out first, as writing a
// document does. Answers false, having written nothing, when the input is not settled as UTF-8.
[[nodiscard]] bool runOnWholeUtf8(const InputBytes& input, const WholeRewrite& rewrite,
                                  Output& output, Progress& progress);

}  // namespace quod::tool
