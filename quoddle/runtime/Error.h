// The platform-neutral error record: a domain string, an integer code and string-keyed user info.
//
// This is what ErrorType turns into for presentation; an alert shows the texts under the two
// standard keys, whose strings are the platform's own so that stored or exchanged records read
// the same everywhere.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace quod {

struct Error {
    static constexpr std::string_view localizedDescriptionKey = "NSLocalizedDescription";
    static constexpr std::string_view localizedRecoverySuggestionErrorKey =
        "NSLocalizedRecoverySuggestion";

    std::string domain;
    std::int64_t code = 0;
    std::map<std::string, std::string, std::less<>> userInfo;

    friend bool operator==(const Error&, const Error&) = default;
};

}  // namespace quod
