// Files in and out of the tool: the framework's document decoding and writing (DecodedText.h)
// with the tool's way of failing, a Failure that names the file.
//
// A result is built whole before a byte is written, or, for the commands that go through a file
// window by window (Streaming.h), only once nothing but the writing itself can fail. An in-place
// file is replaced whole (FileReplacement.h), so the original stays as it was when anything fails.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "quoddle/base/FileBytes.h"
#include "quoddle/base/FileReplacement.h"
#include "quoddle/strings/StringEncoding.h"
#include "quoddle/text/DecodedText.h"

namespace quod::tool {

// The bytes of one input: a file (FileBytes: mapped when it can be) or what a pipe delivered.
class InputBytes {
  public:
    // "-" is standard input. Throws Failure with the system's reason when the file cannot be read.
    [[nodiscard]] static InputBytes read(const std::string& path);
    // As read, for going through the bytes window by window (FileBytes::readInWindows).
    [[nodiscard]] static InputBytes readInWindows(const std::string& path);

    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return file_.bytes(); }
    // Lets the memory of bytes()[offset, offset + length) go (FileBytes::release).
    void release(std::size_t offset, std::size_t length) const { file_.release(offset, length); }
    // Brings them in at once before they are read (FileBytes::prefetch).
    void prefetch(std::size_t offset, std::size_t length) const { file_.prefetch(offset, length); }
    // The name to use in messages: the path, or "standard input".
    [[nodiscard]] const std::string& displayName() const { return displayName_; }

  private:
    using FileReader = std::optional<FileBytes> (*)(const std::string&, std::error_code*);
    [[nodiscard]] static InputBytes open(const std::string& path, FileReader readFile);
    InputBytes(std::string displayName, FileBytes file)
        : displayName_(std::move(displayName)), file_(std::move(file)) {}

    std::string displayName_;
    FileBytes file_;
};

// Empty input is empty UTF-8 text. Throws Failure naming `displayName` when no encoding fits.
[[nodiscard]] DecodedText decodeDocument(std::span<const std::uint8_t> bytes,
                                         const std::string& displayName);
// The bytes in the encoding the user named; throws Failure when they do not decode in it.
[[nodiscard]] DecodedText decodeDocumentAs(std::span<const std::uint8_t> bytes,
                                           EncodingNumber encoding, const std::string& displayName);
// The encoding a user names with --encoding: an IANA charset name ("ISO-8859-1", "utf-16le") or a
// name as the encoding list shows it ("Western (Windows Latin 1)"), in any letter case. Throws
// UsageError for a name of no encoding the tool can read and write.
[[nodiscard]] EncodingNumber encodingNamed(const std::string& name);

// Where a result goes: standard output, or a FileReplacement of the file it will replace.
class Output {
  public:
    [[nodiscard]] static Output standardOutput();
    // Refuses what cannot be replaced (a read-only file, a folder) before any work is done.
    [[nodiscard]] static Output replacing(const std::string& path);

    void write(std::span<const std::uint8_t> bytes);
    void write(std::string_view text);
    // In place: puts the new contents in place of the original; before, it stays as it was.
    void commit();

  private:
    Output(std::string displayName, std::optional<FileReplacement> replacement)
        : displayName_(std::move(displayName)), replacement_(std::move(replacement)) {}

    std::string displayName_;
    std::optional<FileReplacement> replacement_;  // none: standard output
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
