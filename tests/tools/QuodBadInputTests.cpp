// Every text command on input that a careless caller or a damaged file hands it: empty files, a
// 0-byte standard input, nothing but line terminators, bytes in no encoding, missing files and
// read-only files in place. The tool must answer with a clean result or one line of error, a
// non-zero exit and no output, and never touch a file it could not write.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <vector>

#include "QuodRunner.h"
#include "tests/support/TemporaryFolder.h"

namespace quod::testing {
namespace {

struct TextCommandCase {
    std::vector<std::string> arguments;
    std::string fromTerminators;  // the output for "\n\r\n\r"
};

// Invalid UTF-8 that no encoding detector places either.
const std::string undecodable("\xc3\x28\xa0\xa1\x81\x8d\xff", 7);
const std::string onlyTerminators = "\n\r\n\r";

class TextCommandOnBadInput : public ::testing::TestWithParam<TextCommandCase> {
  protected:
    [[nodiscard]] std::vector<std::string> with(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments = GetParam().arguments;
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    [[nodiscard]] bool isCount() const { return GetParam().arguments.front() == "count"; }
    [[nodiscard]] std::string emptyOutput() const {
        return isCount() ? "characters: 0\nwords: 0\n" : "";
    }

    const TemporaryFolder folder{"quod-test"};
};

void expectOneLineError(const QuodRun& run, int status = 1) {
    EXPECT_EQ(run.exitStatus, status);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.starts_with("quod: ")) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
}

TEST_P(TextCommandOnBadInput, EmptyFileAndEmptyStandardInputGiveEmptyText) {
    const QuodRun fromFile = runQuod(with({folder.write("empty", "")}));
    EXPECT_EQ(fromFile.exitStatus, 0) << fromFile.err;
    EXPECT_EQ(fromFile.out, emptyOutput());
    const QuodRun fromStdin = runQuod(with({}), "");
    EXPECT_EQ(fromStdin.exitStatus, 0) << fromStdin.err;
    EXPECT_EQ(fromStdin.out, emptyOutput());
    const QuodRun fromDash = runQuod(with({"-"}), "");
    EXPECT_EQ(fromDash.out, emptyOutput());
}

TEST_P(TextCommandOnBadInput, OnlyTerminatorsAreEmptyLines) {
    const QuodRun run = runQuod(with({folder.write("terminators", onlyTerminators)}));
    EXPECT_EQ(run.exitStatus, 0) << run.err;
    EXPECT_EQ(run.out, GetParam().fromTerminators);
}

TEST_P(TextCommandOnBadInput, BytesInNoEncodingFailWithoutOutput) {
    expectOneLineError(runQuod(with({folder.write("soup", undecodable)})));
    expectOneLineError(runQuod(with({}), undecodable));
    // The UTF-8 mark promises UTF-8; the bytes behind it break the promise.
    expectOneLineError(runQuod(with({folder.write("marked", "\xEF\xBB\xBFok\xFF")})));
}

TEST_P(TextCommandOnBadInput, MissingFileIsNamedInTheError) {
    const QuodRun run = runQuod(with({(folder.path() / "absent.txt").string()}));
    expectOneLineError(run);
    EXPECT_NE(run.err.find("absent.txt"), std::string::npos) << run.err;
    expectOneLineError(runQuod(with({folder.path().string()})));  // a folder is no text
}

TEST_P(TextCommandOnBadInput, InPlaceLeavesAReadOnlyFileAlone) {
    if (isCount()) {
        expectOneLineError(runQuod(with({"-i", folder.write("file", "a\n")})), 2);
        return;
    }
    const std::string original = "b \n  a\t\n";
    const std::string path = folder.write("locked", original);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    // Refused even when run by root, for whom the rename alone would succeed.
    expectOneLineError(runQuod(with({"-i", path})));
    EXPECT_EQ(readFile(path), original);
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"locked"});
}

TEST_P(TextCommandOnBadInput, InPlaceKeepsTheOriginalWhenTheBytesDoNotDecode) {
    if (isCount()) return;
    const std::string path = folder.write("soup", undecodable);
    expectOneLineError(runQuod(with({"-i", path})));
    EXPECT_EQ(readFile(path), undecodable);
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"soup"});
}

INSTANTIATE_TEST_SUITE_P(
    EveryTextCommand, TextCommandOnBadInput,
    ::testing::Values(
        TextCommandCase{{"line-endings", "--to", "windows"}, "\r\n\r\n\r\n"},
        TextCommandCase{{"line-endings", "--to", "unix"}, "\n\n\n"},
        TextCommandCase{{"line-endings", "--show"}, "\u00B6\u00B6\u00B6\u00B6"},
        TextCommandCase{{"line-endings", "--remove"}, ""},
        // The framework joins sorted lines with LF; the final terminator is not a line.
        TextCommandCase{{"sort"}, "\n\n\r"}, TextCommandCase{{"sort", "--reverse"}, "\n\n\r"},
        TextCommandCase{{"unique"}, "\r"}, TextCommandCase{{"indent"}, "\t\n\t\r\n\t\r"},
        TextCommandCase{{"outdent"}, onlyTerminators}, TextCommandCase{{"trim"}, onlyTerminators},
        TextCommandCase{{"comment", "--token", "#"}, "#\n#\r\n#\r"},
        TextCommandCase{{"case", "upper"}, onlyTerminators},
        TextCommandCase{{"transform", "toLatin"}, onlyTerminators},
        TextCommandCase{{"xml-escape"}, onlyTerminators},
        // CR LF is one character to a reader.
        TextCommandCase{{"count"}, "characters: 3\nwords: 0\n"}),
    [](const auto& info) {
        std::string name;
        for (const std::string& argument : info.param.arguments) {
            for (const char c : argument) {
                if (std::isalnum(static_cast<unsigned char>(c))) name += c;
            }
        }
        return name;
    });

TEST(QuodOnBadInput, InformationCommandsAnswerEmptyAndBrokenInput) {
    const TemporaryFolder folder("quod-test");
    const QuodRun empty = runQuod({"encoding", folder.write("empty", "")});
    EXPECT_EQ(empty.exitStatus, 0);
    EXPECT_NE(empty.out.find("no encoding determined (0)"), std::string::npos) << empty.out;
    const QuodRun soup = runQuod({"encoding"}, undecodable);
    EXPECT_EQ(soup.out, "standard input: no encoding determined (0)\n");

    EXPECT_EQ(runQuod({"split-command", ""}).out, "\n");  // one empty argument
    expectOneLineError(runQuod({"split-command", "ls \xff"}));
    expectOneLineError(runQuod({"octal"}), 2);
    for (const char* digits : {"", "8", "75a", "12345", "-1", " 7"})
        expectOneLineError(runQuod({"octal", digits}), 2);
}

TEST(QuodOnBadInput, EncodingReportsAMissingFileAndAnswersTheOthers) {
    const TemporaryFolder folder("quod-test");
    const std::string present = folder.write("present", "plain text\n");
    const QuodRun run = runQuod({"encoding", (folder.path() / "absent").string(), present});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.out, present + ": Unicode (UTF-8) (4), detected\n");
    EXPECT_NE(run.err.find("absent: No such file"), std::string::npos) << run.err;
}

TEST(QuodOnBadInput, UsageMistakesExitWithTwo) {
    expectOneLineError(runQuod({}), 2);
    expectOneLineError(runQuod({"frobnicate"}), 2);
    expectOneLineError(runQuod({"sort", "--sideways"}), 2);
    expectOneLineError(runQuod({"line-endings"}, "a\n"), 2);
    expectOneLineError(runQuod({"line-endings", "--to", "vms"}, "a\n"), 2);
    expectOneLineError(runQuod({"line-endings", "--to"}, "a\n"), 2);
    expectOneLineError(runQuod({"case", "sideways"}, "a\n"), 2);
    expectOneLineError(runQuod({"transform", "toKlingon"}, "a\n"), 2);
    expectOneLineError(runQuod({"comment"}, "a\n"), 2);
    expectOneLineError(runQuod({"sort", "-i"}, "a\n"), 2);
    expectOneLineError(runQuod({"sort", "--lines", "3:1"}, "a\n"), 2);
    expectOneLineError(runQuod({"sort", "--lines", "0:1"}, "a\n"), 2);
    expectOneLineError(runQuod({"sort", "a", "b"}), 2);
}

}  // namespace
}  // namespace quod::testing
