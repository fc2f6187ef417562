#include "quoddle/runtime/ErrorType.h"

namespace quod {

std::string_view rawValue(ErrorType::Domain domain) {
    switch (domain) {
        case ErrorType::Domain::quillmere:
            return "com.fernholt.Quillmere.ErrorDomain";
        case ErrorType::Domain::tessiva:
            return "com.fernholt.Tessiva.ErrorDomain";
    }
    return {};
}

int rawValue(ErrorType::Code code) {
    return static_cast<int>(code);
}

std::optional<ErrorType::Domain> errorDomain(std::string_view raw) {
    for (ErrorType::Domain domain : {ErrorType::Domain::quillmere, ErrorType::Domain::tessiva}) {
        if (rawValue(domain) == raw) return domain;
    }
    return std::nullopt;
}

std::optional<ErrorType::Code> errorCode(int raw) {
    if (raw == 1 || raw == 2) return static_cast<ErrorType::Code>(raw);
    return std::nullopt;
}

Error ErrorType::nsError() const {
    Error error{std::string(rawValue(domain)), rawValue(code), {}};
    error.userInfo.emplace(Error::localizedDescriptionKey, description);
    error.userInfo.emplace(Error::localizedRecoverySuggestionErrorKey, recoverySuggestion);
    return error;
}

}  // namespace quod
