// The commands that answer a question instead of rewriting a text.
#include <cstdio>
#include <iostream>
#include <vector>

#include "CommandLine.h"
#include "Commands.h"
#include "Document.h"
#include "Failure.h"
#include "Progress.h"
#include "Streaming.h"
#include "quoddle/base/Utf.h"
#include "quoddle/strings/EncodingDetection.h"
#include "quoddle/strings/Octal.h"
#include "quoddle/text/CommandSplitting.h"

namespace quod::tool {
namespace {

bool printedHelp(const Command& command, const ParsedArguments& arguments) {
    if (!arguments.has("--help")) return false;
    writeStandardOutput(helpText(command));
    return true;
}

// The statistics' candidates under the answer, one a line, best first.
std::string candidateLines(std::span<const std::uint8_t> bytes) {
    std::string lines;
    for (const auto& [encoding, cost] : Text::encodingCandidates(bytes)) {
        char costText[32];
        std::snprintf(costText, sizeof costText, "%.2f", cost);
        lines += "  " + std::string(costText) + "  " + encodingDisplayName(encoding) + " (" +
                 std::to_string(encoding) + ")\n";
    }
    return lines;
}

constexpr OptionDefinition encodingOptions[] = {{"--all"}};

int encoding(const Command& command, std::span<const std::string> arguments) {
    const ParsedArguments parsed = parseArguments(arguments, encodingOptions);
    if (printedHelp(command, parsed)) return 0;
    std::vector<std::string> paths = parsed.operands();
    if (paths.empty()) paths.push_back("-");
    // Like cat: a file that cannot be read is reported, and the others are still answered.
    int status = 0;
    for (const std::string& path : paths) {
        try {
            const InputBytes input = InputBytes::readInWindows(path);
            // What a host opening the file does: the declaration first, the bytes when it is
            // silent. One pass in windows settles most files; the rest take all their bytes.
            Progress progress("encoding", input.bytes().size());
            const Text::EncodingScan scan = scanInWindows(input, progress);
            const auto settledOr = [&input](std::optional<EncodingNumber> settled, auto whole) {
                return settled ? *settled : whole(input.bytes());
            };
            EncodingNumber found = settledOr(scan.guessedEncoding(), Text::guessEncoding);
            const char* how = "declared";
            if (found == Encodings::none) {
                found = settledOr(scan.detectedEncoding(), Text::detectEncoding);
                how = "detected";
            }
            std::string line = input.displayName() + ": " + encodingDisplayName(found) + " (" +
                               std::to_string(found) + ")";
            if (found != Encodings::none) line += std::string(", ") + how;
            line += "\n";
            if (parsed.has("--all")) line += candidateLines(input.bytes());
            writeStandardOutput(line);
        } catch (const Failure& failure) {
            std::cerr << "quod: " << failure.what() << '\n';
            status = 1;
        }
    }
    return status;
}

std::string singleOperand(const ParsedArguments& arguments, std::string_view what) {
    if (arguments.operands().size() != 1)
        throw UsageError("wants exactly one " + std::string(what));
    return arguments.operands().front();
}

int splitCommand(const Command& command, std::span<const std::string> arguments) {
    const ParsedArguments parsed = parseArguments(arguments, {});
    if (printedHelp(command, parsed)) return 0;
    const auto line = toUtf16IfValid(singleOperand(parsed, "command line"));
    if (!line) throw Failure("the command line is not valid UTF-8");
    std::string output;
    for (const std::u16string& argument : Text::separateCommand(*line)) {
        output += toUtf8(argument) + "\n";
    }
    writeStandardOutput(output);
    return 0;
}

constexpr OptionDefinition octalOptions[] = {{"--mask"}};

int octal(const Command& command, std::span<const std::string> arguments) {
    const ParsedArguments parsed = parseArguments(arguments, octalOptions);
    if (printedHelp(command, parsed)) return 0;
    const std::string digits = singleOperand(parsed, "group of digits");
    // The framework spells out whatever it is given (a blank answer for no digits at all), but a
    // user who typed 9 or 12345 made a mistake and deserves to hear it.
    if (digits.empty() || digits.size() > 4 ||
        digits.find_first_not_of("01234567") != std::string::npos) {
        throw UsageError("wants 1 to 4 octal digits (0 to 7), not '" + digits + "'");
    }
    const auto mode = parsed.has("--mask") ? Octal::Mode::mask : Octal::Mode::permission;
    writeStandardOutput(Octal::displayString(digits, mode) + "\n");
    return 0;
}

const std::vector<Command>& informationCommandTable() {
    static const std::vector<Command> table{
        {"encoding", "FILE... [--all]", "tell the encoding of files",
         "Prints the encoding each file declares (an HTML charset, an XML encoding) or, when it\n"
         "declares none, the one its bytes suggest: the name, the encoding's number, and which of\n"
         "the two it was. \"-\" or no file reads standard input. --all also lists, best first,\n"
         "every encoding the statistics weighed with its cost per character outside ASCII\n"
         "(lower reads more like real text).\n",
         encoding},
        {"split-command", "LINE", "split a command line into its arguments",
         "Prints the arguments of LINE one a line, as the framework splits a command the user\n"
         "typed: quotes group and are dropped, a backslash keeps a space or quote.\n",
         splitCommand},
        {"octal", "DIGITS [--mask]", "spell out permission digits such as 755",
         "Prints the rights that the last three digits grant (as chmod reads them), or with\n"
         "--mask the rights that a creation mask (umask) of those digits leaves.\n",
         octal},
    };
    return table;
}

}  // namespace

std::span<const Command> informationCommands() {
    return informationCommandTable();
}

}  // namespace quod::tool
