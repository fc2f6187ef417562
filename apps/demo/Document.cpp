#include "demo/Document.h"

#include "quoddle/base/FileBytes.h"
#include "quoddle/base/FileReplacement.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/strings/LineEnding.h"
#include "quoddle/strings/PathStrings.h"
#include "quoddle/text/DecodedText.h"

namespace quod::demo {
namespace {

bool fail(std::string* error, std::string message) {
    if (error != nullptr) *error = std::move(message);
    return false;
}

std::string encodingName(EncodingNumber encoding) {
    const std::string_view name = localizedEncodingName(encoding);
    return name.empty() ? "its encoding" : std::string(name);
}

}  // namespace

Document::Document() : Document({}, std::make_shared<QuodTextView>(), Encodings::utf8, {}) {}

Document::Document(std::string path, std::shared_ptr<QuodTextView> view, EncodingNumber encoding,
                   Data byteOrderMark)
    : path_(std::move(path)),
      view_(std::move(view)),
      encoding_(encoding),
      byteOrderMark_(std::move(byteOrderMark)),
      textChanged_(view_->textDidChange.connect([this] { modified_ = true; })) {}

std::unique_ptr<Document> Document::open(const std::string& path, std::string* error) {
    std::error_code reason;
    const auto file = FileBytes::read(path, &reason);
    if (!file) {
        fail(error, path + ": " + reason.message());
        return nullptr;
    }
    const EncodingNumber preferred =
        Defaults::alwaysUseTextEncoding.get()
            ? static_cast<EncodingNumber>(Defaults::encodingsPopUp.get())
            : Encodings::none;
    auto decoded = decodeDocument(file->bytes(), preferred);
    if (!decoded) {
        fail(error, path + ": the bytes are in no encoding that decodes them whole");
        return nullptr;
    }
    auto view = std::make_shared<QuodTextView>(std::move(decoded->storage));
    return std::unique_ptr<Document>(
        new Document(path, std::move(view), decoded->encoding, std::move(decoded->byteOrderMark)));
}

bool Document::save(std::string* error) {
    if (path_.empty()) return fail(error, Localize::couldntSaveDocument());
    return saveAs(path_, error);
}

bool Document::saveAs(const std::string& path, std::string* error) {
    std::optional<TextStorage> converted;
    if (Defaults::convertLineEndings.get()) {
        if (const auto ending = lineEndingFromRawValue(Defaults::lineEndings.get())) {
            converted.emplace(Text::convert(view_->string(), *ending));
        }
    }
    const TextStorage& text = converted ? *converted : view_->textStorage();

    std::error_code reason;
    auto file = FileReplacement::replacing(path, &reason);
    if (!file) return fail(error, path + ": " + reason.message());
    bool written = true;
    const bool encodable =
        writeDocument(text, encoding_, byteOrderMark_, [&](std::span<const std::uint8_t> bytes) {
            written = written && file->write(bytes, &reason);
        });
    if (!encodable) {
        return fail(error, path + ": the text has characters that " + encodingName(encoding_) +
                               " cannot hold");
    }
    if (!written || !file->commit(&reason)) return fail(error, path + ": " + reason.message());
    path_ = path;
    modified_ = false;
    return true;
}

std::string Document::displayName() const {
    return path_.empty() ? std::string("Untitled") : lastPathComponent(path_);
}

}  // namespace quod::demo
