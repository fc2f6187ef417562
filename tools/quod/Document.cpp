#include "Document.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "CommandLine.h"
#include "Failure.h"
#include "quoddle/strings/EncodingConversion.h"
#include "quoddle/strings/EncodingDetection.h"
#include "quoddle/strings/IanaCharsetNames.h"

namespace quod::tool {
namespace {

[[noreturn]] void failWith(const std::string& name, const std::error_code& error) {
    throw Failure(name + ": " + error.message());
}

void writeAll(int descriptor, std::span<const std::uint8_t> bytes, const std::string& name) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0) {
            if (errno == EINTR) continue;
            throw Failure(name + ": " + std::strerror(errno));
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

}  // namespace

InputBytes InputBytes::read(const std::string& path) {
    return open(path, FileBytes::read);
}

InputBytes InputBytes::readInWindows(const std::string& path) {
    return open(path, FileBytes::readInWindows);
}

InputBytes InputBytes::open(const std::string& path, FileReader readFile) {
    const bool standardInput = path == "-";
    std::string displayName = standardInput ? "standard input" : path;
    std::error_code error;
    auto file =
        standardInput ? FileBytes::readDescriptor(STDIN_FILENO, &error) : readFile(path, &error);
    if (!file) failWith(displayName, error);
    return InputBytes(std::move(displayName), std::move(*file));
}

DecodedText decodeDocument(std::span<const std::uint8_t> bytes, const std::string& displayName) {
    if (auto decoded = quod::decodeDocument(bytes)) return std::move(*decoded);
    // Only to say why: the framework tried the declared encoding and then this one.
    const EncodingNumber detected = Text::detectEncoding(bytes);
    if (detected == Encodings::none) {
        throw Failure(displayName + ": cannot tell which encoding the bytes are in");
    }
    throw Failure(displayName + ": the bytes do not decode as " + encodingDisplayName(detected));
}

DecodedText decodeDocumentAs(std::span<const std::uint8_t> bytes, EncodingNumber encoding,
                             const std::string& displayName) {
    if (auto decoded = quod::decodeDocumentAs(bytes, encoding)) return std::move(*decoded);
    throw Failure(displayName + ": the bytes do not decode as " + encodingDisplayName(encoding));
}

EncodingNumber encodingNamed(const std::string& name) {
    const EncodingNumber iana = encodingForIanaCharsetName(name);
    if (iana != Encodings::none && iana != Encodings::unknownCharsetName && isConvertible(iana)) {
        return iana;
    }
    for (const StringEncoding& listed : Misc::allStringEncodings()) {
        const auto encoding = static_cast<EncodingNumber>(listed.tag);
        if (equalIgnoringAsciiCase(listed.name, name) && isConvertible(encoding)) return encoding;
    }
    throw UsageError("--encoding: no encoding named '" + name +
                     "' (an IANA name such as ISO-8859-1, or a name as quod encoding prints it)");
}

void writeDocument(const TextStorage& text, const DecodedText& document, Output& output,
                   const std::string& displayName) {
    const bool written = quod::writeDocument(
        text, document.encoding, document.byteOrderMark,
        [&output](std::span<const std::uint8_t> bytes) { output.write(bytes); });
    if (!written) {
        throw Failure(displayName + ": the result has characters that " +
                      encodingDisplayName(document.encoding) + " cannot hold");
    }
}

std::string encodingDisplayName(EncodingNumber encoding) {
    if (encoding == Encodings::none) return "no encoding determined";
    if (encoding == Encodings::unknownCharsetName) return "an unknown charset name";
    const std::string_view name = localizedEncodingName(encoding);
    if (name.empty()) return "an encoding without a name";
    return std::string(name);
}

void writeStandardOutput(std::string_view text) {
    writeAll(STDOUT_FILENO,
             std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()),
             "standard output");
}

Output Output::standardOutput() {
    return Output("standard output", std::nullopt);
}

Output Output::replacing(const std::string& path) {
    std::error_code error;
    auto replacement = FileReplacement::replacing(path, &error);
    if (!replacement) failWith(path, error);
    return Output(path, std::move(replacement));
}

void Output::write(std::span<const std::uint8_t> bytes) {
    if (!replacement_) {
        writeAll(STDOUT_FILENO, bytes, displayName_);
        return;
    }
    std::error_code error;
    if (!replacement_->write(bytes, &error)) failWith(displayName_, error);
}

void Output::write(std::string_view text) {
    write(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

void Output::commit() {
    std::error_code error;
    if (replacement_ && !replacement_->commit(&error)) failWith(displayName_, error);
}

}  // namespace quod::tool
