// A preference pane with a table of user-defined items (commands, snippets) and Add and Delete
// buttons: what the Commands and Snippets panes share. They describe their columns (headers from
// their column set, see ColumnProtocol), tab and deletion alert, fill the rows from the store,
// and store the rows on every `edited`.
//
// Each column holds text or a check box. Every change the user makes (a cell edited, a box ticked,
// a row added or deleted) emits `edited` once the table shows it; `setRows` emits nothing.
// Deleting cannot be undone, so it asks first with an alert that the user can suppress: the answer
// "don't ask again" is stored true under `suppressionKey`, and while that key is true rows go
// without asking.
#pragma once

#include <QPushButton>
#include <QTableWidget>
#include <QVariantList>
#include <string>
#include <vector>

#include "quoddle/interface/ColumnProtocol.h"
#include "quoddle/qt/PreferenceTabViewController.h"

namespace quod::demo {

struct ItemColumn {
    enum class Kind { text, checkBox };
    ColumnHeader header;
    Kind kind = Kind::text;
};

class ItemTablePane : public PreferenceTabViewController, public PreferenceTabType {
    Q_OBJECT

  public:
    // A row: one QString per text column, one bool per check-box column.
    using Row = QVariantList;

    struct Description {
        std::vector<ItemColumn> columns;
        Row newRow;                  // what Add appends
        std::string deleteMessage;   // the alert's message
        std::string suppressionKey;  // where "don't ask again" is stored
        QString tabLabel;
        QString tabIconName;  // from the desktop's icon theme
    };

    ItemTablePane(Description description, const std::vector<Row>& rows, QWidget* parent);

    [[nodiscard]] QString tabLabel() const override { return description_.tabLabel; }
    [[nodiscard]] std::optional<QIcon> tabImage() const override;

    void setRows(const std::vector<Row>& rows);
    [[nodiscard]] std::vector<Row> rows() const;

    // Appends `newRow` and starts editing its first cell.
    void addRow();
    // Deletes the current row, after the alert unless it is suppressed.
    void deleteCurrentRow();

    [[nodiscard]] QTableWidget& table() { return *table_; }
    [[nodiscard]] QPushButton& addButton() { return *add_; }
    [[nodiscard]] QPushButton& deleteButton() { return *delete_; }

  Q_SIGNALS:
    void edited();

  private:
    void fillRow(int row, const Row& values);
    [[nodiscard]] bool confirmDeletion();

    Description description_;
    QTableWidget* table_;
    QPushButton* add_;
    QPushButton* delete_;
    bool filling_ = false;
};

}  // namespace quod::demo
