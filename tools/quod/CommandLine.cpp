#include "CommandLine.h"

#include <algorithm>
#include <charconv>

#include "Failure.h"

namespace quod::tool {

bool ParsedArguments::has(std::string_view option) const {
    return options_.find(option) != options_.end();
}

std::optional<std::string> ParsedArguments::value(std::string_view option) const {
    const auto found = options_.find(option);
    if (found == options_.end()) return std::nullopt;
    return found->second;
}

ParsedArguments parseArguments(std::span<const std::string> arguments,
                               std::span<const OptionDefinition> options) {
    ParsedArguments parsed;
    bool optionsEnded = false;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (optionsEnded || argument == "-" || !argument.starts_with('-')) {
            parsed.operands_.push_back(argument);
            continue;
        }
        if (argument == "--") {
            optionsEnded = true;
            continue;
        }
        if (argument == "--help" || argument == "-h") {
            parsed.options_["--help"] = {};
            continue;
        }
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const OptionDefinition* spec = nullptr;
        for (const OptionDefinition& candidate : options) {
            if (candidate.name == name || (!candidate.alias.empty() && candidate.alias == name)) {
                spec = &candidate;
            }
        }
        if (spec == nullptr) throw UsageError("unknown option '" + name + "'");
        std::string value;
        if (spec->takesValue) {
            if (equals != std::string::npos) {
                value = argument.substr(equals + 1);
            } else if (index + 1 < arguments.size()) {
                value = arguments[++index];
            } else {
                throw UsageError("option '" + name + "' needs a value");
            }
        } else if (equals != std::string::npos) {
            throw UsageError("option '" + name + "' takes no value");
        }
        parsed.options_[std::string(spec->name)] = std::move(value);
    }
    return parsed;
}

namespace {

std::optional<int64_t> positiveNumber(std::string_view text) {
    int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 1) {
        return std::nullopt;
    }
    return number;
}

}  // namespace

LineSpan parseLineSpan(std::string_view text) {
    const std::size_t colon = text.find(':');
    const auto first = positiveNumber(text.substr(0, colon));
    const auto last =
        colon == std::string_view::npos ? first : positiveNumber(text.substr(colon + 1));
    if (!first || !last || *last < *first) {
        throw UsageError(
            "--lines wants FIRST:LAST, two line numbers from 1 with FIRST <= LAST, not '" +
            std::string(text) + "'");
    }
    return {*first, *last};
}

bool equalIgnoringAsciiCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
        return lower(x) == lower(y);
    });
}

}  // namespace quod::tool
