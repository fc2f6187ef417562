// What each command does to ordinary text, end to end through the binary: the framework's
// operation, the selection that --lines makes, and the encoding a file is read and written in.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "QuodRunner.h"
#include "tests/support/TemporaryFolder.h"

namespace quod::testing {
namespace {

// Runs on standard input and expects success.
std::string output(const std::vector<std::string>& arguments, const std::string& input) {
    const QuodRun run = runQuod(arguments, input);
    EXPECT_EQ(run.exitStatus, 0) << run.err;
    EXPECT_EQ(run.err, "");
    return run.out;
}

TEST(QuodLineCommands, SortAndUniqueKeepTheFinalTerminator) {
    const std::string list = "pear\nfile10\nApple\nfile9\napple\npear\n";
    EXPECT_EQ(output({"sort"}, list), "apple\nApple\nfile9\nfile10\npear\npear\n");
    EXPECT_EQ(output({"sort", "--reverse"}, list), "pear\npear\nfile10\nfile9\nApple\napple\n");
    EXPECT_EQ(output({"unique"}, list), "pear\nfile10\nApple\nfile9\napple\n");
    // Composed and decomposed é are the same line.
    EXPECT_EQ(output({"unique"}, "caf\u00e9\ncafe\u0301\n"), "caf\u00e9\n");
    EXPECT_EQ(output({"sort"}, "b\na"), "a\nb");
}

TEST(QuodLineCommands, LinesActOnlyOnTheirRange) {
    const std::string text = "d\nc\nb\na\n";
    EXPECT_EQ(output({"sort", "--lines", "2:3"}, text), "d\nb\nc\na\n");
    EXPECT_EQ(output({"sort", "--lines=3:4"}, text), "d\nc\na\nb\n");
    EXPECT_EQ(output({"indent", "--lines", "2"}, text), "d\n\tc\nb\na\n");
    // A range past the end stops at the last line; one starting past it is an error.
    EXPECT_EQ(output({"indent", "--lines", "3:99"}, text), "d\nc\n\tb\n\ta\n");
    const QuodRun past = runQuod({"sort", "--lines", "5:6"}, text);
    EXPECT_EQ(past.exitStatus, 1);
    EXPECT_NE(past.err.find("the text has 4"), std::string::npos) << past.err;
    EXPECT_EQ(past.out, "");
}

TEST(QuodLineCommands, IndentOutdentTrimAndComment) {
    EXPECT_EQ(output({"indent"}, "a\n\nb\n"), "\ta\n\t\n\tb\n");
    EXPECT_EQ(output({"indent", "--with", "  "}, "a\nb"), "  a\n  b");
    EXPECT_EQ(output({"outdent"}, "\t\ta\n  b\nc\n"), "\ta\n b\nc\n");
    EXPECT_EQ(output({"trim"}, "a \t\n  \nb\u3000\n"), "a\n\nb\n");
    // The first line decides: commented lines lose the token, others get it at column 0.
    const std::string commented = output({"comment", "--token", "//"}, "x = 1;\n\n  y = 2;\n");
    EXPECT_EQ(commented, "//x = 1;\n//\n//  y = 2;\n");
    EXPECT_EQ(output({"comment", "--token", "//"}, commented), "x = 1;\n\n  y = 2;\n");
}

TEST(QuodRewrites, CaseTransformAndXml) {
    EXPECT_EQ(output({"case", "upper"}, "stra\u00dfe\n"), "STRASSE\n");
    EXPECT_EQ(output({"case", "lower"}, "\u00c9COLE\n"), "\u00e9cole\n");
    EXPECT_EQ(output({"case", "capitalize"}, "hello wide world"), "Hello Wide World");
    EXPECT_EQ(output({"transform", "stripDiacritics"}, "cr\u00e8me br\u00fbl\u00e9e\n"),
              "creme brulee\n");
    EXPECT_EQ(output({"transform", "TOXMLHEX"}, "\u00e9"), "&#xE9;");
    EXPECT_EQ(output({"transform", "greekToLatin"}, "\u0391\u03b8\u03ae\u03bd\u03b1"),
              "Ath\u1e17na");
    EXPECT_EQ(output({"xml-escape"}, "a < b && c > d &amp; e\n"),
              "a &lt; b &amp;&amp; c &gt; d &amp; e\n");
    EXPECT_EQ(output({"case", "upper", "--lines", "2"}, "a\nb\nc\n"), "a\nB\nc\n");
}

// Letter case follows LC_ALL, then LC_CTYPE, then LANG; the language of messages plays no part.
TEST(QuodRewrites, CaseFollowsTheLocaleOfCharacterTypes) {
    struct Saved {
        std::string name;
        std::optional<std::string> value;
    };
    std::vector<Saved> saved;
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        saved.push_back({name, value ? std::optional<std::string>(value) : std::nullopt});
    }
    const auto upper = [](const char* all, const char* ctype, const char* messages,
                          const char* lang) {
        const std::pair<const char*, const char*> settings[] = {
            {"LC_ALL", all}, {"LC_CTYPE", ctype}, {"LC_MESSAGES", messages}, {"LANG", lang}};
        for (const auto& [name, value] : settings) {
            if (value) {
                ::setenv(name, value, 1);
            } else {
                ::unsetenv(name);
            }
        }
        return output({"case", "upper"}, "istanbul\n");
    };
    const std::string turkish = "\xC4\xB0STANBUL\n";  // a dotted capital I
    EXPECT_EQ(upper(nullptr, "tr_TR.UTF-8", "en_US.UTF-8", "en_US.UTF-8"), turkish);
    EXPECT_EQ(upper(nullptr, "en_US.UTF-8", "tr_TR.UTF-8", "tr_TR.UTF-8"), "ISTANBUL\n");
    EXPECT_EQ(upper("tr_TR.UTF-8", "en_US.UTF-8", nullptr, nullptr), turkish);
    EXPECT_EQ(upper(nullptr, nullptr, "en_US.UTF-8", "tr_TR.UTF-8"), turkish);
    for (const Saved& variable : saved) {
        if (variable.value) {
            ::setenv(variable.name.c_str(), variable.value->c_str(), 1);
        } else {
            ::unsetenv(variable.name.c_str());
        }
    }
}

TEST(QuodRewrites, LineEndings) {
    const std::string mixed = "a\r\nb\rc\nd";
    EXPECT_EQ(output({"line-endings", "--to", "windows"}, mixed), "a\r\nb\r\nc\r\nd");
    EXPECT_EQ(output({"line-endings", "--to", "unix"}, mixed), "a\nb\nc\nd");
    EXPECT_EQ(output({"line-endings", "--to", "macOS9"}, mixed), "a\rb\rc\rd");
    EXPECT_EQ(output({"line-endings", "--show"}, mixed), "a\u00b6\u00b6b\u00b6c\u00b6d");
    EXPECT_EQ(output({"line-endings", "--remove"}, mixed), "abcd");
    // Terminators of the selected lines only, their last one included.
    EXPECT_EQ(output({"line-endings", "--to", "unix", "--lines", "2"}, mixed), "a\r\nb\nc\nd");
}

TEST(QuodReports, CountSplitCommandAndOctal) {
    // A family emoji of seven code points is one character; CR LF is one too.
    EXPECT_EQ(output({"count"}, "two words\r\n\U0001F468\u200D\U0001F469\u200D\U0001F467\n"),
              "characters: 12\nwords: 2\n");
    EXPECT_EQ(output({"count", "--lines", "2:2"}, "one\ntwo three\nfour\n"),
              "characters: 10\nwords: 2\n");
    EXPECT_EQ(output({"split-command", R"(cp "My Files" a\ b 'c d')"}, ""),
              "cp\nMy Files\na b\nc d\n");
    EXPECT_EQ(output({"octal", "755"}, ""), "u=rwx,g=r-x,o=r-x\n");
    EXPECT_EQ(output({"octal", "4750"}, ""), "u=rwx,g=r-x,o=---\n");
    EXPECT_EQ(output({"octal", "022", "--mask"}, ""), "u=rwx,g=r-x,o=r-x\n");
}

TEST(QuodEncodings, DeclaredAndDetectedEncodingsAreNamed) {
    const TemporaryFolder folder("quod-test");
    const std::string html = folder.write(
        "page.html",
        "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=windows-1252\">");
    const std::string marked = folder.write("marked", std::string("\xFF\xFE"
                                                                  "a\0b\0",
                                                                  6));
    const QuodRun run = runQuod({"encoding", html, marked});
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(run.out, html + ": Western (Windows Latin 1) (12), declared\n" + marked +
                           ": Unicode (UTF-16LE) (2483028224), detected\n");
}

// --encoding reads and writes in the named encoding, by IANA name or listed name in any case, and
// says so when the bytes do not fit it or no encoding has that name.
TEST(QuodEncodings, ANamedEncodingIsUsedInsteadOfTheGuess) {
    // Valid UTF-8 that is really Latin-1: each byte stays one character, and "Ã©" has no case to
    // change, where the UTF-8 reading makes é an É.
    const std::string text = "caf\xC3\xA9\n";
    EXPECT_EQ(output({"case", "upper", "--encoding", "ISO-8859-1"}, text), "CAF\xC3\xA9\n");
    EXPECT_EQ(output({"case", "upper", "--encoding=western (windows latin 1)"}, text),
              "CAF\xC3\xA9\n");
    EXPECT_EQ(output({"case", "upper"}, text), "CAF\xC3\x89\n");
    EXPECT_EQ(output({"count", "--encoding", "utf-16le"}, std::string("h\0i\0", 4)),
              "characters: 2\nwords: 1\n");

    const QuodRun notUtf8 = runQuod({"case", "upper", "--encoding", "utf-8"}, "caf\xE9\n");
    EXPECT_EQ(notUtf8.exitStatus, 1);
    EXPECT_EQ(notUtf8.out, "");
    EXPECT_NE(notUtf8.err.find("do not decode as Unicode (UTF-8)"), std::string::npos)
        << notUtf8.err;
    const QuodRun unknown = runQuod({"trim", "--encoding", "klingon"}, "text\n");
    EXPECT_EQ(unknown.exitStatus, 2);
    EXPECT_NE(unknown.err.find("no encoding named 'klingon'"), std::string::npos) << unknown.err;
}

TEST(QuodEncodings, TextIsWrittenBackInItsOwnEncoding) {
    // Latin-1 bytes are not UTF-8; the detector places them, and upper case stays one byte each.
    const std::string latin1 =
        "caf\xe9 cr\xe8me br\xfbl\xe9"
        "e, na\xefve fa\xe7"
        "ade\n";
    EXPECT_EQ(output({"case", "upper"}, latin1),
              "CAF\xc9 CR\xc8ME BR\xdbL\xc9"
              "E, NA\xcfVE FA\xc7"
              "ADE\n");
    EXPECT_EQ(output({"trim"}, latin1), latin1);
    // A byte-order mark and the byte order survive.
    EXPECT_EQ(output({"case", "upper"}, std::string("\xFF\xFE"
                                                    "a\0b\0\n\0",
                                                    8)),
              std::string("\xFF\xFE"
                          "A\0B\0\n\0",
                          8));
    EXPECT_EQ(output({"case", "upper"}, "\xEF\xBB\xBFok\n"), "\xEF\xBB\xBFOK\n");
    // Greek has no place in Latin-1: an error and no output, not question marks.
    const QuodRun greek = runQuod({"transform", "latinToGreek"}, latin1);
    EXPECT_EQ(greek.exitStatus, 1);
    EXPECT_EQ(greek.out, "");
    EXPECT_NE(greek.err.find("cannot hold"), std::string::npos) << greek.err;
}

TEST(QuodInPlace, ReplacesTheFileAndKeepsItsPermissions) {
    const TemporaryFolder folder("quod-test");
    const std::string path = folder.write("list", "b\na\n");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    const QuodRun run = runQuod({"sort", "--in-place", path});
    EXPECT_EQ(run.exitStatus, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(readFile(path), "a\nb\n");
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"list"});
}

TEST(QuodHelp, TheToolAndEveryCommandExplainThemselves) {
    const std::string overview = output({"--help"}, "");
    for (const char* command :
         {"line-endings", "sort", "unique", "indent", "outdent", "trim", "comment", "case",
          "transform", "xml-escape", "count", "encoding", "split-command", "octal"}) {
        EXPECT_NE(overview.find(std::string("  ") + command + " "), std::string::npos) << command;
        const std::string help = output({command, "--help"}, "");
        EXPECT_TRUE(help.starts_with(std::string("usage: quod ") + command)) << help;
    }
    EXPECT_NE(output({"transform", "--help"}, "").find("hiraganaToKatakana"), std::string::npos);
    EXPECT_EQ(output({"--version"}, ""), "quod " QUOD_EXPECTED_VERSION "\n");
}

}  // namespace
}  // namespace quod::testing
