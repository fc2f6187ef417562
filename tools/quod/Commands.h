// The commands of the tool: their names, help and what runs them.
//
// Text commands (sort, case, ...) read one file or standard input, decode it, apply one of the
// framework's `Text` operations to a QuodTextView exactly as a host application would, and write
// the text back in its encoding. The other commands (encoding, split-command, octal) answer a
// question and print the answer.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quod::tool {

struct Command {
    std::string_view name;
    std::string_view usage;    // the argument part of the usage line, after the command's name
    std::string_view summary;  // one line for `quod --help`
    std::string_view help;     // what `quod NAME --help` adds below the usage line
    int (*run)(const Command& command, std::span<const std::string> arguments);
};

[[nodiscard]] std::span<const Command> textCommands();
[[nodiscard]] std::span<const Command> informationCommands();

// The whole help of one command, as `quod NAME --help` prints it.
[[nodiscard]] std::string helpText(const Command& command);

}  // namespace quod::tool
