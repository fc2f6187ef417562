// Times the same operations on the same document for three text stores: Quoddle's QuodTextView
// over its TextStorage, a QScintilla editor (QsciScintilla, driven by Scintilla messages) and Qt's
// QTextDocument. bench/compare-storage.sh builds this against an installed Quoddle, generates the
// documents and prints the comparison table.
//
//   storage-peers --generate FILE --size MB
//       writes the test document: lines of 50-70 bytes of lowercase words, 5 % of them ending in
//       CR LF and the rest in LF, an "é" about once per 100 letters and a "—" about every 20
//       lines. The random numbers come straight from a seeded mt19937_64 (no distributions, whose
//       output differs between standard libraries), so every run writes the same bytes.
//   storage-peers --store quoddle|qscintilla|qtextdocument --file FILE [--measure main|replace]
//                 [--random-edits N] [--queries N]
//       measures one store and prints "key value" lines. One store per process, so that what one
//       store leaves in the heap never counts against another.
//
// --measure main (the default):
//   load_ms             reading the file and building the store from its path, best of 5 (of 3
//                       from 50 MB on); the empty container (widget, document) is made
//                       beforehand, outside the timing and the memory readings
//   load_rss_per_byte   resident memory after the first load minus before it, per file byte
//                       (/proc/self/statm, malloc_trim(0) before both readings)
//   load_peak_per_byte  the high-water mark during that load minus resident memory before it
//   near_edit_us        insert one "x" and delete it again at a cursor that moves up to 40
//                       positions either way between edits; median over batches of 100 edits
//   random_edit_us      the same insert and delete at a random position; median of N edits
//   undo_us             N single insertions at random positions, then each of N undos timed;
//                       median
//   line_of_position_us, start_of_line_us
//                       the line of a random position, the start of a random line; average over
//                       --queries (1,000,000) queries at positions drawn beforehand
// --measure replace (meant for a fresh process):
//   replace_peak_per_byte  select all, replace with one word, undo, redo: the high-water mark
//                       during those four steps (reset after loading through clear_refs) minus
//                       resident memory before loading, per file byte
//   replace_ms          the time those four steps take together
//
// Positions are each store's own units: UTF-16 units for Quoddle, bytes for QScintilla, QChars
// for QTextDocument (which turns CR LF into one block break). Random positions are drawn as the
// same fractions of each store's length, so all three edit at the same places of the text. Every
// edit is one undoable step in each store; a step that merged with its neighbour would make the
// undo count come out wrong, and the harness checks the text's length after each phase and the
// line questions against each other, stopping with a message if anything disagrees.
//
// N (--random-edits) defaults to 2000 below 5 MB, 1000 below 50 MB and 200 from there on: a random
// edit in a gap buffer moves on average a third of a 100 MB text.

// Quoddle's headers before Qt's: QScintilla needs Qt's `signals` and `emit` keywords, and the
// `emit` macro must not reach the core's Signal::emit.
#include "quoddle/text/QuodTextView.h"
#include "quoddle/text/TextStorage.h"

#include <QApplication>
#include <QFile>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <Qsci/qsciscintilla.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

[[noreturn]] void fail(const std::string& message) {
    std::fprintf(stderr, "storage-peers: %s\n", message.c_str());
    std::exit(1);
}

// --- The document ---

void generateDocument(const std::string& path, int64_t megabytes) {
    const int64_t bytes = megabytes * 1'000'000;
    std::mt19937_64 random(42);
    std::string text;
    text.reserve(static_cast<std::size_t>(bytes + 100));
    // An "é" takes two bytes, so a line may end a byte or two past its target.
    auto letters = [&](std::string& line, int64_t count) {
        for (int64_t i = 0; i < count; ++i) {
            if (random() % 100 == 0) {
                line += "\xC3\xA9";  // é
            } else {
                line += static_cast<char>('a' + random() % 26);
            }
        }
    };
    std::string line;
    while (std::ssize(text) < bytes) {
        const int64_t target = 50 + static_cast<int64_t>(random() % 21);  // bytes before the end
        bool dash = random() % 20 == 0;
        line.clear();
        letters(line, 2 + static_cast<int64_t>(random() % 8));
        while (std::ssize(line) < target) {
            const int64_t room = target - std::ssize(line);
            if (room < 3) {  // too little for a space and a word: lengthen the last word
                letters(line, room);
            } else if (dash && room > 8) {
                line += " \xE2\x80\x94";  // —, three bytes
                dash = false;
            } else {
                line += ' ';
                letters(line, room - 1 <= 10 ? room - 1 : 2 + static_cast<int64_t>(random() % 8));
            }
        }
        text += line;
        text += random() % 20 == 0 ? "\r\n" : "\n";
    }
    std::ofstream out(path, std::ios::binary);
    out.write(text.data(), std::ssize(text));
    if (!out.flush()) fail("cannot write " + path);
}

// --- Measuring ---

double fileSize(const std::string& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error) fail(path + ": " + error.message());
    return static_cast<double>(size);
}

using Clock = std::chrono::steady_clock;

double microsecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

int64_t residentBytes() {
    std::ifstream statm("/proc/self/statm");
    int64_t size = 0, resident = 0;
    statm >> size >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

int64_t peakResidentBytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) return std::stoll(line.substr(6)) * 1024;
    }
    fail("no VmHWM in /proc/self/status");
}

// Lowers the high-water mark to what is resident now, so that a later peak belongs to what ran
// in between.
void resetPeak() {
    std::ofstream clearRefs("/proc/self/clear_refs");
    clearRefs << "5";
    if (!clearRefs.flush()) fail("cannot reset VmHWM through /proc/self/clear_refs");
}

// Fractions in [0, 1) from a seeded generator, so that every store gets the same places.
class Fractions {
  public:
    explicit Fractions(uint64_t seed) : random_(seed) {}
    // An integer in [0, count).
    int64_t below(int64_t count) {
        const double fraction = static_cast<double>(random_() >> 11) * 0x1.0p-53;
        return std::min(count - 1, static_cast<int64_t>(fraction * static_cast<double>(count)));
    }

  private:
    std::mt19937_64 random_;
};

// --- The stores ---

class Store {
  public:
    virtual ~Store() = default;
    // Makes the empty container the document goes into; not timed.
    virtual void prepare() {}
    // Reads the file and fills the store from it; timed.
    virtual void load(const std::string& path) = 0;
    virtual void unload() = 0;
    virtual int64_t length() = 0;
    virtual int64_t lineCount() = 0;
    virtual void insertCharacter(int64_t position) = 0;
    virtual void deleteCharacter(int64_t position) = 0;
    virtual void undo() = 0;
    virtual void redo() = 0;
    virtual int64_t lineOfPosition(int64_t position) = 0;
    virtual int64_t startOfLine(int64_t line) = 0;
    virtual void replaceAllWithWord() = 0;
};

class QuoddleStore final : public Store {
  public:
    void load(const std::string& path) override {
        auto storage = quod::TextStorage::fromUtf8File(path);
        if (!storage) fail("cannot read " + path);
        view_ = std::make_unique<quod::QuodTextView>(std::move(*storage));
    }
    void unload() override { view_.reset(); }
    int64_t length() override { return view_->length(); }
    int64_t lineCount() override { return view_->textStorage().lineCount(); }
    void insertCharacter(int64_t position) override {
        view_->replaceWithUndo(u"x", {position, 0}, false);
    }
    void deleteCharacter(int64_t position) override {
        view_->replaceWithUndo(u"", {position, 1}, false);
    }
    void undo() override { view_->undo(); }
    void redo() override { view_->redo(); }
    int64_t lineOfPosition(int64_t position) override {
        return view_->textStorage().lineIndexOfPosition(position);
    }
    int64_t startOfLine(int64_t line) override { return view_->textStorage().startOfLine(line); }
    void replaceAllWithWord() override {
        view_->selectAll();
        view_->replaceWithUndo(u"word", view_->selectedRange(), false);
    }

  private:
    std::unique_ptr<quod::QuodTextView> view_;
};

QByteArray readFile(const std::string& path) {
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly)) fail("cannot read " + path);
    return file.readAll();
}

class ScintillaStore final : public Store {
  public:
    void prepare() override {
        editor_ = std::make_unique<QsciScintilla>();
        editor_->setUtf8(true);
        send(QsciScintillaBase::SCI_SETMODEVENTMASK, 0);
    }
    void load(const std::string& path) override {
        const QByteArray bytes = readFile(path);
        // As an editor opens a file: room for the whole text at once, and no undo step for it.
        // The room is one byte more than the text: an insertion that would fill the gap exactly
        // makes the buffer grow again (at 10 MB that left 4.5 bytes resident per file byte
        // instead of 2.1).
        send(QsciScintillaBase::SCI_SETUNDOCOLLECTION, 0);
        send(QsciScintillaBase::SCI_ALLOCATE, static_cast<unsigned long>(bytes.size()) + 1);
        editor_->SendScintilla(QsciScintillaBase::SCI_APPENDTEXT,
                               static_cast<uintptr_t>(bytes.size()), bytes.constData());
        send(QsciScintillaBase::SCI_SETUNDOCOLLECTION, 1);
        send(QsciScintillaBase::SCI_EMPTYUNDOBUFFER);
    }
    void unload() override { editor_.reset(); }
    int64_t length() override { return send(QsciScintillaBase::SCI_GETLENGTH); }
    int64_t lineCount() override { return send(QsciScintillaBase::SCI_GETLINECOUNT); }
    void insertCharacter(int64_t position) override {
        editor_->SendScintilla(QsciScintillaBase::SCI_INSERTTEXT,
                               static_cast<uintptr_t>(position), "x");
    }
    void deleteCharacter(int64_t position) override {
        send(QsciScintillaBase::SCI_DELETERANGE, static_cast<unsigned long>(position), 1);
    }
    void undo() override { send(QsciScintillaBase::SCI_UNDO); }
    void redo() override { send(QsciScintillaBase::SCI_REDO); }
    int64_t lineOfPosition(int64_t position) override {
        return send(QsciScintillaBase::SCI_LINEFROMPOSITION, static_cast<unsigned long>(position));
    }
    int64_t startOfLine(int64_t line) override {
        return send(QsciScintillaBase::SCI_POSITIONFROMLINE, static_cast<unsigned long>(line));
    }
    void replaceAllWithWord() override {
        send(QsciScintillaBase::SCI_SELECTALL);
        editor_->SendScintilla(QsciScintillaBase::SCI_REPLACESEL, uintptr_t{0}, "word");
    }

  private:
    long send(unsigned int message, unsigned long wParam = 0, long lParam = 0) {
        return editor_->SendScintilla(message, wParam, lParam);
    }
    std::unique_ptr<QsciScintilla> editor_;
};

class TextDocumentStore final : public Store {
  public:
    void prepare() override { document_ = std::make_unique<QTextDocument>(); }
    void load(const std::string& path) override {
        document_->setPlainText(QString::fromUtf8(readFile(path)));
        cursor_ = QTextCursor(document_.get());
    }
    void unload() override {
        cursor_ = QTextCursor();
        document_.reset();
    }
    // Without the paragraph separator that ends every document.
    int64_t length() override { return document_->characterCount() - 1; }
    int64_t lineCount() override { return document_->blockCount(); }
    void insertCharacter(int64_t position) override {
        cursor_.setPosition(static_cast<int>(position));
        cursor_.insertText(QStringLiteral("x"));
    }
    void deleteCharacter(int64_t position) override {
        cursor_.setPosition(static_cast<int>(position));
        cursor_.setPosition(static_cast<int>(position) + 1, QTextCursor::KeepAnchor);
        cursor_.removeSelectedText();
    }
    void undo() override { document_->undo(); }
    void redo() override { document_->redo(); }
    int64_t lineOfPosition(int64_t position) override {
        return document_->findBlock(static_cast<int>(position)).blockNumber();
    }
    int64_t startOfLine(int64_t line) override {
        return document_->findBlockByNumber(static_cast<int>(line)).position();
    }
    void replaceAllWithWord() override {
        QTextCursor all(document_.get());
        all.select(QTextCursor::Document);
        all.insertText(QStringLiteral("word"));
    }

  private:
    std::unique_ptr<QTextDocument> document_;
    QTextCursor cursor_;
};

// --- The measures ---

void print(const char* key, double value) { std::printf("%s %.6g\n", key, value); }
void print(const char* key, int64_t value) {
    std::printf("%s %lld\n", key, static_cast<long long>(value));
}

void expectLength(Store& store, int64_t expected, const char* after) {
    if (store.length() != expected) {
        fail("length " + std::to_string(store.length()) + " after " + after + ", expected " +
             std::to_string(expected));
    }
}

// The line questions answer each other: the start of line n lies in line n, the unit before it
// in line n - 1.
void checkLineQuestions(Store& store) {
    const int64_t lines = store.lineCount();
    Fractions fractions(17);
    for (int i = 0; i < 1000; ++i) {
        const int64_t line = 1 + fractions.below(lines - 1);
        const int64_t start = store.startOfLine(line);
        if (store.lineOfPosition(start) != line || store.lineOfPosition(start - 1) != line - 1) {
            fail("line " + std::to_string(line) + " starts at " + std::to_string(start) +
                 ", which lies in line " + std::to_string(store.lineOfPosition(start)));
        }
    }
}

void measureQueries(Store& store, int64_t count) {
    const int64_t length = store.length();
    const int64_t lines = store.lineCount();
    Fractions fractions(19);
    std::vector<int64_t> positions(static_cast<std::size_t>(count));
    std::vector<int64_t> lineNumbers(static_cast<std::size_t>(count));
    for (auto& position : positions) position = fractions.below(length);
    for (auto& line : lineNumbers) line = fractions.below(lines);
    int64_t sum = 0;
    auto start = Clock::now();
    for (const int64_t position : positions) sum += store.lineOfPosition(position);
    print("line_of_position_us", microsecondsSince(start) / static_cast<double>(count));
    start = Clock::now();
    for (const int64_t line : lineNumbers) sum += store.startOfLine(line);
    print("start_of_line_us", microsecondsSince(start) / static_cast<double>(count));
    print("query_checksum", sum);
}

void measureNearEdits(Store& store) {
    constexpr int batchSize = 100, batches = 300;
    const int64_t length = store.length();
    std::mt19937_64 steps(7);
    int64_t position = length / 2;
    std::vector<double> perEdit;
    // Batch -1 is not counted: its first edit moves the gap (or its like) from where loading left
    // it, which is a one-off.
    for (int batch = -1; batch < batches; ++batch) {
        const auto start = Clock::now();
        for (int i = 0; i < batchSize; ++i) {
            position = std::clamp<int64_t>(position + static_cast<int64_t>(steps() % 81) - 40, 1,
                                           length - 1);
            store.insertCharacter(position);
            store.deleteCharacter(position);
        }
        if (batch >= 0) perEdit.push_back(microsecondsSince(start) / batchSize);
    }
    expectLength(store, length, "the edits near a cursor");
    print("near_edit_us", median(perEdit));
}

void measureRandomEdits(Store& store, int count) {
    const int64_t length = store.length();
    Fractions fractions(11);
    std::vector<double> times;
    for (int i = 0; i < count; ++i) {
        const int64_t position = fractions.below(length);
        const auto start = Clock::now();
        store.insertCharacter(position);
        store.deleteCharacter(position);
        times.push_back(microsecondsSince(start));
    }
    expectLength(store, length, "the edits at random places");
    print("random_edit_us", median(times));
}

void measureUndo(Store& store, int count) {
    const int64_t length = store.length();
    Fractions fractions(13);
    int64_t previous = -2;
    for (int i = 0; i < count; ++i) {
        int64_t position = fractions.below(length);
        // An insertion right behind the previous one would join its undo step in the peers.
        while (position == previous + 1) position = fractions.below(length);
        store.insertCharacter(position);
        previous = position;
    }
    expectLength(store, length + count, "the insertions before undoing");
    std::vector<double> times;
    for (int i = 0; i < count; ++i) {
        const auto start = Clock::now();
        store.undo();
        times.push_back(microsecondsSince(start));
    }
    expectLength(store, length, "undoing each insertion");
    print("undo_us", median(times));
}

void measureMain(Store& store, const std::string& path, int randomEdits, int64_t queries) {
    const double fileBytes = fileSize(path);
    const int repeats = fileBytes < 50e6 ? 5 : 3;

    store.prepare();
    malloc_trim(0);
    const int64_t before = residentBytes();
    resetPeak();
    auto start = Clock::now();
    store.load(path);
    std::vector<double> loadTimes{microsecondsSince(start) / 1000};
    const int64_t peak = peakResidentBytes();
    malloc_trim(0);
    print("load_rss_per_byte", static_cast<double>(residentBytes() - before) / fileBytes);
    print("load_peak_per_byte", static_cast<double>(peak - before) / fileBytes);
    for (int i = 1; i < repeats; ++i) {
        store.unload();
        malloc_trim(0);
        store.prepare();
        start = Clock::now();
        store.load(path);
        loadTimes.push_back(microsecondsSince(start) / 1000);
    }
    print("load_ms", *std::min_element(loadTimes.begin(), loadTimes.end()));
    print("file_bytes", static_cast<int64_t>(fileBytes));
    print("length", store.length());
    print("lines", store.lineCount());

    checkLineQuestions(store);
    measureQueries(store, queries);
    measureNearEdits(store);
    measureRandomEdits(store, randomEdits);
    measureUndo(store, randomEdits);
    print("random_edits", int64_t{randomEdits});
}

void measureReplace(Store& store, const std::string& path) {
    const double fileBytes = fileSize(path);
    store.prepare();
    malloc_trim(0);
    const int64_t before = residentBytes();
    store.load(path);
    const int64_t length = store.length();
    malloc_trim(0);
    resetPeak();
    const auto start = Clock::now();
    store.replaceAllWithWord();
    expectLength(store, 4, "replacing everything with a word");
    store.undo();
    expectLength(store, length, "undoing the replacement");
    store.redo();
    const double elapsed = microsecondsSince(start) / 1000;
    expectLength(store, 4, "redoing the replacement");
    print("replace_peak_per_byte", static_cast<double>(peakResidentBytes() - before) / fileBytes);
    print("replace_ms", elapsed);
}

[[noreturn]] void usage() {
    fail("usage: storage-peers --generate FILE --size MB\n"
         "       storage-peers --store quoddle|qscintilla|qtextdocument --file FILE\n"
         "                     [--measure main|replace] [--random-edits N] [--queries N]");
}

}  // namespace

int main(int argc, char** argv) {
    std::string generate, store, file, measure = "main";
    int64_t size = 0, queries = 1'000'000;
    int randomEdits = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (i + 1 >= argc) usage();
        const std::string value = argv[++i];
        if (option == "--generate") generate = value;
        else if (option == "--size") size = std::stoll(value);
        else if (option == "--store") store = value;
        else if (option == "--file") file = value;
        else if (option == "--measure") measure = value;
        else if (option == "--random-edits") randomEdits = std::stoi(value);
        else if (option == "--queries") queries = std::stoll(value);
        else usage();
    }
    if (!generate.empty()) {
        if (size <= 0) usage();
        generateDocument(generate, size);
        return 0;
    }
    if (file.empty() || (measure != "main" && measure != "replace")) usage();
    if (randomEdits <= 0) {
        const double bytes = fileSize(file);
        randomEdits = bytes < 5e6 ? 2000 : bytes < 50e6 ? 1000 : 200;
    }

    // Quoddle's store runs without Qt; the peers need an application object for fonts and
    // widgets, on the offscreen platform unless told otherwise.
    std::unique_ptr<QApplication> application;
    std::unique_ptr<Store> chosen;
    if (store == "quoddle") {
        chosen = std::make_unique<QuoddleStore>();
    } else if (store == "qscintilla" || store == "qtextdocument") {
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        application = std::make_unique<QApplication>(argc, argv);
        if (store == "qscintilla") chosen = std::make_unique<ScintillaStore>();
        else chosen = std::make_unique<TextDocumentStore>();
    } else {
        usage();
    }
    std::printf("store %s\n", store.c_str());
    if (measure == "main") measureMain(*chosen, file, randomEdits, queries);
    else measureReplace(*chosen, file);
    chosen.reset();
    return 0;
}
