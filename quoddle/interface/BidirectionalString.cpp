#include "quoddle/interface/BidirectionalString.h"

#include <vector>

#include "quoddle/interface/UserInterfaceLayoutDirection.h"

namespace quod::Interface {
namespace {

constexpr std::string_view leftToRightIsolate = "\u2066";
constexpr std::string_view rightToLeftIsolate = "\u2067";
constexpr std::string_view firstStrongIsolate = "\u2068";
constexpr std::string_view popDirectionalIsolate = "\u2069";

}  // namespace

std::string bidirectionalString(std::span<const std::string_view> parts,
                                std::string_view separator) {
    if (parts.empty()) return {};
    std::string joined(rtl() ? rightToLeftIsolate : leftToRightIsolate);
    for (std::size_t index = 0; index < parts.size(); ++index) {
        if (index > 0) joined += separator;
        joined += firstStrongIsolate;
        joined += parts[index];
        joined += popDirectionalIsolate;
    }
    joined += popDirectionalIsolate;
    return joined;
}

std::string bidirectionalString(std::span<const std::string> parts, std::string_view separator) {
    const std::vector<std::string_view> views(parts.begin(), parts.end());
    return bidirectionalString(std::span<const std::string_view>(views), separator);
}

}  // namespace quod::Interface
