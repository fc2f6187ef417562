// The identifiers of table cell views, outline rows and table columns.
//
// Table and outline views make their cell views by these identifiers and save column widths and
// order under the column ones, so the values are kept exactly: each is the member name
// with a capital first letter, except `findResult` ("FindResultIdentifier") and
// `findResultGroup` ("FindResultGroupIdentifier"). Column identifiers are grouped under
// `Column`; `Column::intString` stands for the member "int", a C++ keyword.
#pragma once

#include <span>

#include "quoddle/Export.h"
#include "quoddle/interface/Identifier.h"

// clang-format off
#define QUOD_CELL_IDENTIFIERS(X) \
    X(applicationCell, "ApplicationCell") \
    X(dataCell, "DataCell") \
    X(entitlementCell, "EntitlementCell") \
    X(findResult, "FindResultIdentifier") \
    X(findResultGroup, "FindResultGroupIdentifier") \
    X(group, "Group") \
    X(groupHeader, "GroupHeader") \
    X(headerCell, "HeaderCell") \
    X(item, "Item") \
    X(lineNumber, "LineNumber") \
    X(searchResult, "SearchResult") \
    X(time, "Time")

#define QUOD_COLUMN_IDENTIFIERS(X) \
    X(button, "Button") \
    X(commands, "Commands") \
    X(date, "Date") \
    X(enabled, "Enabled") \
    X(folders, "Folders") \
    X(hex, "Hex") \
    X(intString, "Int") \
    X(keepAlive, "KeepAlive") \
    X(key, "Key") \
    X(kind, "Kind") \
    X(limit, "Limit") \
    X(message, "Message") \
    X(name, "Name") \
    X(notification, "Notification") \
    X(position, "Position") \
    X(prefix, "Prefix") \
    X(run, "Run") \
    X(scheduled, "Scheduled") \
    X(snippets, "Snippets") \
    X(status, "Status") \
    X(string, "String") \
    X(summary, "Summary") \
    X(user, "User") \
    X(value, "Value")
// clang-format on

namespace quod {

class QUODDLE_EXPORT UserInterfaceItemIdentifier : public Identifier<UserInterfaceItemIdentifier> {
  public:
    using Identifier::Identifier;

#define QUOD_DECLARE_IDENTIFIER(member, value) \
    [[nodiscard]] static const UserInterfaceItemIdentifier& member();
    QUOD_CELL_IDENTIFIERS(QUOD_DECLARE_IDENTIFIER)

    struct Column {
        QUOD_COLUMN_IDENTIFIERS(QUOD_DECLARE_IDENTIFIER)
    };
#undef QUOD_DECLARE_IDENTIFIER

    // Cells first, then the columns as "Column::member".
    [[nodiscard]] static std::span<const Entry> entries();
};

}  // namespace quod
