// One document of the demo: a core text view over a file's text, and what it takes to write the
// text back as the file had it.
//
// Opening decodes the file the framework's way (DecodedText.h): in the encoding the file declares
// if its bytes decode in it, else in the detected one, remembering the byte-order mark. With
// "AlwaysUseTextEncoding" on, the encoding numbered "EncodingsPopUp" comes first. Saving
// writes the text back in that encoding with that mark, replacing the file whole
// (FileReplacement.h), so an unchanged document saves byte for byte and a failed save leaves the
// file as it was.
//
// Line endings are saved as they stand unless "ConvertLineEndings" is on; then every CR LF, CR
// and LF is written as "LineEndings" says (0 LF, 1 CR LF, 2 CR; any other value converts
// nothing). Only the saved bytes are converted: the text on screen and its undo history stay as
// they were, so turning the preference off again loses nothing.
//
// Failures are quiet: no document, or false, with a sentence for the user in `error`.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "quoddle/base/Signal.h"
#include "quoddle/strings/Data.h"
#include "quoddle/strings/StringEncoding.h"
#include "quoddle/text/QuodTextView.h"

namespace quod::demo {

class Document {
  public:
    // An untitled, empty UTF-8 document.
    Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    [[nodiscard]] static std::unique_ptr<Document> open(const std::string& path,
                                                        std::string* error);

    // Writes to the document's own file; an untitled document has none and fails.
    [[nodiscard]] bool save(std::string* error);
    // Writes to `path` (created if absent), which becomes the document's file.
    [[nodiscard]] bool saveAs(const std::string& path, std::string* error);

    [[nodiscard]] const std::shared_ptr<QuodTextView>& textView() const { return view_; }
    // Empty for an untitled document.
    [[nodiscard]] const std::string& path() const { return path_; }
    // "Untitled" or the file's name.
    [[nodiscard]] std::string displayName() const;
    [[nodiscard]] EncodingNumber encoding() const { return encoding_; }
    // Changed since it was opened or last saved.
    [[nodiscard]] bool isModified() const { return modified_; }

  private:
    Document(std::string path, std::shared_ptr<QuodTextView> view, EncodingNumber encoding,
             Data byteOrderMark);

    std::string path_;
    std::shared_ptr<QuodTextView> view_;
    EncodingNumber encoding_;
    Data byteOrderMark_;
    bool modified_ = false;
    Connection textChanged_;
};

}  // namespace quod::demo
