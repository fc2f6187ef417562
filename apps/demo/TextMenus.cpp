#include "demo/TextMenus.h"

#include <QInputDialog>
#include <array>

#include "demo/EditorArea.h"
#include "quoddle/base/Utf.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/strings/LineEnding.h"
#include "quoddle/strings/PathStrings.h"
#include "quoddle/strings/StringTransform.h"
#include "quoddle/text/LineOperations.h"
#include "quoddle/text/SelectionRewrites.h"
#include "quoddle/text/TagOperations.h"

namespace quod::demo {
namespace {

struct TransformItem {
    StringTransform::Kind kind;
    const char* name;
    const char* title;
};

using Kind = StringTransform::Kind;
constexpr std::array<TransformItem, StringTransform::caseCount> transformItems{{
    {Kind::toLatin, "toLatin", "To Latin"},
    {Kind::latinASCII, "latinASCII", "Latin to ASCII"},
    {Kind::stripDiacritics, "stripDiacritics", "Strip Diacritics"},
    {Kind::stripCombiningMarks, "stripCombiningMarks", "Strip Combining Marks"},
    {Kind::toXMLHex, "toXMLHex", "To XML Hex"},
    {Kind::fromXMLHex, "fromXMLHex", "From XML Hex"},
    {Kind::toCHex, "toCHex", "To C Hex"},
    {Kind::fromCHex, "fromCHex", "From C Hex"},
    {Kind::toPerlHex, "toPerlHex", "To Perl Hex"},
    {Kind::fromPerlHex, "fromPerlHex", "From Perl Hex"},
    {Kind::toPublishing, "toPublishing", "To Publishing"},
    {Kind::fromPublishing, "fromPublishing", "From Publishing"},
    {Kind::toUnicodeName, "toUnicodeName", "To Unicode Name"},
    {Kind::fromUnicodeName, "fromUnicodeName", "From Unicode Name"},
    {Kind::fullwidthToHalfwidth, "fullwidthToHalfwidth", "Fullwidth to Halfwidth"},
    {Kind::halfwidthToFullwidth, "halfwidthToFullwidth", "Halfwidth to Fullwidth"},
    {Kind::latinToKatakana, "latinToKatakana", "Latin to Katakana"},
    {Kind::katakanaToLatin, "katakanaToLatin", "Katakana to Latin"},
    {Kind::latinToHiragana, "latinToHiragana", "Latin to Hiragana"},
    {Kind::hiraganaToLatin, "hiraganaToLatin", "Hiragana to Latin"},
    {Kind::latinToHangul, "latinToHangul", "Latin to Hangul"},
    {Kind::hangulToLatin, "hangulToLatin", "Hangul to Latin"},
    {Kind::latinToArabic, "latinToArabic", "Latin to Arabic"},
    {Kind::arabicToLatin, "arabicToLatin", "Arabic to Latin"},
    {Kind::latinToHebrew, "latinToHebrew", "Latin to Hebrew"},
    {Kind::hebrewToLatin, "hebrewToLatin", "Hebrew to Latin"},
    {Kind::latinToThai, "latinToThai", "Latin to Thai"},
    {Kind::thaiToLatin, "thaiToLatin", "Thai to Latin"},
    {Kind::latinToCyrillic, "latinToCyrillic", "Latin to Cyrillic"},
    {Kind::cyrillicToLatin, "cyrillicToLatin", "Cyrillic to Latin"},
    {Kind::latinToGreek, "latinToGreek", "Latin to Greek"},
    {Kind::greekToLatin, "greekToLatin", "Greek to Latin"},
    {Kind::mandarinToLatin, "mandarinToLatin", "Mandarin to Latin"},
    {Kind::hiraganaToKatakana, "hiraganaToKatakana", "Hiragana to Katakana"},
}};

struct LineEndingItem {
    LineEnding ending;
    const char* name;
    const char* title;
};

constexpr std::array<LineEndingItem, 3> lineEndingItems{{
    {LineEnding::unix, "convertToUnix", "Convert to LF"},
    {LineEnding::windows, "convertToWindows", "Convert to CR LF"},
    {LineEnding::macOS9, "convertToMacOS9", "Convert to CR"},
}};

std::u16string spaces(int64_t count) {
    return std::u16string(static_cast<std::size_t>(count), u' ');
}

// The string rewrites act on the selection, or on the whole text when nothing is selected.
void rewriteSelectionOrAll(QuodTextView& view,
                           const std::function<std::u16string(std::u16string_view)>& rewrite) {
    if (view.selectedRange().length == 0) view.selectAll();
    Text::rewriteSelection(view, rewrite);
}

}  // namespace

TextMenus::TextMenus(QMenuBar& bar, CurrentDocument currentDocument)
    : QObject(&bar), currentDocument_(std::move(currentDocument)) {
    addEditMenu(bar);
    addLinesMenu(bar);
    addTextMenu(bar);
    addTagsMenu(bar);
    addSnippetsMenu(bar);
    addGoMenu(bar);
}

std::u16string TextMenus::commentToken(const std::string& path) {
    const std::string name = lastPathComponent(path);
    const std::size_t dot = name.rfind('.');
    const std::string extension = dot == std::string::npos ? std::string() : name.substr(dot + 1);
    for (const char* hash : {"sh", "py", "rb", "pl", "conf", "cmake", "yaml", "yml", "toml"}) {
        if (extension == hash) return u"#";
    }
    if (name == "CMakeLists.txt" || name == "Makefile") return u"#";
    if (extension == "sql" || extension == "lua") return u"--";
    return u"//";
}

std::u16string TextMenus::indent() {
    return Defaults::indentWithSpaces.get() ? spaces(tabWidthPreference()) : std::u16string(u"\t");
}

QAction* TextMenus::addOperation(QMenu& menu, const QString& title, const char* name,
                                 Operation operation, const QKeySequence& shortcut) {
    QAction* action = menu.addAction(title);
    action->setObjectName(name);
    action->setShortcut(shortcut);
    connect(action, &QAction::triggered, this,
            [this, operation = std::move(operation)] { run(operation); });
    return action;
}

void TextMenus::run(const Operation& operation) {
    if (Document* document = currentDocument_()) operation(*document->textView());
}

void TextMenus::addEditMenu(QMenuBar& bar) {
    QMenu* menu = bar.addMenu(QString::fromStdString(Localize::edit()));
    addOperation(*menu, "Undo", "undo", &QuodTextView::undo, QKeySequence::Undo);
    addOperation(*menu, "Redo", "redo", &QuodTextView::redo, QKeySequence::Redo);
}

void TextMenus::addLinesMenu(QMenuBar& bar) {
    QMenu* menu = bar.addMenu(QString::fromStdString(Localize::lines()));
    addOperation(
        *menu, "Shift Left", "shiftLeft", [](QuodTextView& view) { Text::shiftLeft(view, true); },
        QKeySequence(Qt::CTRL | Qt::Key_BracketLeft));
    addOperation(
        *menu, "Shift Right", "shiftRight",
        [](QuodTextView& view) { Text::shiftRight(view, indent()); },
        QKeySequence(Qt::CTRL | Qt::Key_BracketRight));
    addOperation(*menu, "Spaces to Tab", "spacesToTab",
                 [](QuodTextView& view) { Text::spacesToTab(view, spaces(tabWidthPreference())); });
    addOperation(*menu, "Tab to Spaces", "tabToSpaces",
                 [](QuodTextView& view) { Text::tabToSpaces(view, spaces(tabWidthPreference())); });
    addOperation(*menu, "Remove Needless Whitespace", "removeNeedlessWhitespace",
                 &Text::removeNeedlessWhitespace);
    addOperation(*menu, "Join Lines", "removeLineEndingsInSelection",
                 &Text::removeLineEndingsInSelection);
    menu->addSeparator();
    addOperation(
        *menu, "Sort", "sort", [](QuodTextView& view) { Text::sort(view, false); },
        QKeySequence(Qt::Key_F9));
    addOperation(*menu, "Sort Descending", "sortReverse",
                 [](QuodTextView& view) { Text::sort(view, true); });
    addOperation(*menu, "Unique", "unique", &Text::unique);
    menu->addSeparator();
    addOperation(*menu, "Move Line Up", "moveUp", &Text::moveUp,
                 QKeySequence(Qt::ALT | Qt::Key_Up));
    addOperation(*menu, "Move Line Down", "moveDown", &Text::moveDown,
                 QKeySequence(Qt::ALT | Qt::Key_Down));
    addOperation(*menu, "Duplicate Line", "duplicateLine", &Text::duplicateLine,
                 QKeySequence(Qt::CTRL | Qt::Key_D));
    addOperation(*menu, "Select Line", "selectLine", &Text::selectLine,
                 QKeySequence(Qt::CTRL | Qt::Key_L));
    addOperation(*menu, "Select More", "selectMore", &Text::selectMore,
                 QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Up));
}

void TextMenus::addTextMenu(QMenuBar& bar) {
    QMenu* menu = bar.addMenu(QString::fromStdString(Localize::text()));
    addOperation(
        *menu, "Comment or Uncomment", "commentOrUncomment",
        [this](QuodTextView& view) {
            Text::commentOrUncomment(view, commentToken(currentDocument_()->path()));
        },
        QKeySequence(Qt::CTRL | Qt::Key_Slash));
    menu->addSeparator();
    addOperation(*menu, "Uppercase", "uppercase", &Text::uppercase);
    addOperation(*menu, "Lowercase", "lowercase", &Text::lowercase);
    addOperation(*menu, "Capitalize", "capitalize", &Text::capitalize);
    QMenu* transforms = menu->addMenu("Transform");
    for (const TransformItem& item : transformItems) {
        const QString name = QString("transform.") + item.name;
        addOperation(*transforms, item.title, name.toUtf8().constData(),
                     [kind = item.kind](QuodTextView& view) { Text::transform(kind, view); });
    }
    addOperation(*menu, "Escape for XML", "prepareForXML", &Text::prepareForXML);
    menu->addSeparator();
    QMenu* endings = menu->addMenu("Line Endings");
    for (const LineEndingItem& item : lineEndingItems) {
        addOperation(*endings, item.title, item.name, [ending = item.ending](QuodTextView& view) {
            rewriteSelectionOrAll(
                view, [ending](std::u16string_view text) { return Text::convert(text, ending); });
        });
    }
    addOperation(*endings, "Show Line Ending Characters", "replaceLineEndingCharacters",
                 [](QuodTextView& view) {
                     rewriteSelectionOrAll(view, &Text::replaceLineEndingCharacters);
                 });
}

void TextMenus::addTagsMenu(QMenuBar& bar) {
    QMenu* menu = bar.addMenu(QString::fromStdString(Localize::tags()));
    addOperation(*menu, "Close Tag", "closeTag", &Text::closeTag,
                 QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Period));
    addOperation(*menu, "New Tag", "newTag", &Text::newTag);
}

void TextMenus::addSnippetsMenu(QMenuBar& bar) {
    QMenu* menu = bar.addMenu(QString::fromStdString(Localize::snippets()));
    menu->setObjectName("snippetsMenu");
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { rebuildSnippets(*menu); });
    rebuildSnippets(*menu);
}

void TextMenus::rebuildSnippets(QMenu& menu) {
    menu.clear();
    const std::vector<Snippet> snippets = Snippet::sort(Defaults::snippets.get());
    if (snippets.empty()) {
        menu.addAction(QString::fromStdString(Localize::noItems()))->setEnabled(false);
        return;
    }
    for (const Snippet& snippet : snippets) {
        addOperation(menu, QString::fromStdString(snippet.name()), "insertSnippet",
                     [text = toUtf16(snippet.text())](QuodTextView& view) {
                         Text::insertSnippet(text, view);
                     });
    }
}

void TextMenus::addGoMenu(QMenuBar& bar) {
    QMenu* menu = bar.addMenu(QString::fromStdString(Localize::go()));
    QWidget* window = bar.parentWidget();
    addOperation(
        *menu, QString::fromStdString(Localize::Ellipsis::gotoLine()), "gotoLine",
        [window](QuodTextView& view) {
            const int64_t lines = view.numberOfLines();
            const int64_t current =
                view.textStorage().lineIndexOfPosition(view.selectedRange().location) + 1;
            bool chosen = false;
            const int line = QInputDialog::getInt(
                window, QString::fromStdString(Localize::Ellipsis::gotoLine()),
                QString::fromStdString(Localize::line()), static_cast<int>(current), 1,
                static_cast<int>(std::min<int64_t>(lines, INT_MAX)), 1, &chosen);
            if (chosen) view.selectLineNumber(line);
        },
        QKeySequence(Qt::CTRL | Qt::Key_G));
}

}  // namespace quod::demo
