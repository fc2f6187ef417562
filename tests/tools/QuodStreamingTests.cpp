// Commands that go through a file in windows (or, sorting, over its undecoded bytes) give, byte
// for byte, what the whole-text way gives, wherever the windows are cut: windows of one to five
// bytes put a cut inside every CR LF pair, every multi-byte character and every cluster of a base
// and its marks.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>
#include <string>
#include <vector>

#include "QuodRunner.h"
#include "tests/support/TemporaryFolder.h"

namespace quod::testing {
namespace {

QuodRun runWithWindows(const std::vector<std::string>& arguments, const std::string& input,
                       const std::string& windowBytes) {
    ::setenv("QUOD_TEST_WINDOW_BYTES", windowBytes.c_str(), 1);
    QuodRun run = runQuod(arguments, input);
    ::unsetenv("QUOD_TEST_WINDOW_BYTES");
    return run;
}

TEST(QuodStreaming, WindowsCutAnywhereGiveTheWholeTextResult) {
    const std::string inputs[] = {
        "Hello w\xC3\xB6rld\r\nline two\rthree\n\xCF\x83\xCE\xAF\xCE\xB3\xCE\xBC\xCE\xB1 "
        "\xCE\xA3\xCE\x8A\xCE\x93\xCE\x9C\xCE\x91 & <tag> &amp;\nend\r",
        "\xEF\xBB\xBF"
        "marked text\r\n\xF0\x9F\x98\x80 emoji \xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD\n"
        "e\xCC\x81 \xC3\xA9 stra\xC3\x9F"
        "e \xEF\xAC\x81 istanbul\r\r\n\n",
        "no terminator at the end and a lone CR\rx",
        "\xCE\x9F\xCE\x94\xCE\x9F\xCE\xA3\r\n\xCE\x9F\xCE\x94\xCE\x9F\xCE\xA3\nkos\nchung\xE2\x80"
        "\xA8"
        "\xE4\xB8\xAD\xE6\x96\x87 kos\r\n",
        "caf\xC3\xA9\ncafe\xCC\x81\r\nx\xC2\x85x\xE2\x80\xA9"
        "caf\xC3\xA9\n\nx\n\n",
        "",
    };
    const std::vector<std::vector<std::string>> commands = {
        {"line-endings", "--to", "windows"},
        {"line-endings", "--to", "unix"},
        {"line-endings", "--to", "macOS9"},
        {"line-endings", "--show"},
        {"line-endings", "--remove"},
        {"case", "upper"},
        {"case", "lower"},
        {"case", "capitalize"},
        {"xml-escape"},
        {"transform", "toLatin"},
        {"transform", "latinToGreek"},
        {"transform", "toXMLHex"},
        {"transform", "latinToKatakana"},
        {"count"},
        {"unique"},
        {"sort"},
        {"sort", "--reverse"},
    };
    for (const std::string& input : inputs) {
        for (const auto& command : commands) {
            const QuodRun whole = runWithWindows(command, input, "0");
            ASSERT_EQ(whole.exitStatus, 0) << whole.err;
            for (const char* window : {"1", "2", "5"}) {
                const QuodRun streamed = runWithWindows(command, input, window);
                EXPECT_EQ(streamed.exitStatus, 0) << streamed.err;
                EXPECT_EQ(streamed.out, whole.out)
                    << command.front() << " " << command.back() << " in windows of " << window
                    << " on " << ::testing::PrintToString(input);
            }
        }
    }
}

// Random texts of the pieces where cuts go wrong, through every streaming command in windows of
// random small sizes: the same bytes as the whole-text way.
TEST(QuodStreaming, RandomTextsInRandomWindowsGiveTheWholeTextResult) {
    const std::string pieces[] = {"a",
                                  "Z",
                                  " ",
                                  "\t",
                                  "\n",
                                  "\r",
                                  "\r\n",
                                  "\xC3\xA9",
                                  "e\xCC\x81",
                                  "\xCF\x83",
                                  "\xCE\xA3",
                                  "&",
                                  "<",
                                  "\xC2\x85",
                                  "\xE2\x80\xA8",
                                  "\xF0\x9F\x98\x80",
                                  "\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD",
                                  "42",
                                  "ss",
                                  "\xC3\x9F",
                                  "\xE4\xB8\xAD"};
    const std::vector<std::vector<std::string>> commands = {{"line-endings", "--to", "windows"},
                                                            {"line-endings", "--remove"},
                                                            {"case", "upper"},
                                                            {"case", "capitalize"},
                                                            {"xml-escape"},
                                                            {"transform", "toLatin"},
                                                            {"count"},
                                                            {"unique"},
                                                            {"sort", "--reverse"}};
    std::mt19937 random(11);
    for (int round = 0; round < 6; ++round) {
        std::string input;
        for (auto count = 5 + random() % 60; count > 0; --count)
            input += pieces[random() % std::size(pieces)];
        for (const auto& command : commands) {
            const QuodRun whole = runWithWindows(command, input, "0");
            ASSERT_EQ(whole.exitStatus, 0) << whole.err;
            const std::string window = std::to_string(1 + random() % 7);
            const QuodRun streamed = runWithWindows(command, input, window);
            EXPECT_EQ(streamed.out, whole.out) << command.front() << " in windows of " << window
                                               << " on " << ::testing::PrintToString(input);
        }
    }
}

// What only the whole bytes can tell goes the whole-text way, with the same answer.
TEST(QuodStreaming, OtherEncodingsAndBadBytesAreReadWhole) {
    const std::string latin1 =
        "caf\xE9 cr\xE8me br\xFBl\xE9"
        "e\r\n";
    const std::string utf16 = std::string(
        "\xFF\xFE"
        "a\0\r\0\n\0",
        8);
    for (const std::string& input : {latin1, utf16}) {
        const QuodRun whole = runWithWindows({"line-endings", "--to", "unix"}, input, "0");
        const QuodRun streamed = runWithWindows({"line-endings", "--to", "unix"}, input, "3");
        ASSERT_EQ(whole.exitStatus, 0) << whole.err;
        EXPECT_EQ(streamed.exitStatus, 0) << streamed.err;
        EXPECT_EQ(streamed.out, whole.out);
    }
    const QuodRun refused = runWithWindows({"case", "upper"}, "\xFF\xFE\xFD", "3");
    EXPECT_EQ(refused.exitStatus, 1);
    EXPECT_EQ(refused.out, "");
}

// A large input shows its stages with a bar on a terminal's standard error and erases it at the
// end; anywhere else, and for small inputs, standard error stays empty.
TEST(QuodStreaming, ALargeInputShowsProgressOnATerminalOnly) {
    const TemporaryFolder folder("quod-progress");
    std::string text;
    while (text.size() <= 17'000'000)
        text += "a line of text that goes on for a while\r\n";
    const std::string large = folder.write("large.txt", text);

    int terminal = -1;
    int other = -1;
    ASSERT_EQ(::openpty(&terminal, &other, nullptr, nullptr, nullptr), 0);
    const std::string terminalPath = ::ttyname(other);
    const pid_t child =
        startQuod({"line-endings", "--to", "unix", large}, "/dev/null", "/dev/null", terminalPath);
    ::close(other);
    std::string shown;
    char buffer[4096];
    for (;;) {
        pollfd ready{terminal, POLLIN, 0};
        if (::poll(&ready, 1, 60'000) <= 0) break;
        const ssize_t count = ::read(terminal, buffer, sizeof buffer);
        if (count <= 0) break;  // EIO once the child has closed its side
        shown.append(buffer, static_cast<std::size_t>(count));
    }
    ::close(terminal);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_NE(shown.find("quod line-endings: 17 MB: reading ["), std::string::npos) << shown;
    EXPECT_NE(shown.find("writing [####################] 100%"), std::string::npos) << shown;
    EXPECT_TRUE(shown.ends_with("\r\033[K")) << shown;

    const QuodRun quiet = runQuod({"line-endings", "--to", "unix", large});
    EXPECT_EQ(quiet.exitStatus, 0);
    EXPECT_EQ(quiet.err, "");
}

}  // namespace
}  // namespace quod::testing
