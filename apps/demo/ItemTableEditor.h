// A table of user-defined items (commands, snippets) with Add and Delete buttons: the editing part
// that the Commands and Snippets panes share.
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

namespace quod::demo {

struct ItemColumn {
    enum class Kind { text, checkBox };
    QString title;
    Kind kind = Kind::text;
};

class ItemTableEditor : public QWidget {
    Q_OBJECT

  public:
    // A row: one QString per text column, one bool per check-box column.
    using Row = QVariantList;

    ItemTableEditor(std::vector<ItemColumn> columns, Row newRow, std::string deleteMessage,
                    std::string suppressionKey, QWidget* parent = nullptr);

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

    std::vector<ItemColumn> columns_;
    Row newRow_;
    std::string deleteMessage_;
    std::string suppressionKey_;
    QTableWidget* table_;
    QPushButton* add_;
    QPushButton* delete_;
    bool filling_ = false;
};

}  // namespace quod::demo
