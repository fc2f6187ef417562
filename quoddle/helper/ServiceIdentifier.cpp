#include "quoddle/helper/ServiceIdentifier.h"

#include <algorithm>

namespace quod {

std::string ServiceIdentifier::objectPath() const {
    std::string path = "/" + rawValue();
    std::ranges::replace(path, '.', '/');
    return path;
}

#define QUOD_DEFINE_SERVICE(member, value)                                                    \
    const ServiceIdentifier& ServiceIdentifier::member() {                                    \
        static const auto* const identifier = new ServiceIdentifier(value, BusType::session); \
        return *identifier;                                                                   \
    }
#define QUOD_DEFINE_HELPER(member, value)                                                    \
    const ServiceIdentifier& ServiceIdentifier::Helper::member() {                           \
        static const auto* const identifier = new ServiceIdentifier(value, BusType::system); \
        return *identifier;                                                                  \
    }
QUOD_SERVICE_IDENTIFIERS(QUOD_DEFINE_SERVICE)
QUOD_HELPER_TOOL_IDENTIFIERS(QUOD_DEFINE_HELPER)
#undef QUOD_DEFINE_SERVICE
#undef QUOD_DEFINE_HELPER

std::span<const ServiceIdentifier::Entry> ServiceIdentifier::entries() {
#define QUOD_HELPER(member, value) Entry{"Helper::" #member, &Helper::member},
#define QUOD_SERVICE(member, value) Entry{#member, &ServiceIdentifier::member},
    static const Entry everyEntry[] = {QUOD_HELPER_TOOL_IDENTIFIERS(QUOD_HELPER)
                                           QUOD_SERVICE_IDENTIFIERS(QUOD_SERVICE)};
#undef QUOD_HELPER
#undef QUOD_SERVICE
    return everyEntry;
}

}  // namespace quod
