#include "demo/ItemTablePane.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/qt/Alert.h"
#include "quoddle/qt/ColumnHeaders.h"
#include "quoddle/runtime/Localize.h"

namespace quod::demo {

ItemTablePane::ItemTablePane(Description description, const std::vector<Row>& rows, QWidget* parent)
    : PreferenceTabViewController(parent),
      description_(std::move(description)),
      table_(new QTableWidget(0, static_cast<int>(description_.columns.size()), this)),
      add_(new QPushButton(QString::fromStdString(Localize::add()), this)),
      delete_(new QPushButton(QString::fromStdString(Localize::deleteString()), this)) {
    std::vector<ColumnHeader> headers;
    for (const ItemColumn& column : description_.columns)
        headers.push_back(column.header);
    table_->setObjectName("items");
    prepareHeaders(*table_, headers);
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->verticalHeader()->hide();
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(table_, &QTableWidget::itemChanged, this, [this] {
        if (!filling_) Q_EMIT edited();
    });
    add_->setObjectName("add");
    delete_->setObjectName("delete");
    connect(add_, &QPushButton::clicked, this, &ItemTablePane::addRow);
    connect(delete_, &QPushButton::clicked, this, &ItemTablePane::deleteCurrentRow);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(add_);
    buttons->addWidget(delete_);
    buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(table_);
    layout->addLayout(buttons);
    setRows(rows);
}

std::optional<QIcon> ItemTablePane::tabImage() const {
    return QIcon::fromTheme(description_.tabIconName);
}

void ItemTablePane::setRows(const std::vector<Row>& rows) {
    table_->setRowCount(static_cast<int>(rows.size()));
    for (int row = 0; row < static_cast<int>(rows.size()); ++row)
        fillRow(row, rows[row]);
}

std::vector<ItemTablePane::Row> ItemTablePane::rows() const {
    std::vector<Row> rows;
    for (int row = 0; row < table_->rowCount(); ++row) {
        Row values;
        for (int column = 0; column < static_cast<int>(description_.columns.size()); ++column) {
            const QTableWidgetItem* item = table_->item(row, column);
            if (description_.columns[column].kind == ItemColumn::Kind::checkBox) {
                values << (item != nullptr && item->checkState() == Qt::Checked);
            } else {
                values << (item != nullptr ? item->text() : QString());
            }
        }
        rows.push_back(values);
    }
    return rows;
}

void ItemTablePane::addRow() {
    const int row = table_->rowCount();
    table_->insertRow(row);
    fillRow(row, description_.newRow);
    table_->setCurrentCell(row, 0);
    Q_EMIT edited();
    table_->editItem(table_->item(row, 0));
}

void ItemTablePane::deleteCurrentRow() {
    const int row = table_->currentRow();
    if (row < 0 || !confirmDeletion()) return;
    table_->removeRow(row);
    Q_EMIT edited();
}

void ItemTablePane::fillRow(int row, const Row& values) {
    filling_ = true;
    for (int column = 0; column < static_cast<int>(description_.columns.size()); ++column) {
        const QVariant value = column < values.size() ? values[column] : QVariant();
        auto* item = new QTableWidgetItem;
        if (description_.columns[column].kind == ItemColumn::Kind::checkBox) {
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
            item->setCheckState(value.toBool() ? Qt::Checked : Qt::Unchecked);
        } else {
            item->setText(value.toString());
        }
        table_->setItem(row, column, item);
    }
    filling_ = false;
}

bool ItemTablePane::confirmDeletion() {
    // Clients read the suppression themselves: the alert only records it.
    if (UserDefaults::standard()->boolForKey(description_.suppressionKey)) return true;
    const auto response = Interface::alert(
        description_.deleteMessage, Localize::youCantUndoThisAction(), Localize::deleteString(),
        Localize::cancel(), std::nullopt, description_.suppressionKey);
    return response == ModalResponse::alertFirstButtonReturn;
}

}  // namespace quod::demo
