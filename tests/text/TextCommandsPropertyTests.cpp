// Random markup, command lines and range lists: the tag commands, the command splitter and the
// selection statistics never crash or hang, and their results stay within bounds.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "quoddle/text/CommandSplitting.h"
#include "quoddle/text/SelectionStatistics.h"
#include "quoddle/text/TagOperations.h"

namespace quod {
namespace {

std::u16string fromPieces(const std::vector<std::u16string>& alphabet) {
    const auto indexes = *rc::gen::container<std::vector<std::size_t>>(
        rc::gen::inRange<std::size_t>(0, alphabet.size()));
    std::u16string text;
    for (std::size_t index : indexes)
        text += alphabet[index];
    return text;
}

const std::vector<std::u16string> markup = {
    u"<",    u">",   u"/", u" ",  u"<div>",   u"</div>", u"<p", u"<br>",
    u"<!--", u"-->", u"x", u"\n", u"e\u0301", u"\u0600", u"😀",  u"<input "};

RC_GTEST_PROP(TextCommandsProperty, TagCommandsInsertOnlyATagAtTheCursor, ()) {
    const std::u16string text = fromPieces(markup);
    QuodTextView view(text);
    const int64_t cursor = *rc::gen::inRange<int64_t>(0, view.length() + 1);
    view.setSelectedRange({cursor, 0});

    Text::closeTag(view);
    const std::u16string closed = view.string();
    if (closed != text) {
        const std::u16string inserted = closed.substr(cursor, closed.size() - text.size());
        RC_ASSERT(closed.substr(0, cursor) + closed.substr(cursor + inserted.size()) == text);
        RC_ASSERT(inserted.size() >= 3u);
        RC_ASSERT(inserted[1] == u'/');
        RC_ASSERT(inserted.back() == u'>');
        view.undo();
        RC_ASSERT(view.string() == text);
    }

    view.setSelectedRange({cursor, 0});
    Text::newTag(view);
    RC_ASSERT(view.selectedRange().isInside(view.length()));
    if (view.string() != text) {
        view.undo();
        RC_ASSERT(view.string() == text);
        RC_ASSERT(view.selectedRange() == (Range{cursor, 0}));
    }
}

RC_GTEST_PROP(TextCommandsProperty, CommandSplittingStaysWithinTheLine, ()) {
    const std::u16string command =
        fromPieces({u" ", u"  ", u"\"", u"'", u"\\", u"a", u"bc", u"@@@@", u"%%%%", u"\u00A0", u"😀",
                    u"e\u0301", u"\t", u"\n"});
    const auto arguments = Text::separateCommand(command);
    RC_ASSERT(!arguments.empty() ||
              command.find_first_not_of(u" \t\n\u00A0") != std::u16string::npos);
    for (const auto& argument : arguments)
        RC_ASSERT(argument.size() <= command.size());
}

RC_GTEST_PROP(TextCommandsProperty, SelectionCountsAreBoundedByTheSelections, ()) {
    const std::u16string text = fromPieces({u"word", u" ", u"😀", u"e\u0301", u"\n", u"3.14", u"."});
    const auto length = static_cast<int64_t>(text.size());
    const auto ranges = *rc::gen::container<std::vector<Range>>(rc::gen::construct<Range>(
        rc::gen::inRange<int64_t>(-2, length + 3), rc::gen::inRange<int64_t>(-2, length + 3)));
    int64_t selectedUnits = 0;
    for (const Range& range : ranges) {
        if (range.length > 0 && range.location >= 0 && range.location + range.length <= length) {
            selectedUnits += range.length;
        }
    }
    const auto count = Text::selectionCount(text, ranges);
    RC_ASSERT(count.characters <= selectedUnits);
    RC_ASSERT(count.words <= count.characters);
    RC_ASSERT(count.words >= 0);
}

}  // namespace
}  // namespace quod
