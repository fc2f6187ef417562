// Random edits, undos and redos against a naive model: a plain u16string for the text, scanned
// line functions for the index, and full snapshots for the undo history.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "quoddle/strings/LineFunctions.h"
#include "quoddle/text/QuodTextView.h"

namespace quod {
namespace {

// Pieces of text that exercise the index: every terminator kind, a surrogate pair, plain letters.
const std::u16string atoms[] = {u"a",      u"b",      u" ",      u"\n", u"\r", u"\r\n",
                                u"\u0085", u"\u2028", u"\u2029", u"😀",  u"é",  u"\u000B"};

struct Edit {
    enum Kind { replace, replaceTwiceInOneStep, refusedReplace, undo, redo } kind;
    uint32_t location;  // scaled into the current text
    uint32_t length;
    std::vector<int> atomIndexes;
    bool select;
};

}  // namespace
}  // namespace quod

namespace rc {
template <>
struct Arbitrary<quod::Edit> {
    static Gen<quod::Edit> arbitrary() {
        using quod::Edit;
        return gen::build<Edit>(
            gen::set(&Edit::kind,
                     gen::weightedElement<Edit::Kind>({{6, Edit::replace},
                                                       {1, Edit::replaceTwiceInOneStep},
                                                       {1, Edit::refusedReplace},
                                                       {2, Edit::undo},
                                                       {2, Edit::redo}})),
            gen::set(&Edit::location, gen::arbitrary<uint32_t>()),
            gen::set(&Edit::length, gen::inRange<uint32_t>(0, 12)),
            gen::set(&Edit::atomIndexes, gen::container<std::vector<int>>(gen::inRange(0, 12))),
            gen::set(&Edit::select, gen::arbitrary<bool>()));
    }
};
}  // namespace rc

namespace quod {
namespace {

struct Snapshot {
    std::u16string text;
    Range selection;
    bool operator==(const Snapshot&) const = default;
};

Snapshot snapshotOf(const QuodTextView& view) {
    return {view.string(), view.selectedRange()};
}

int64_t numberOfLinesByWalking(const std::u16string& text) {
    const auto n = static_cast<int64_t>(text.size());
    int64_t count = 0, index = 0;
    while (index < n) {
        index = lineBounds(text, {index, 0}).end;
        ++count;
    }
    const LineBounds last = lineBounds(text, {index, 0});
    if (last.start == last.end) ++count;
    return count;
}

void checkIndexAgainstText(const QuodTextView& view, const std::u16string& text) {
    const TextStorage& storage = view.textStorage();
    RC_ASSERT(storage.string() == text);
    std::vector<int64_t> starts{0};
    for (int64_t position = 0; position < std::ssize(text);) {
        position = lineBounds(text, {position, 0}).end;
        if (position < std::ssize(text) || isLineTerminator(text.back()))
            starts.push_back(position);
    }
    RC_ASSERT(storage.lineCount() == std::ssize(starts));
    for (int64_t line = 0; line < std::ssize(starts); ++line)
        RC_ASSERT(storage.startOfLine(line) == starts[line]);
    RC_ASSERT(view.numberOfLines() == numberOfLinesByWalking(text));
    for (int64_t position = 0; position <= std::ssize(text); position += 3) {
        RC_ASSERT(storage.lineBoundsForRange({position, 0}) == lineBounds(text, {position, 0}));
    }
    const Range selection = view.selectedRange();
    RC_ASSERT(selection.isInside(std::ssize(text)));
}

RC_GTEST_PROP(EditingProperty, StorageIndexAndUndoMatchANaiveModel,
              (const std::vector<Edit>& edits)) {
    QuodTextView view(u"start\r\nof the\ntext");
    std::u16string model = view.string();
    std::vector<std::pair<Snapshot, Snapshot>> undoModel;  // (before, after) per step
    std::vector<std::pair<Snapshot, Snapshot>> redoModel;

    for (const Edit& edit : edits) {
        const auto length = static_cast<int64_t>(model.size());
        const int64_t location = edit.location % (length + 1);
        const int64_t count = std::min<int64_t>(edit.length, length - location);
        std::u16string inserted;
        for (int atom : edit.atomIndexes)
            inserted += atoms[atom];

        switch (edit.kind) {
            case Edit::replace:
            case Edit::refusedReplace: {
                const bool refused = edit.kind == Edit::refusedReplace;
                view.setEditable(!refused);
                const Snapshot before = snapshotOf(view);
                view.replaceWithUndo(inserted, {location, count}, edit.select);
                view.setEditable(true);
                if (refused) {
                    RC_ASSERT(snapshotOf(view) == before);
                    break;
                }
                model.replace(location, count, inserted);
                if (edit.select)
                    RC_ASSERT(view.selectedRange() == (Range{location, std::ssize(inserted)}));
                undoModel.emplace_back(before, snapshotOf(view));
                redoModel.clear();
                break;
            }
            case Edit::replaceTwiceInOneStep: {
                const Snapshot before = snapshotOf(view);
                {
                    QuodTextView::UndoGroup group(view);
                    view.replaceWithUndo(inserted, {location, count}, edit.select);
                    view.replaceWithUndo(u"#", {0, 0}, false);
                }
                model.replace(location, count, inserted);
                model.insert(0, u"#");
                undoModel.emplace_back(before, snapshotOf(view));
                redoModel.clear();
                break;
            }
            case Edit::undo:
                view.undo();
                if (!undoModel.empty()) {
                    RC_ASSERT(snapshotOf(view) == undoModel.back().first);
                    redoModel.push_back(undoModel.back());
                    undoModel.pop_back();
                }
                model = view.string();
                break;
            case Edit::redo:
                view.redo();
                if (!redoModel.empty()) {
                    RC_ASSERT(snapshotOf(view) == redoModel.back().second);
                    undoModel.push_back(redoModel.back());
                    redoModel.pop_back();
                }
                model = view.string();
                break;
        }
        RC_ASSERT(view.undoManager().canUndo() == !undoModel.empty());
        RC_ASSERT(view.undoManager().canRedo() == !redoModel.empty());
        checkIndexAgainstText(view, model);
    }
}

}  // namespace
}  // namespace quod
