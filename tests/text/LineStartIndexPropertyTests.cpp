// The line-start index under random edits of texts long enough (hundreds to thousands of lines)
// that its runs split, join and vanish, against the starts a scan of the edited text finds.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "quoddle/strings/LineFunctions.h"
#include "quoddle/text/LineStartIndex.h"

namespace quod {
namespace {

std::vector<int64_t> scannedStarts(const std::u16string& text) {
    std::vector<int64_t> starts{0};
    appendLineStarts(text, 0, false, starts);
    return starts;
}

rc::Gen<std::u16string> linesOfText(int maximumLines) {
    return rc::gen::map(rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 6)),
                        [maximumLines](const std::vector<int>& picks) {
                            static const std::u16string pieces[] = {u"ab", u"\n", u"\r", u"\r\n",
                                                                    u"\u2028", u"x\n"};
                            std::u16string text;
                            for (int k = 0; k < maximumLines && !picks.empty(); ++k)
                                text += pieces[picks[static_cast<std::size_t>(k) % picks.size()]];
                            return text;
                        });
}

RC_GTEST_PROP(LineStartIndexProperty, FollowsEditsAsARescanWould, ()) {
    std::u16string text = *linesOfText(*rc::gen::inRange(0, 3000));
    LineStartIndex index(scannedStarts(text));
    const int edits = *rc::gen::inRange(1, 30);
    for (int k = 0; k < edits; ++k) {
        const auto length = std::ssize(text);
        const int64_t location = *rc::gen::inRange<int64_t>(0, length + 1);
        const int64_t longest = *rc::gen::element<int64_t>(4, 4, length);
        const int64_t count =
            *rc::gen::inRange<int64_t>(0, std::min(longest, length - location) + 1);
        const std::u16string inserted = *linesOfText(*rc::gen::element(3, 3, 600));
        const char16_t unitBefore = location > 0 ? text[location - 1] : u'\0';
        text.replace(location, count, inserted);
        const int64_t after = location + std::ssize(inserted);
        const bool nextIsLineFeed = after < std::ssize(text) && text[after] == u'\n';
        index.replace({location, count}, inserted, unitBefore, nextIsLineFeed);

        const std::vector<int64_t> starts = scannedStarts(text);
        RC_ASSERT(index.lineCount() == std::ssize(starts));
        for (int64_t line = 0; line < std::ssize(starts); ++line) {
            RC_ASSERT(index.start(line) == starts[line]);
            RC_ASSERT(index.lineContaining(starts[line]) == line);
            if (starts[line] > 0) RC_ASSERT(index.lineContaining(starts[line] - 1) == line - 1);
        }
    }
}

}  // namespace
}  // namespace quod
