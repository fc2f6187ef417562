// Commands that go through a file in windows give, byte for byte, what the whole-text way gives,
// wherever the windows are cut: windows of one to five bytes put a cut inside every CR LF pair,
// every multi-byte character and every cluster of a base and its marks.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "QuodRunner.h"

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

}  // namespace
}  // namespace quod::testing
