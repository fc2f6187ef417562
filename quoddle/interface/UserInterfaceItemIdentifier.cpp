#include "quoddle/interface/UserInterfaceItemIdentifier.h"

namespace quod {

using Column = UserInterfaceItemIdentifier::Column;

#define QUOD_DEFINE_CELL(member, value)                                                        \
    QUOD_DEFINE_IDENTIFIER(UserInterfaceItemIdentifier, UserInterfaceItemIdentifier::, member, \
                           value)
#define QUOD_DEFINE_COLUMN(member, value) \
    QUOD_DEFINE_IDENTIFIER(UserInterfaceItemIdentifier, Column::, member, value)
QUOD_CELL_IDENTIFIERS(QUOD_DEFINE_CELL)
QUOD_COLUMN_IDENTIFIERS(QUOD_DEFINE_COLUMN)
#undef QUOD_DEFINE_CELL
#undef QUOD_DEFINE_COLUMN

std::span<const UserInterfaceItemIdentifier::Entry> UserInterfaceItemIdentifier::entries() {
#define QUOD_CELL(member, value) Entry{#member, &UserInterfaceItemIdentifier::member},
#define QUOD_COLUMN(member, value) Entry{"Column::" #member, &Column::member},
    static const Entry everyEntry[] = {QUOD_CELL_IDENTIFIERS(QUOD_CELL)
                                           QUOD_COLUMN_IDENTIFIERS(QUOD_COLUMN)};
#undef QUOD_CELL
#undef QUOD_COLUMN
    return everyEntry;
}

}  // namespace quod
