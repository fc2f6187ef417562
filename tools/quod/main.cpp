// quod: the framework's text services on files and standard input.
//
//   quod line-endings (--to unix|windows|macOS9 | --show | --remove) [FILE]
//   quod lines [FILE]
//
// Text is read as UTF-8 (ill-formed bytes become U+FFFD) and written to standard output as UTF-8.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/LineEnding.h"
#include "quoddle/text/QuodTextView.h"

namespace {

constexpr const char* usage =
    "usage: quod line-endings (--to unix|windows|macOS9 | --show | --remove) [FILE]\n"
    "       quod lines [FILE]\n";

std::optional<std::string> readInput(const std::vector<std::string>& files) {
    if (files.size() > 1) return std::nullopt;
    std::ostringstream bytes;
    if (files.empty()) {
        bytes << std::cin.rdbuf();
    } else {
        std::ifstream file(files.front(), std::ios::binary);
        if (!file) {
            std::cerr << "quod: cannot read " << files.front() << '\n';
            return std::nullopt;
        }
        bytes << file.rdbuf();
    }
    return std::move(bytes).str();
}

std::optional<quod::LineEnding> lineEndingNamed(const std::string& name) {
    for (const auto ending : quod::allLineEndings) {
        const char* names[] = {"unix", "windows", "macOS9"};
        if (name == names[static_cast<int>(ending)]) return ending;
    }
    return std::nullopt;
}

int lineEndings(const std::vector<std::string>& arguments) {
    std::vector<std::string> files;
    std::string mode;
    std::optional<quod::LineEnding> target;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == "--to" && i + 1 < arguments.size()) {
            mode = "to";
            target = lineEndingNamed(arguments[++i]);
            if (!target) return std::cerr << usage, 2;
        } else if (arguments[i] == "--show" || arguments[i] == "--remove") {
            mode = arguments[i];
        } else {
            files.push_back(arguments[i]);
        }
    }
    if (mode.empty()) return std::cerr << usage, 2;
    const auto input = readInput(files);
    if (!input) return 1;
    const std::u16string text = quod::toUtf16(*input);
    std::u16string output;
    if (mode == "to") {
        output = quod::Text::convert(text, *target);
    } else if (mode == "--show") {
        output = quod::Text::replaceLineEndingCharacters(text);
    } else {
        output = quod::Text::removeLineEndings(text);
    }
    std::cout << quod::toUtf8(output);
    return 0;
}

int lines(const std::vector<std::string>& files) {
    const auto input = readInput(files);
    if (!input) return 1;
    const quod::QuodTextView view(quod::TextStorage::fromUtf8(*input));
    std::cout << view.numberOfLines() << '\n';
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return std::cerr << usage, 2;
    const std::string command = argv[1];
    const std::vector<std::string> arguments(argv + 2, argv + argc);
    if (command == "line-endings") return lineEndings(arguments);
    if (command == "lines") return lines(arguments);
    std::cerr << usage;
    return 2;
}
