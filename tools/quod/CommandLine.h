// Reading a command's own arguments: long options, `-i`, operands and `--lines A:B`.
//
// Each command names the options it knows; anything else that starts with "-" is a usage error,
// except "-" alone (standard input) and everything after "--". An option's value follows it as the
// next argument or after "=" (`--to windows`, `--to=windows`).
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quod::tool {

struct OptionDefinition {
    std::string_view name;  // with its dashes: "--to", "-i"
    bool takesValue = false;
    std::string_view alias = {};  // another spelling of the same option, such as "--in-place"
};

class ParsedArguments {
  public:
    [[nodiscard]] bool has(std::string_view option) const;
    // The value of an option that takes one; no value when it was not given.
    [[nodiscard]] std::optional<std::string> value(std::string_view option) const;
    [[nodiscard]] const std::vector<std::string>& operands() const { return operands_; }

  private:
    friend ParsedArguments parseArguments(std::span<const std::string>,
                                          std::span<const OptionDefinition>);
    std::map<std::string, std::string, std::less<>> options_;
    std::vector<std::string> operands_;
};

// Throws UsageError for an unknown option or a missing value; a repeated option keeps its last
// value. "--help" is always known.
[[nodiscard]] ParsedArguments parseArguments(std::span<const std::string> arguments,
                                             std::span<const OptionDefinition> options);

// 1-based, inclusive line numbers.
struct LineSpan {
    int64_t first = 1;
    int64_t last = 1;
};

// "A:B" or "A", with 1 <= A <= B; throws UsageError otherwise.
[[nodiscard]] LineSpan parseLineSpan(std::string_view text);

// Names that users may type in either letter case (transform kinds, encodings).
[[nodiscard]] bool equalIgnoringAsciiCase(std::string_view a, std::string_view b);

}  // namespace quod::tool
