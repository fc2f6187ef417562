// Any bytes through the property-list readers (XML or binary, by their header): never a crash or
// a read outside the input. Whatever parses survives a binary write and a second parse unchanged,
// and its XML form reads back to the same XML (XML keeps dates in whole seconds only).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "quoddle/preferences/PropertyList.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const auto value = quod::parsePropertyList(std::span<const uint8_t>(data, size));
    if (!value) return 0;
    const std::string xml = quod::xmlPropertyList(*value);
    const auto fromXml = quod::parsePropertyList(xml);
    const quod::Data binary = quod::binaryPropertyList(*value);
    const auto fromBinary = quod::parsePropertyList(std::span<const uint8_t>(binary));
    if (!fromXml || quod::xmlPropertyList(*fromXml) != xml || !fromBinary ||
        !(*fromBinary == *value)) {
        std::abort();
    }
    return 0;
}
