// quod: the framework's text services on files and standard input.
//
// Every failure ends here as one line on standard error: "quod: what went wrong". Usage mistakes
// exit with 2, bad input and file errors with 1.
#include <malloc.h>

#include <climits>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "Commands.h"
#include "Document.h"
#include "Failure.h"
#include "quoddle/Version.h"
#include "quoddle/base/FileReplacement.h"

namespace quod::tool {
namespace {

bool isTextCommand(const Command& command) {
    for (const Command& candidate : textCommands()) {
        if (&candidate == &command) return true;
    }
    return false;
}

std::string overview() {
    std::string text =
        "usage: quod COMMAND [OPTIONS] [FILE]\n"
        "\n"
        "Runs the text operations of the Quoddle framework on a file or standard input.\n"
        "\n"
        "Text commands (the result goes to standard output, or back into FILE with -i):\n";
    const auto list = [&text](std::span<const Command> commands) {
        for (const Command& command : commands) {
            std::string name(command.name);
            name.resize(16, ' ');
            text += "  " + name + std::string(command.summary) + "\n";
        }
    };
    list(textCommands());
    text += "\nOther commands:\n";
    list(informationCommands());
    text +=
        "\n"
        "Text commands act on lines A to B with --lines A:B, otherwise on the whole text.\n"
        "The input's encoding is read from its declaration or its bytes (or named with\n"
        "--encoding), and the result is written in the same encoding.\n"
        "\n"
        "quod COMMAND --help describes one command; quod --version prints the version.\n";
    return text;
}

const Command* commandNamed(std::string_view name) {
    for (const auto commands : {textCommands(), informationCommands()}) {
        for (const Command& command : commands) {
            if (command.name == name) return &command;
        }
    }
    return nullptr;
}

int runTool(const std::vector<std::string>& arguments) {
    if (arguments.empty()) throw UsageError("no command (see quod --help)");
    const std::string& name = arguments.front();
    if (name == "--help" || name == "-h" || name == "help") {
        writeStandardOutput(overview());
        return 0;
    }
    if (name == "--version") {
        // The library's version: the one this program is running with.
        writeStandardOutput("quod " + std::string(quod::version()) + "\n");
        return 0;
    }
    const Command* command = commandNamed(name);
    if (command == nullptr) throw UsageError("unknown command '" + name + "' (see quod --help)");
    try {
        return command->run(*command, std::span(arguments).subspan(1));
    } catch (const UsageError& error) {
        throw UsageError(std::string(command->name) + ": " + error.what());
    }
}

}  // namespace

std::string helpText(const Command& command) {
    const bool text = isTextCommand(command);
    std::string help = "usage: quod ";
    help.append(command.name);
    if (!command.usage.empty()) help.append(" ").append(command.usage);
    if (text) {
        help.append(command.name == "count" ? " [--lines A:B]" : " [--lines A:B] [-i]");
        help.append(" [--encoding NAME]");
    }
    if (text) help.append(" [FILE]");
    help.append("\n\n").append(command.help);
    if (text) {
        help +=
            "\n"
            "  --lines A:B   act on lines A to B (from 1) as a selection of them would\n";
        if (command.name != "count") {
            help += "  -i            write the result back into FILE (atomically)\n";
        }
        help +=
            "  --encoding NAME\n"
            "                read the input in this encoding (an IANA name such as ISO-8859-1, or\n"
            "                a name as quod encoding prints it) instead of the one it declares or\n"
            "                suggests, and write the result in it\n";
        help += "  FILE          the input; standard input when absent or \"-\"\n";
    }
    return help;
}

}  // namespace quod::tool

int main(int argc, char** argv) {
    using namespace quod::tool;
    // A command on a large file allocates and frees a few buffers of the text's size. Served from
    // the heap and kept there, later ones reuse pages already mapped instead of having the kernel
    // map and zero fresh ones each time, which costs as much as the work itself.
    ::mallopt(M_MMAP_MAX, 0);
    ::mallopt(M_TRIM_THRESHOLD, INT_MAX);
    // Interrupted by Ctrl-C or a kill, -i leaves no temporary file behind.
    quod::FileReplacement::installSignalCleanup();
    try {
        return runTool(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const UsageError& error) {
        std::cerr << "quod: " << error.what() << '\n';
        return 2;
    } catch (const Failure& failure) {
        std::cerr << "quod: " << failure.what() << '\n';
        return 1;
    } catch (const std::bad_alloc&) {
        std::cerr << "quod: not enough memory for this input\n";
        return 1;
    } catch (const std::exception& error) {
        std::cerr << "quod: " << error.what() << '\n';
        return 1;
    }
}
