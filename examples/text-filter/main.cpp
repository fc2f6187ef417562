// text-filter: trims the trailing whitespace of every line of a file and writes the result, in
// the file's own encoding, to another file.
//
//     text-filter INPUT OUTPUT
//
// It also upper-cases the text and undoes that again: each Text operation is one undo step, so
// the undo takes back the upper-casing and nothing else.
#include <iostream>

#include "quoddle/base/FileBytes.h"
#include "quoddle/base/FileReplacement.h"
#include "quoddle/text/DecodedText.h"
#include "quoddle/text/LineOperations.h"
#include "quoddle/text/QuodTextView.h"
#include "quoddle/text/SelectionRewrites.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: text-filter INPUT OUTPUT\n";
        return 2;
    }
    const auto file = quod::FileBytes::read(argv[1]);
    auto document = file ? quod::decodeDocument(file->bytes()) : std::nullopt;
    if (!document) {
        std::cerr << "text-filter: cannot read " << argv[1] << " as text\n";
        return 1;
    }

    quod::QuodTextView view(std::move(document->storage));
    view.selectAll();
    quod::Text::removeNeedlessWhitespace(view);
    view.selectAll();
    quod::Text::uppercase(view);
    view.undo();

    // Written whole or not at all, never readable by others before it is complete.
    std::error_code error;
    auto out = quod::FileReplacement::replacing(argv[2], &error);
    bool written = out.has_value();
    const bool encoded =
        out &&
        quod::writeDocument(view.textStorage(), document->encoding, document->byteOrderMark,
                            [&](auto bytes) { written = written && out->write(bytes, &error); });
    if (!encoded || !written || !out->commit(&error)) {
        std::cerr << "text-filter: cannot write " << argv[2] << ": " << error.message() << "\n";
        return 1;
    }
}
