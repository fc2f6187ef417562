// Gives a table's or tree's header the titles and identifiers of a column set (ColumnProtocol,
// interface/ColumnProtocol.h).
//
// `prepareHeaders<Set>(view)` sets, for each column of the set in display order, the horizontal
// header data of the view's model at that section: the title as Qt::DisplayRole and the
// identifier's raw value as `columnIdentifierRole`. Headers show the titles at once, and
// `columnIdentifier(view, section)` tells later which column a section holds, also after the user
// has moved sections around (sections keep their logical index):
//
//     prepareHeaders<CommandColumns>(*tableView);
//     const auto column = CommandColumns::column(columnIdentifier(*tableView, index.column()));
//
// The model must already have the columns: a model with fewer columns than the set, one that
// refuses header data (a read-only custom model) or no model at all leaves what it cannot take
// as it was, and the call answers false. QTableWidget (given header items where it has none),
// QTreeWidget and QStandardItemModel take both roles. Main thread only, as every widget call.
#pragma once

#include <QAbstractItemView>
#include <span>
#include <string>

#include "quoddle/Export.h"
#include "quoddle/interface/ColumnProtocol.h"

namespace quod {

// Where a header section keeps its column's identifier.
inline constexpr int columnIdentifierRole = Qt::UserRole + 0x5144;

// True when every header was taken.
QUODDLE_EXPORT bool prepareHeaders(QAbstractItemView& view, std::span<const ColumnHeader> headers);

template <typename Set>
bool prepareHeaders(QAbstractItemView& view) {
    const std::vector<ColumnHeader> headers = Set::headers();
    return prepareHeaders(view, headers);
}

// The identifier a prepared section holds; "" for a section without one.
[[nodiscard]] QUODDLE_EXPORT std::string columnIdentifier(const QAbstractItemView& view,
                                                          int section);

}  // namespace quod
