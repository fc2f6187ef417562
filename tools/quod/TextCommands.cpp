// The text commands: one framework operation each, run on a QuodTextView over the input.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "CommandLine.h"
#include "Commands.h"
#include "Document.h"
#include "Failure.h"
#include "Progress.h"
#include "Streaming.h"
#include "quoddle/base/CurrentLocale.h"
#include "quoddle/base/Utf.h"
#include "quoddle/strings/CaseMapping.h"
#include "quoddle/strings/LineEnding.h"
#include "quoddle/strings/LineFunctions.h"
#include "quoddle/strings/StringTransform.h"
#include "quoddle/text/LineOperations.h"
#include "quoddle/text/QuodTextView.h"
#include "quoddle/text/SelectionRewrites.h"
#include "quoddle/text/SelectionStatistics.h"
#include "quoddle/text/UniqueLinesStream.h"

namespace quod::tool {
namespace {

// How a command's selection covers its lines.
enum class Reach {
    // The lines without the last one's terminator. Sort and unique replace the selection with
    // lines joined by LF, so a selected final terminator would be lost; the case changes and
    // trimming read an empty selection as the line under it, which is not what was asked for.
    lineContents,
    // Terminators included: for the commands about terminators, for counting, and for indent
    // and comment, which skip a line that the selection only reaches the start of, so an empty
    // last line is only theirs with its terminator.
    wholeLines,
};

struct TextEdit {
    Reach reach = Reach::lineContents;
    std::function<void(QuodTextView&)> apply = {};
    // Set for commands that report on the text instead of changing it.
    std::function<std::string(const QuodTextView&)> report = {};
    // Set for commands that can go through a whole file in pieces (Streaming.h), with the
    // result of `apply` or `report` on the whole text.
    std::function<std::unique_ptr<PieceRewrite>()> inPieces = {};
    // Set for commands that work on the whole UTF-8 text without decoding it (Streaming.h).
    WholeRewrite onUtf8 = {};
};

// Line endings rewritten in the UTF-8 bytes themselves: a CR or LF byte is always that character.
class LineEndingPieces : public PieceRewrite {
  public:
    explicit LineEndingPieces(LineEndingConverter converter) : converter_(converter) {}
    Cut cut() const override { return Cut::anywhere; }
    void rewrite(std::string_view piece, std::string& out) override {
        converter_.convert(piece, out);
    }
    void finish(std::string& out) override { converter_.finish(out); }

  private:
    LineEndingConverter converter_;
};

// Unique lines straight from the UTF-8 bytes: the pieces are windows of the input, which stays
// mapped (or read) until the end, as the stream needs.
class UniquePieces : public PieceRewrite {
  public:
    Cut cut() const override { return Cut::afterLineFeed; }
    void rewrite(std::string_view piece, std::string& out) override { unique_.append(piece, out); }
    void finish(std::string& out) override { unique_.finish(out); }

  private:
    UniqueLinesStream unique_;
};

// A rewrite of the decoded text. The whole-text way leaves the final line terminator out of the
// selection, so that a rule that looks at the end of the text (a final sigma) sees the end and
// not the terminator: each window's last terminator is held back until more text follows it, and
// the text's own final one goes out as it is.
class TextPieces : public PieceRewrite {
  public:
    void rewrite(std::string_view piece, std::string& out) final {
        std::u16string text = std::move(heldTerminator_) + toUtf16(piece);
        heldTerminator_.clear();
        std::size_t end = text.size();
        if (end > 0 && isLineTerminator(text[end - 1])) {
            end -= end >= 2 && text[end - 2] == u'\r' && text[end - 1] == u'\n' ? 2 : 1;
            heldTerminator_ = text.substr(end);
            text.resize(end);
        }
        std::u16string rewritten;
        rewriteText(text, rewritten);
        out += toUtf8(rewritten);
    }
    void finish(std::string& out) final {
        std::u16string rest;
        finishText(rest);
        out += toUtf8(rest + heldTerminator_);
    }

  protected:
    virtual void rewriteText(std::u16string_view text, std::u16string& out) = 0;
    virtual void finishText(std::u16string&) {}

  private:
    std::u16string heldTerminator_;
};

// Case mapping and XML escaping give the same result line by line as on the whole text: they
// never look past a line feed.
class LinePieces : public TextPieces {
  public:
    explicit LinePieces(std::u16string (*rewrite)(std::u16string_view)) : rewrite_(rewrite) {}
    Cut cut() const override { return Cut::afterLineFeed; }

  protected:
    void rewriteText(std::u16string_view text, std::u16string& out) override {
        out += rewrite_(text);
    }

  private:
    std::u16string (*rewrite_)(std::u16string_view);
};

// A transliteration holds back what its rules may still change (StringTransformStream).
class TransformPieces : public TextPieces {
  public:
    explicit TransformPieces(StringTransform::Kind kind) : stream_(kind) {}
    Cut cut() const override { return Cut::characterStart; }

  protected:
    void rewriteText(std::u16string_view text, std::u16string& out) override {
        stream_.transform(text, out);
    }
    void finishText(std::u16string& out) override { stream_.finish(out); }

  private:
    StringTransformStream stream_;
};

using EditFactory = TextEdit (*)(const ParsedArguments& arguments,
                                 std::vector<std::string>& operands);

// Lines as a user counts them: a final terminator ends the last line rather than starting an
// empty one, and an empty text has none.
int64_t userLineCount(const TextStorage& storage) {
    if (storage.length() == 0) return 0;
    const int64_t lines = storage.lineCount();
    return storage.startOfLine(lines - 1) == storage.length() ? lines - 1 : lines;
}

int64_t contentsEndOfLine(const TextStorage& storage, int64_t line) {
    return storage.lineBoundsForRange({storage.startOfLine(line), 0}).contentsEnd;
}

// Selects lines `first` to `last` (0-based, inclusive) as a user selecting them would.
void selectLineIndexes(QuodTextView& view, int64_t first, int64_t last, Reach reach) {
    const TextStorage& storage = view.textStorage();
    view.selectLines(last - first + 1, storage.startOfLine(first));
    if (reach == Reach::lineContents) {
        const int64_t start = view.selectedRange().location;
        view.setSelectedRange({start, contentsEndOfLine(storage, last) - start});
    }
}

void selectForCommand(QuodTextView& view, const std::optional<LineSpan>& lines, Reach reach,
                      const std::string& displayName) {
    const int64_t available = userLineCount(view.textStorage());
    if (!lines) {
        if (reach == Reach::wholeLines) {
            view.selectAll();
        } else if (available > 0) {
            selectLineIndexes(view, 0, available - 1, reach);
        }
        return;
    }
    if (lines->first > available) {
        throw Failure(displayName + ": --lines starts past the last line (the text has " +
                      std::to_string(available) + ")");
    }
    selectLineIndexes(view, lines->first - 1, std::min(lines->last, available) - 1, reach);
}

std::u16string utf16Argument(const std::string& argument, std::string_view option) {
    auto text = toUtf16IfValid(argument);
    if (!text) throw UsageError(std::string(option) + " is not valid UTF-8");
    return std::move(*text);
}

std::string takeOperand(std::vector<std::string>& operands, std::string_view what) {
    if (operands.empty()) throw UsageError("missing " + std::string(what));
    std::string operand = std::move(operands.front());
    operands.erase(operands.begin());
    return operand;
}

int runTextCommand(const Command& command, std::span<const std::string> arguments,
                   std::span<const OptionDefinition> ownOptions, EditFactory makeEdit) {
    std::vector<OptionDefinition> options(ownOptions.begin(), ownOptions.end());
    options.push_back({"--lines", true});
    options.push_back({"-i", false, "--in-place"});
    options.push_back({"--encoding", true});
    const ParsedArguments parsed = parseArguments(arguments, options);
    if (parsed.has("--help")) {
        writeStandardOutput(helpText(command));
        return 0;
    }
    std::vector<std::string> operands = parsed.operands();
    const TextEdit edit = makeEdit(parsed, operands);
    if (operands.size() > 1) throw UsageError("one file at a time");
    const std::string path = operands.empty() ? "-" : operands.front();
    const bool inPlace = parsed.has("-i");
    if (inPlace && path == "-") throw UsageError("-i needs a file");
    if (inPlace && edit.report) throw UsageError("-i makes no sense for a report");
    std::optional<LineSpan> lines;
    if (const auto value = parsed.value("--lines")) lines = parseLineSpan(*value);
    std::optional<EncodingNumber> named;
    if (const auto value = parsed.value("--encoding")) named = encodingNamed(*value);

    // In place, a read-only file is refused before any work.
    Output output = inPlace ? Output::replacing(path) : Output::standardOutput();
    const bool inPieces = edit.inPieces && !lines && !named;
    const InputBytes input = inPieces ? InputBytes::readInWindows(path) : InputBytes::read(path);
    Progress progress(command.name, input.bytes().size());
    if (inPieces) {
        const auto rewrite = edit.inPieces();
        if (runInWindows(input, *rewrite, static_cast<bool>(edit.report), output, progress)) {
            output.commit();
            return 0;
        }
    } else if (edit.onUtf8 && !lines && !named &&
               runOnWholeUtf8(input, edit.onUtf8, output, progress)) {
        output.commit();
        return 0;
    }
    progress.stage("decoding");
    DecodedText document = named ? decodeDocumentAs(input.bytes(), *named, input.displayName())
                                 : decodeDocument(input.bytes(), input.displayName());
    // The text holds everything from here on: the file's pages need not stay while it is worked.
    input.release(0, input.bytes().size());
    QuodTextView view(std::move(document.storage));
    selectForCommand(view, lines, edit.reach, input.displayName());

    if (edit.report) {
        progress.stage("counting");
        output.write(edit.report(view));
        return 0;
    }
    // The framework reads an empty selection as the whole text or the line under it; here it only
    // ever means an empty text or an empty line, with nothing to act on.
    if (view.selectedRange().length > 0) {
        progress.stage(command.name);
        edit.apply(view);
    }
    progress.stage("writing");
    writeDocument(view.textStorage(), document, output, input.displayName());
    output.commit();
    return 0;
}

// --- line-endings ---

constexpr std::array<std::string_view, 3> lineEndingNames = {"unix", "windows", "macOS9"};
static_assert(lineEndingNames.size() == allLineEndings.size());

TextEdit lineEndingsEdit(const ParsedArguments& arguments, std::vector<std::string>&) {
    const int modes =
        int{arguments.has("--to")} + int{arguments.has("--show")} + int{arguments.has("--remove")};
    if (modes != 1) throw UsageError("give one of --to, --show and --remove");
    TextEdit edit{.reach = Reach::wholeLines};
    const auto inPieces = [](LineEndingConverter converter) {
        return [converter] { return std::make_unique<LineEndingPieces>(converter); };
    };
    if (arguments.has("--remove")) {
        edit.apply = [](QuodTextView& view) { Text::removeLineEndingsInSelection(view); };
        edit.inPieces = inPieces(LineEndingConverter::removing());
        return edit;
    }
    std::function<std::u16string(std::u16string_view)> rewrite = Text::replaceLineEndingCharacters;
    edit.inPieces = inPieces(LineEndingConverter::showingCharacters());
    if (const auto name = arguments.value("--to")) {
        const auto found = std::find(lineEndingNames.begin(), lineEndingNames.end(), *name);
        if (found == lineEndingNames.end()) {
            throw UsageError("--to wants unix, windows or macOS9, not '" + *name + "'");
        }
        const LineEnding ending = allLineEndings[found - lineEndingNames.begin()];
        rewrite = [ending](std::u16string_view text) { return Text::convert(text, ending); };
        edit.inPieces = inPieces(LineEndingConverter::converting(ending));
    }
    edit.apply = [rewrite](QuodTextView& view) { Text::rewriteSelection(view, rewrite); };
    return edit;
}

constexpr OptionDefinition lineEndingsOptions[] = {{"--to", true}, {"--show"}, {"--remove"}};

// --- the line operations ---

constexpr OptionDefinition sortOptions[] = {{"--reverse"}};

TextEdit sortEdit(const ParsedArguments& arguments, std::vector<std::string>&) {
    const bool reverse = arguments.has("--reverse");
    return {
        .apply = [reverse](QuodTextView& view) { Text::sort(view, reverse); },
        .onUtf8 =
            [reverse](std::string_view text, const std::function<void(std::string_view)>& write) {
                Text::sortUtf8Lines(text, reverse, write);
            }};
}

TextEdit uniqueEdit(const ParsedArguments&, std::vector<std::string>&) {
    return {.apply = Text::unique, .inPieces = [] { return std::make_unique<UniquePieces>(); }};
}

constexpr OptionDefinition indentOptions[] = {{"--with", true}};

TextEdit indentEdit(const ParsedArguments& arguments, std::vector<std::string>&) {
    std::u16string indent = u"\t";
    if (const auto with = arguments.value("--with")) indent = utf16Argument(*with, "--with");
    return {.reach = Reach::wholeLines,
            .apply = [indent](QuodTextView& view) { Text::shiftRight(view, indent); }};
}

TextEdit outdentEdit(const ParsedArguments&, std::vector<std::string>&) {
    return {.apply = [](QuodTextView& view) { Text::shiftLeft(view, true); }};
}

TextEdit trimEdit(const ParsedArguments&, std::vector<std::string>&) {
    return {.apply = Text::removeNeedlessWhitespace};
}

// --- the selection rewrites ---

constexpr OptionDefinition commentOptions[] = {{"--token", true}};

TextEdit commentEdit(const ParsedArguments& arguments, std::vector<std::string>&) {
    const auto token = arguments.value("--token");
    if (!token || token->empty()) throw UsageError("--token wants the comment token, such as '//'");
    return {.reach = Reach::wholeLines,
            .apply = [comment = utf16Argument(*token, "--token")](QuodTextView& view) {
                Text::commentOrUncomment(view, comment);
            }};
}

std::function<std::unique_ptr<PieceRewrite>()> linePieces(
    std::u16string (*rewrite)(std::u16string_view)) {
    return [rewrite] { return std::make_unique<LinePieces>(rewrite); };
}

// Letter case follows the locale of character types, as the C library's case mapping does:
// LC_ALL, then LC_CTYPE, then LANG. (The framework's current locale otherwise follows the language
// of messages.)
void useCharacterTypeLocale() {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') {
            setCurrentLocale(localeFromPosixName(value));
            return;
        }
    }
    setCurrentLocale(localeFromPosixName(""));
}

TextEdit caseEdit(const ParsedArguments&, std::vector<std::string>& operands) {
    const std::string which = takeOperand(operands, "upper, lower or capitalize");
    useCharacterTypeLocale();
    // The framework's case mappings in the current locale, which the view's commands use.
    if (which == "upper") {
        return {.apply = Text::uppercase, .inPieces = linePieces([](std::u16string_view text) {
                                              return localizedUppercase(text);
                                          })};
    }
    if (which == "lower") {
        return {.apply = Text::lowercase, .inPieces = linePieces([](std::u16string_view text) {
                                              return localizedLowercase(text);
                                          })};
    }
    if (which == "capitalize") {
        return {.apply = Text::capitalize, .inPieces = linePieces([](std::u16string_view text) {
                                               return localizedCapitalized(text);
                                           })};
    }
    throw UsageError("case wants upper, lower or capitalize, not '" + which + "'");
}

// The kinds by the names they have in the code, which is also how users meet them in the help.
using Kind = StringTransform::Kind;
constexpr std::array<std::pair<Kind, std::string_view>, StringTransform::caseCount> kindNames{{
    {Kind::toLatin, "toLatin"},
    {Kind::latinASCII, "latinASCII"},
    {Kind::stripDiacritics, "stripDiacritics"},
    {Kind::stripCombiningMarks, "stripCombiningMarks"},
    {Kind::toXMLHex, "toXMLHex"},
    {Kind::fromXMLHex, "fromXMLHex"},
    {Kind::toCHex, "toCHex"},
    {Kind::fromCHex, "fromCHex"},
    {Kind::toPerlHex, "toPerlHex"},
    {Kind::fromPerlHex, "fromPerlHex"},
    {Kind::toPublishing, "toPublishing"},
    {Kind::fromPublishing, "fromPublishing"},
    {Kind::toUnicodeName, "toUnicodeName"},
    {Kind::fromUnicodeName, "fromUnicodeName"},
    {Kind::fullwidthToHalfwidth, "fullwidthToHalfwidth"},
    {Kind::halfwidthToFullwidth, "halfwidthToFullwidth"},
    {Kind::latinToKatakana, "latinToKatakana"},
    {Kind::katakanaToLatin, "katakanaToLatin"},
    {Kind::latinToHiragana, "latinToHiragana"},
    {Kind::hiraganaToLatin, "hiraganaToLatin"},
    {Kind::latinToHangul, "latinToHangul"},
    {Kind::hangulToLatin, "hangulToLatin"},
    {Kind::latinToArabic, "latinToArabic"},
    {Kind::arabicToLatin, "arabicToLatin"},
    {Kind::latinToHebrew, "latinToHebrew"},
    {Kind::hebrewToLatin, "hebrewToLatin"},
    {Kind::latinToThai, "latinToThai"},
    {Kind::thaiToLatin, "thaiToLatin"},
    {Kind::latinToCyrillic, "latinToCyrillic"},
    {Kind::cyrillicToLatin, "cyrillicToLatin"},
    {Kind::latinToGreek, "latinToGreek"},
    {Kind::greekToLatin, "greekToLatin"},
    {Kind::mandarinToLatin, "mandarinToLatin"},
    {Kind::hiraganaToKatakana, "hiraganaToKatakana"},
}};

// Compile-time proof that the table is in raw-value order, so every kind has exactly one name.
constexpr bool kindNamesInOrder() {
    for (std::size_t index = 0; index < kindNames.size(); ++index) {
        if (static_cast<std::size_t>(kindNames[index].first) != index) return false;
    }
    return true;
}
static_assert(kindNamesInOrder());

TextEdit transformEdit(const ParsedArguments&, std::vector<std::string>& operands) {
    const std::string name = takeOperand(operands, "transform kind (see quod transform --help)");
    for (const auto& [kind, kindName] : kindNames) {
        if (equalIgnoringAsciiCase(name, kindName)) {
            return {.apply = [kind](QuodTextView& view) { Text::transform(kind, view); },
                    .inPieces = [kind] { return std::make_unique<TransformPieces>(kind); }};
        }
    }
    throw UsageError("no transform named '" + name + "' (see quod transform --help)");
}

TextEdit xmlEscapeEdit(const ParsedArguments&, std::vector<std::string>&) {
    return {.apply = Text::prepareForXML, .inPieces = linePieces(Text::prepareStringForXML)};
}

std::string countReport(const Text::SelectionCount& count) {
    return "characters: " + std::to_string(count.characters) +
           "\nwords: " + std::to_string(count.words) + "\n";
}

// Counting needs whole characters only: the counter carries a cluster or word across pieces.
class CountPieces : public PieceRewrite {
  public:
    Cut cut() const override { return Cut::characterStart; }
    void rewrite(std::string_view piece, std::string&) override { counter_.add(toUtf16(piece)); }
    void finish(std::string& out) override { out += countReport(counter_.count()); }

  private:
    Text::SelectionCounter counter_;
};

TextEdit countEdit(const ParsedArguments&, std::vector<std::string>&) {
    return {.reach = Reach::wholeLines,
            .report =
                [](const QuodTextView& view) {
                    Text::SelectionCounter counter;
                    view.textStorage().forEachPiece(
                        view.selectedRange(),
                        [&counter](std::u16string_view piece) { counter.add(piece); });
                    return countReport(counter.count());
                },
            .inPieces = [] { return std::make_unique<CountPieces>(); }};
}

template <EditFactory factory, const auto& options>
int run(const Command& command, std::span<const std::string> arguments) {
    return runTextCommand(command, arguments, options, factory);
}

template <EditFactory factory>
int runWithoutOptions(const Command& command, std::span<const std::string> arguments) {
    return runTextCommand(command, arguments, {}, factory);
}

std::string transformHelp() {
    std::string help =
        "Runs the text through one of the named transliterations. A transform that cannot run,\n"
        "or changes nothing, leaves the text as it is. Kinds (letter case does not matter):\n";
    for (std::size_t index = 0; index < kindNames.size(); ++index) {
        help += index % 3 == 0 ? "\n  " : "";
        std::string name(kindNames[index].second);
        name.resize(std::max<std::size_t>(name.size() + 1, 24), ' ');
        help += name;
    }
    while (help.ends_with(' '))
        help.pop_back();
    return help + "\n";
}

const std::string& transformHelpText() {
    static const std::string text = transformHelp();
    return text;
}

const std::vector<Command>& textCommandTable() {
    static const std::vector<Command> table{
        {"line-endings", "(--to unix|windows|macOS9 | --show | --remove)",
         "convert, show or remove line endings",
         "--to converts CR LF, CR and LF endings to one convention; --show replaces each CR and\n"
         "LF by a pilcrow; --remove joins the lines. Other line separators are left alone.\n",
         run<lineEndingsEdit, lineEndingsOptions>},
        {"sort", "[--reverse]", "sort lines in the order a file browser uses",
         "Sorts the lines in localized standard order (digit runs by value, letter case second).\n"
         "Equal lines keep their order; --reverse puts greater lines first.\n",
         run<sortEdit, sortOptions>},
        {"unique", "", "keep the first of each group of equal lines",
         "Removes every line that repeats an earlier one; lines that differ only in how their\n"
         "accents are composed count as equal.\n",
         runWithoutOptions<uniqueEdit>},
        {"indent", "[--with STRING]", "insert an indent at the start of each line",
         "Inserts STRING (a tab by default) at the start of every line, empty lines included.\n",
         run<indentEdit, indentOptions>},
        {"outdent", "", "remove one leading space or tab from each line",
         "Removes one leading space or tab from every line, never more than one.\n",
         runWithoutOptions<outdentEdit>},
        {"trim", "", "remove trailing whitespace and empty blank lines",
         "Removes whitespace at the ends of lines and empties lines that hold nothing else.\n",
         runWithoutOptions<trimEdit>},
        {"comment", "--token STRING", "comment out lines, or uncomment them",
         "If the first line starts with STRING (after spaces and tabs), removes the first STRING\n"
         "from every line; otherwise puts STRING at the start of every line.\n",
         run<commentEdit, commentOptions>},
        {"case", "upper|lower|capitalize", "change letter case",
         "Changes letter case by the rules of the current locale (LC_ALL, LC_CTYPE, LANG).\n",
         runWithoutOptions<caseEdit>},
        {"transform", "KIND", "transliterate (to Latin, strip accents, XML hex, ...)",
         transformHelpText(), runWithoutOptions<transformEdit>},
        {"xml-escape", "", "escape &, < and > for XML",
         "Escapes &, < and > as entities. Text escaped already is not escaped twice.\n",
         runWithoutOptions<xmlEscapeEdit>},
        {"count", "", "count characters and words",
         "Prints the characters (as a reader sees them: an emoji of several code points is one)\n"
         "and the words of the text, line terminators included.\n",
         runWithoutOptions<countEdit>},
    };
    return table;
}

}  // namespace

std::span<const Command> textCommands() {
    return textCommandTable();
}

}  // namespace quod::tool
