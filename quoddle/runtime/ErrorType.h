// The error value the host applications report to the user: who reports it, what kind of failure,
// and the two texts an alert shows.
//
// `ErrorType(domain, code)` starts with both texts empty; the host sets `description` and
// `recoverySuggestion`. `nsError()` makes the Error record for presentation: the domain's raw
// string, the code's raw number, and user info with exactly two entries, the description under
// Error::localizedDescriptionKey and the suggestion under
// Error::localizedRecoverySuggestionErrorKey, both present even when empty.
//
// Raw values: a Domain is made only from the exact, whole raw string (letter case included), a
// Code only from one of its numbers; anything else gives no value.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/runtime/Error.h"

namespace quod {

struct QUODDLE_EXPORT ErrorType {
    enum class Domain { quillmere, tessiva };
    enum class Code : int { cannotConvertToEncoding = 1, cannotSaveDocument = 2 };

    ErrorType(Domain domain, Code code) : domain(domain), code(code) {}

    Domain domain;
    Code code;
    std::string description;
    std::string recoverySuggestion;

    [[nodiscard]] Error nsError() const;

    friend bool operator==(const ErrorType&, const ErrorType&) = default;
};

[[nodiscard]] QUODDLE_EXPORT std::string_view rawValue(ErrorType::Domain domain);
[[nodiscard]] QUODDLE_EXPORT int rawValue(ErrorType::Code code);
[[nodiscard]] QUODDLE_EXPORT std::optional<ErrorType::Domain> errorDomain(
    std::string_view rawValue);
[[nodiscard]] QUODDLE_EXPORT std::optional<ErrorType::Code> errorCode(int rawValue);

}  // namespace quod
