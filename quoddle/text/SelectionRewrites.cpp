#include "quoddle/text/SelectionRewrites.h"

#include "quoddle/strings/CaseMapping.h"
#include "quoddle/strings/Search.h"
#include "quoddle/strings/StringEditing.h"
#include "quoddle/text/EditingSteps.h"

namespace quod::Text {
namespace {

using internal::changeText;
using internal::clampToText;
using internal::lineOf;
using internal::linesOf;
using internal::textOf;

template <typename CaseChange>
void changeCase(QuodTextView& view, CaseChange caseChange) {
    QuodTextView::UndoGroup command(view);
    const Range selection = view.selection();
    view.replaceWithUndo(caseChange(textOf(view, selection)), selection, true);
    // The old length, kept on purpose; only a shorter text can push it past the end.
    const int64_t location = clampToText(view, selection.location);
    view.setSelectedRange({location, std::min(selection.length, view.length() - location)});
}

}  // namespace

void commentOrUncomment(QuodTextView& view, std::u16string_view comment) {
    QuodTextView::UndoGroup command(view);
    const Range raw = view.selectedRange();
    const int64_t lines = view.numberOfLinesSelected();
    const std::u16string firstLines = replacingOccurrences(
        replacingOccurrences(textOf(view, linesOf(view, raw)), u"\t", u""), u" ", u"");
    const bool uncomment = firstLines.starts_with(comment);
    const auto commentLength = static_cast<int64_t>(comment.size());

    int64_t position = raw.location;
    for (int64_t pass = 0; pass < lines; ++pass) {
        const Range line = lineOf(view, clampToText(view, position));
        if (!uncomment) {
            if (changeText(view, {line.location, 0}, comment)) {
                view.setSelectedRange({line.location, commentLength});
            }
            position = line.end() + commentLength;
            continue;
        }
        std::u16string text = textOf(view, line);
        const std::size_t at = comment.empty() ? std::u16string::npos : text.find(comment);
        if (at == std::u16string::npos) {
            position = line.end();
            continue;
        }
        text.erase(at, comment.size());
        if (changeText(view, line, text)) {
            view.setSelectedRange({line.location, static_cast<int64_t>(text.size())});
        }
        position = line.end() - commentLength;
    }
    view.selectLines(lines, clampToText(view, raw.location));
}

void uppercase(QuodTextView& view) {
    changeCase(view, [](std::u16string_view text) { return localizedUppercase(text); });
}

void lowercase(QuodTextView& view) {
    changeCase(view, [](std::u16string_view text) { return localizedLowercase(text); });
}

void capitalize(QuodTextView& view) {
    changeCase(view, [](std::u16string_view text) { return localizedCapitalized(text); });
}

void transform(StringTransform::Kind transformer, QuodTextView& view) {
    QuodTextView::UndoGroup command(view);
    const Range raw = view.selectedRange();
    const Range target = raw.length > 0 ? raw : Range{0, view.length()};
    const std::u16string text = textOf(view, target);
    const auto result = StringTransform::transformed(transformer, text);
    if (!result || *result == text) return;
    view.replaceWithUndo(*result, target, true);
}

std::u16string prepareStringForXML(std::u16string_view string) {
    std::u16string escaped = replacingOccurrences(string, u"&amp;", u"&");
    escaped = replacingOccurrences(escaped, u"&", u"&amp;");
    escaped = replacingOccurrences(escaped, u"<", u"&lt;");
    return replacingOccurrences(escaped, u">", u"&gt;");
}

void rewriteSelection(QuodTextView& view,
                      const std::function<std::u16string(std::u16string_view)>& rewrite) {
    const Range selection = view.selectedRange();
    std::u16string rewritten;
    {
        const std::u16string original = textOf(view, selection);
        rewritten = rewrite(original);
        if (rewritten == original) return;
    }
    view.replaceWithUndo(rewritten, selection, true);
}

void prepareForXML(QuodTextView& view) {
    QuodTextView::UndoGroup command(view);
    const Range selection = view.selection();
    view.replaceWithUndo(prepareStringForXML(textOf(view, selection)), selection, true);
    view.setSelectedRange({selection.location, 0});
}

PreparedSnippet prepareSnippet(std::u16string_view snippet, const QuodTextView& view) {
    const Range raw = view.selectedRange();
    const std::u16string selected = raw.length > 0 ? textOf(view, raw) : std::u16string();
    std::u16string text = replacingOccurrences(snippet, u"%%s", selected);
    const auto cursor = utf16Index(text, u"%%c", 0);
    if (!cursor) return {std::move(text), 0};
    return {replacingOccurrences(text, u"%%c", u""), *cursor};
}

void insertSnippet(std::u16string_view snippet, QuodTextView& view) {
    QuodTextView::UndoGroup command(view);
    const PreparedSnippet prepared = prepareSnippet(snippet, view);
    const Range raw = view.selectedRange();
    view.replaceWithUndo(prepared.text, raw, true);
    const int64_t location = clampToText(view, raw.location + prepared.locationOffset);
    const auto length = static_cast<int64_t>(prepared.text.size());
    view.setSelectedRange({location, std::min(length, view.length() - location)});
}

}  // namespace quod::Text
