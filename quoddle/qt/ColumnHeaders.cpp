#include "quoddle/qt/ColumnHeaders.h"

#include <QAbstractItemModel>
#include <QTableWidget>

namespace quod {

bool prepareHeaders(QAbstractItemView& view, std::span<const ColumnHeader> headers) {
    QAbstractItemModel* const model = view.model();
    if (model == nullptr) return false;
    bool everyOne = true;
    for (std::size_t index = 0; index < headers.size(); ++index) {
        const int section = static_cast<int>(index);
        if (section >= model->columnCount()) return false;
        // A table widget's model takes header data only into header items that exist.
        if (auto* const table = qobject_cast<QTableWidget*>(&view);
            table != nullptr && table->horizontalHeaderItem(section) == nullptr) {
            table->setHorizontalHeaderItem(section, new QTableWidgetItem);
        }
        const ColumnHeader& header = headers[index];
        const bool titled = model->setHeaderData(
            section, Qt::Horizontal, QString::fromStdString(header.title), Qt::DisplayRole);
        const bool identified = model->setHeaderData(
            section, Qt::Horizontal, QString::fromStdString(header.identifier.rawValue()),
            columnIdentifierRole);
        everyOne = everyOne && titled && identified;
    }
    return everyOne;
}

std::string columnIdentifier(const QAbstractItemView& view, int section) {
    const QAbstractItemModel* const model = view.model();
    if (model == nullptr) return {};
    return model->headerData(section, Qt::Horizontal, columnIdentifierRole)
        .toString()
        .toStdString();
}

}  // namespace quod
