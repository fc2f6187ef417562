// Files in and out of the tool: reading bytes, deciding their encoding, decoding them into the
// text storage of a view, and writing the result back in the same encoding.
//
// The encoding is decided the way a host opening the file decides it: what the file declares
// (`Text::guessEncoding`) and, when that says nothing or names an encoding the bytes do not decode
// in, what the bytes suggest (`Text::detectEncoding`). Decoding is strict: bytes that do not decode
// are a Failure, never replacement characters, so a file is never silently damaged. A byte-order
// mark is kept and written back.
//
// Output is built whole before a byte is written. Standard output then gets it in one go; an
// in-place file gets a temporary file beside it that is renamed over it, so the original stays as
// it was when anything fails.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "quoddle/strings/StringEncoding.h"
#include "quoddle/text/TextStorage.h"

namespace quod::tool {

// The bytes of one input: a read-only mapping of a regular file, or what a pipe delivered.
class InputBytes {
  public:
    // "-" is standard input. Throws Failure with the system's reason when the file cannot be read.
    [[nodiscard]] static InputBytes read(const std::string& path);

    InputBytes(InputBytes&& other) noexcept;
    InputBytes& operator=(InputBytes&&) = delete;
    ~InputBytes();

    [[nodiscard]] std::span<const std::uint8_t> bytes() const;
    // The name to use in messages: the path, or "standard input".
    [[nodiscard]] const std::string& displayName() const { return displayName_; }

  private:
    InputBytes() = default;

    std::string displayName_;
    void* mapping_ = nullptr;
    std::size_t mappedSize_ = 0;
    std::vector<std::uint8_t> readBytes_;
};

struct DecodedText {
    TextStorage storage;
    EncodingNumber encoding = Encodings::utf8;
    std::vector<std::uint8_t> byteOrderMark;  // as it stood in the input, written back unchanged
};

// Empty input is empty UTF-8 text. Throws Failure naming `displayName` when no encoding fits.
[[nodiscard]] DecodedText decodeDocument(std::span<const std::uint8_t> bytes,
                                         const std::string& displayName);

// Where a result goes: standard output, or a temporary file beside the file it will replace.
class Output {
  public:
    [[nodiscard]] static Output standardOutput();
    // Refuses a read-only file (even for root, for whom the rename alone would succeed) before
    // any work is done, then opens a temporary file in the same folder.
    [[nodiscard]] static Output replacing(const std::string& path);

    Output(Output&& other) noexcept;
    Output& operator=(Output&&) = delete;
    // Removes the temporary file unless commit() ran.
    ~Output();

    void write(std::span<const std::uint8_t> bytes);
    void write(std::string_view text);
    // In place: gives the temporary file the original's permissions, flushes it and renames it
    // over the original.
    void commit();

  private:
    Output() = default;

    int descriptor_ = 1;
    std::string displayName_ = "standard output";
    std::string target_;
    std::string temporary_;
    unsigned permissions_ = 0;
    unsigned owner_ = 0;
    unsigned group_ = 0;
};

// Writes the text in the document's encoding, mark first. Throws Failure before writing anything
// when a character cannot be written in that encoding (an upper-cased Latin-1 text is fine, a
// transform to Greek is not).
void writeDocument(const TextStorage& text, const DecodedText& document, Output& output,
                   const std::string& displayName);

// "Western (ISO Latin 1)" and the like; words for 0 and for an unknown declared charset.
[[nodiscard]] std::string encodingDisplayName(EncodingNumber encoding);

void writeStandardOutput(std::string_view text);

}  // namespace quod::tool
