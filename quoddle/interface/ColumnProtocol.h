// A table's columns, written down once: which columns there are, in display order, the
// identifier each goes by and the title of its header.
//
// The identifier (a UserInterfaceItemIdentifier, usually one of the catalogue's `Column` entries)
// is what a column's cells, saved widths and order are keyed by, so it never changes with the
// language; the title is looked up in the localized catalogue and is what the user reads.
//
// A column set is a type that derives from `ColumnProtocol<Set, Case>`, where `Case` is an
// enumeration of its columns, and lists them in a static array `entries` of ColumnEntry<Case>:
// the case, the accessor of its identifier and the accessor of its title. The base gives the
// set its questions:
//
//     enum class SnippetColumn { name, text };
//     struct SnippetColumns : ColumnProtocol<SnippetColumns, SnippetColumn> {
//         static constexpr std::array entries{
//             ColumnEntry<SnippetColumn>{SnippetColumn::name,
//                                        &UserInterfaceItemIdentifier::Column::name,
//                                        &Localize::name},
//             ColumnEntry<SnippetColumn>{SnippetColumn::text,
//                                        &UserInterfaceItemIdentifier::Column::string,
//                                        &Localize::text}};
//     };
//
//     SnippetColumns::allCases()                    // {name, text}: the display order
//     SnippetColumns::column("Name")                // SnippetColumn::name
//     SnippetColumns::column("name")                // no value: identifiers match exactly
//     SnippetColumns::section(SnippetColumn::text)  // 1
//     SnippetColumns::title(SnippetColumn::text)    // "Text", or its translation
//
// In the Qt layer, `prepareHeaders<SnippetColumns>(tableView)` (qt/ColumnHeaders.h) gives a
// QTableView's or QTreeView's header these titles and identifiers.
//
// Each case appears once in `entries`; asking about a case that is not there is a programming
// error that stops the process. Identifiers should be distinct within a set: `column` answers
// the first entry with the identifier asked for. Every question may be asked from any thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoddle/base/Precondition.h"
#include "quoddle/interface/UserInterfaceItemIdentifier.h"

namespace quod {

template <typename Case>
struct ColumnEntry {
    Case column;
    const UserInterfaceItemIdentifier& (*identifier)();
    const std::string& (*title)();
};

// A column's header as a toolkit shows it.
struct ColumnHeader {
    UserInterfaceItemIdentifier identifier;
    std::string title;

    friend bool operator==(const ColumnHeader&, const ColumnHeader&) = default;
};

template <typename Set, typename Case>
class ColumnProtocol {
  public:
    using Column = Case;

    [[nodiscard]] static std::vector<Case> allCases() {
        std::vector<Case> cases;
        cases.reserve(Set::entries.size());
        for (const ColumnEntry<Case>& entry : Set::entries)
            cases.push_back(entry.column);
        return cases;
    }

    [[nodiscard]] static std::optional<Case> column(std::string_view identifier) {
        for (const ColumnEntry<Case>& entry : Set::entries) {
            if (entry.identifier().rawValue() == identifier) return entry.column;
        }
        return std::nullopt;
    }

    // The position of `column` in the display order: its section in a header view.
    [[nodiscard]] static std::size_t section(Case column) {
        return static_cast<std::size_t>(&entry(column) - Set::entries.data());
    }

    [[nodiscard]] static const UserInterfaceItemIdentifier& identifier(Case column) {
        return entry(column).identifier();
    }

    [[nodiscard]] static const std::string& title(Case column) { return entry(column).title(); }

    // Every column's identifier and title, in display order.
    [[nodiscard]] static std::vector<ColumnHeader> headers() {
        std::vector<ColumnHeader> result;
        result.reserve(Set::entries.size());
        for (const ColumnEntry<Case>& entry : Set::entries)
            result.push_back({entry.identifier(), entry.title()});
        return result;
    }

  private:
    static const ColumnEntry<Case>& entry(Case column) {
        const auto found = std::ranges::find(Set::entries, column, &ColumnEntry<Case>::column);
        QUOD_PRECONDITION(found != std::ranges::end(Set::entries),
                          "a case that is not among the column set's entries");
        return *found;
    }
};

}  // namespace quod
