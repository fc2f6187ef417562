#include "quoddle/strings/StringEncoding.h"

#include "quoddle/base/Utf.h"
#include "quoddle/strings/EncodingTables.h"
#include "quoddle/strings/LocalizedCompare.h"

namespace quod {
namespace {

std::vector<StringEncoding> sortedAvailableEncodings() {
    std::vector<StringEncoding> available;
    std::vector<std::u16string> names;
    for (const internal::EncodingRow& row : internal::namedEncodings()) {
        if (!row.available) continue;
        available.push_back({std::string(row.name), static_cast<int64_t>(row.encoding)});
        names.push_back(toUtf16(row.name));
    }
    const std::vector<std::u16string_view> views(names.begin(), names.end());
    std::vector<StringEncoding> sorted;
    sorted.reserve(available.size());
    for (const std::size_t index : localizedStandardOrder(views, SortOrder::ascending)) {
        sorted.push_back(std::move(available[index]));
    }
    return sorted;
}

}  // namespace

namespace Misc {

const std::vector<StringEncoding>& allStringEncodings() {
    // A function-local static is initialised exactly once, even when several threads arrive at
    // once.
    static const std::vector<StringEncoding> encodings = sortedAvailableEncodings();
    return encodings;
}

}  // namespace Misc

std::string_view localizedEncodingName(EncodingNumber encoding) {
    const auto* row = internal::findNamedEncoding(encoding);
    return row != nullptr ? row->name : std::string_view{};
}

}  // namespace quod
