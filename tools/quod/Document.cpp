#include "Document.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "Failure.h"
#include "quoddle/base/Utf.h"
#include "quoddle/strings/EncodingConversion.h"
#include "quoddle/strings/EncodingDetection.h"
#include "quoddle/strings/Utf8Scan.h"

namespace quod::tool {
namespace {

[[noreturn]] void failWithSystemError(const std::string& name, int error) {
    throw Failure(name + ": " + std::strerror(error));
}

class FileDescriptor {
  public:
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    [[nodiscard]] int get() const { return descriptor_; }

  private:
    int descriptor_;
};

std::vector<std::uint8_t> readAll(int descriptor, const std::string& name) {
    std::vector<std::uint8_t> bytes;
    std::array<std::uint8_t, 1 << 16> chunk{};
    for (;;) {
        const ssize_t count = ::read(descriptor, chunk.data(), chunk.size());
        if (count == 0) return bytes;
        if (count < 0) {
            if (errno == EINTR) continue;
            failWithSystemError(name, errno);
        }
        bytes.insert(bytes.end(), chunk.begin(), chunk.begin() + count);
    }
}

void writeAll(int descriptor, std::span<const std::uint8_t> bytes, const std::string& name) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0) {
            if (errno == EINTR) continue;
            failWithSystemError(name, errno);
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

// The marks that survive decoding only as knowledge that they were there. The byte-order-neutral
// UTF-16 and UTF-32 are missing on purpose: encodeText writes their mark itself.
std::span<const std::uint8_t> byteOrderMarkOf(EncodingNumber encoding) {
    static constexpr std::uint8_t utf8[] = {0xEF, 0xBB, 0xBF};
    static constexpr std::uint8_t utf16LittleEndian[] = {0xFF, 0xFE};
    static constexpr std::uint8_t utf16BigEndian[] = {0xFE, 0xFF};
    static constexpr std::uint8_t utf32LittleEndian[] = {0xFF, 0xFE, 0x00, 0x00};
    static constexpr std::uint8_t utf32BigEndian[] = {0x00, 0x00, 0xFE, 0xFF};
    switch (encoding) {
        case Encodings::utf8:
            return utf8;
        case Encodings::utf16LittleEndian:
            return utf16LittleEndian;
        case Encodings::utf16BigEndian:
            return utf16BigEndian;
        case Encodings::utf32LittleEndian:
            return utf32LittleEndian;
        case Encodings::utf32BigEndian:
            return utf32BigEndian;
        default:
            return {};
    }
}

// `knownWellFormed`: the detectors answer UTF-8 only for well-formed bytes, except for a file
// that starts with the UTF-8 mark, so a second scan of a large file is spared.
std::optional<DecodedText> decodeAs(std::span<const std::uint8_t> bytes, EncodingNumber encoding,
                                    bool knownWellFormed) {
    DecodedText decoded;
    decoded.encoding = encoding;
    const auto mark = byteOrderMarkOf(encoding);
    if (!mark.empty() && bytes.size() >= mark.size() &&
        std::equal(mark.begin(), mark.end(), bytes.begin())) {
        decoded.byteOrderMark.assign(mark.begin(), mark.end());
    }
    if (encoding == Encodings::utf8) {
        // Straight into the storage, once the bytes are known to be well-formed: the decoder's
        // replacement characters must never come into play.
        const auto text = bytes.subspan(decoded.byteOrderMark.size());
        const bool wellFormed = (knownWellFormed && decoded.byteOrderMark.empty()) ||
                                internal::scanUtf8(text).wellFormed;
        if (!wellFormed) return std::nullopt;
        decoded.storage =
            TextStorage::fromUtf8({reinterpret_cast<const char*>(text.data()), text.size()});
        return decoded;
    }
    if (!isConvertible(encoding)) return std::nullopt;
    auto text = decodeText(bytes, encoding);
    if (!text) return std::nullopt;
    decoded.storage = TextStorage(*text);
    return decoded;
}

}  // namespace

InputBytes InputBytes::read(const std::string& path) {
    InputBytes input;
    if (path == "-") {
        input.displayName_ = "standard input";
        input.readBytes_ = readAll(STDIN_FILENO, input.displayName_);
        return input;
    }
    input.displayName_ = path;
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0) failWithSystemError(path, errno);
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) failWithSystemError(path, errno);
    if (S_ISDIR(status.st_mode)) failWithSystemError(path, EISDIR);
    if (S_ISREG(status.st_mode) && status.st_size > 0) {
        // A mapping spares copying a large file before it is decoded.
        const auto size = static_cast<std::size_t>(status.st_size);
        void* mapping = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file.get(), 0);
        if (mapping != MAP_FAILED) {
            ::madvise(mapping, size, MADV_SEQUENTIAL);
            input.mapping_ = mapping;
            input.mappedSize_ = size;
            return input;
        }
    }
    input.readBytes_ = readAll(file.get(), path);
    return input;
}

InputBytes::InputBytes(InputBytes&& other) noexcept
    : displayName_(std::move(other.displayName_)),
      mapping_(std::exchange(other.mapping_, nullptr)),
      mappedSize_(std::exchange(other.mappedSize_, 0)),
      readBytes_(std::move(other.readBytes_)) {}

InputBytes::~InputBytes() {
    if (mapping_ != nullptr) ::munmap(mapping_, mappedSize_);
}

std::span<const std::uint8_t> InputBytes::bytes() const {
    if (mapping_ != nullptr) return {static_cast<const std::uint8_t*>(mapping_), mappedSize_};
    return readBytes_;
}

DecodedText decodeDocument(std::span<const std::uint8_t> bytes, const std::string& displayName) {
    if (bytes.empty()) return {};
    const EncodingNumber declared = Text::guessEncoding(bytes);
    if (declared != Encodings::none) {
        if (auto decoded = decodeAs(bytes, declared, true)) return std::move(*decoded);
    }
    const EncodingNumber detected = Text::detectEncoding(bytes);
    if (detected == Encodings::none) {
        throw Failure(displayName + ": cannot tell which encoding the bytes are in");
    }
    if (detected != declared) {
        if (auto decoded = decodeAs(bytes, detected, true)) return std::move(*decoded);
    }
    throw Failure(displayName + ": the bytes do not decode as " + encodingDisplayName(detected));
}

void writeDocument(const TextStorage& text, const DecodedText& document, Output& output,
                   const std::string& displayName) {
    if (document.encoding != Encodings::utf8) {
        // Encoded whole first, so that a character the encoding lacks stops the command before
        // a byte is written.
        const auto encoded = encodeText(text.string(), document.encoding);
        if (!encoded) {
            throw Failure(displayName + ": the result has characters that " +
                          encodingDisplayName(document.encoding) + " cannot hold");
        }
        output.write(document.byteOrderMark);
        output.write(*encoded);
        return;
    }
    // UTF-8 cannot fail, so it goes out in slices: a copy of a large text in UTF-16 and another
    // in UTF-8 would cost more than all the rest of a command.
    output.write(document.byteOrderMark);
    constexpr int64_t slice = 1 << 20;
    for (int64_t start = 0; start < text.length();) {
        int64_t end = std::min(text.length(), start + slice);
        // A surrogate pair stays in one slice, or the encoder would see two unpaired halves.
        if (end < text.length() && (text.characterAtIndex(end - 1) & 0xFC00) == 0xD800) --end;
        output.write(toUtf8(text.substringWithRange({start, end - start})));
        start = end;
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
    return {};
}

Output Output::replacing(const std::string& path) {
    // Through a symbolic link to the file itself, so the link stays a link.
    char resolved[PATH_MAX];
    if (::realpath(path.c_str(), resolved) == nullptr) failWithSystemError(path, errno);
    Output output;
    output.displayName_ = path;
    output.target_ = resolved;
    struct stat status {};
    if (::stat(output.target_.c_str(), &status) != 0) failWithSystemError(path, errno);
    if (!S_ISREG(status.st_mode)) {
        throw Failure(path + ": only a regular file can be changed in place");
    }
    if ((status.st_mode & 0222) == 0 || ::access(output.target_.c_str(), W_OK) != 0) {
        throw Failure(path + ": the file is read-only");
    }
    output.permissions_ = status.st_mode & 07777;
    output.owner_ = status.st_uid;
    output.group_ = status.st_gid;
    const std::size_t slash = output.target_.rfind('/');
    std::string temporary = output.target_.substr(0, slash + 1) + "." +
                            output.target_.substr(slash + 1) + ".quod-XXXXXX";
    const int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) failWithSystemError(path, errno);
    output.descriptor_ = descriptor;
    output.temporary_ = std::move(temporary);
    return output;
}

Output::Output(Output&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      displayName_(std::move(other.displayName_)),
      target_(std::move(other.target_)),
      temporary_(std::exchange(other.temporary_, {})),
      permissions_(other.permissions_),
      owner_(other.owner_),
      group_(other.group_) {}

Output::~Output() {
    if (temporary_.empty()) return;
    if (descriptor_ >= 0) ::close(descriptor_);
    ::unlink(temporary_.c_str());
}

void Output::write(std::span<const std::uint8_t> bytes) {
    writeAll(descriptor_, bytes, displayName_);
}

void Output::write(std::string_view text) {
    write(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

void Output::commit() {
    if (temporary_.empty()) return;
    if (::fchmod(descriptor_, permissions_) != 0) failWithSystemError(displayName_, errno);
    // Keeping the owner only works for root; anyone else already owns what they may rename.
    [[maybe_unused]] const int kept = ::fchown(descriptor_, owner_, group_);
    if (::fsync(descriptor_) != 0) failWithSystemError(displayName_, errno);
    // A failing close is reported: some file systems only report write errors there.
    const int closed = ::close(std::exchange(descriptor_, -1));
    if (closed != 0) failWithSystemError(displayName_, errno);
    if (::rename(temporary_.c_str(), target_.c_str()) != 0) {
        failWithSystemError(displayName_, errno);
    }
    temporary_.clear();
}

}  // namespace quod::tool
