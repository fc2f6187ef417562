#include "quoddle/interface/NotificationName.h"

namespace quod {

#define QUOD_DEFINE(member, value) \
    QUOD_DEFINE_IDENTIFIER(NotificationName, NotificationName::, member, value)
QUOD_NOTIFICATION_NAMES(QUOD_DEFINE)
#undef QUOD_DEFINE

std::span<const NotificationName::Entry> NotificationName::entries() {
#define QUOD_ENTRY(member, value) Entry{#member, &NotificationName::member},
    static const Entry everyEntry[] = {QUOD_NOTIFICATION_NAMES(QUOD_ENTRY)};
#undef QUOD_ENTRY
    return everyEntry;
}

}  // namespace quod
