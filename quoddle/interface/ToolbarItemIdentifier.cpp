#include "quoddle/interface/ToolbarItemIdentifier.h"

namespace quod {

#define QUOD_DEFINE(member, value) \
    QUOD_DEFINE_IDENTIFIER(ToolbarItemIdentifier, ToolbarItemIdentifier::, member, value)
QUOD_TOOLBAR_ITEM_IDENTIFIERS(QUOD_DEFINE)
#undef QUOD_DEFINE

std::span<const ToolbarItemIdentifier::Entry> ToolbarItemIdentifier::entries() {
#define QUOD_ENTRY(member, value) Entry{#member, &ToolbarItemIdentifier::member},
    static const Entry everyEntry[] = {QUOD_TOOLBAR_ITEM_IDENTIFIERS(QUOD_ENTRY)};
#undef QUOD_ENTRY
    return everyEntry;
}

}  // namespace quod
