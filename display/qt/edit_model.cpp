#include "display/qt/edit_model.h"

#include <algorithm>
#include <limits>

#include "display/edit_table.h"

namespace {

// A view has int rows and columns; larger planes show their first part.
int Clip(res_t n) { return static_cast<int>(std::min<res_t>(n, std::numeric_limits<int>::max())); }

}  // namespace

CEditModel::CEditModel(CEditTable& table, QObject* parent)
    : QAbstractTableModel(parent),
      table_(table),
      rows_(Clip(table.Rows())),
      columns_(Clip(table.Columns())) {}

int CEditModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int CEditModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columns_;
}

QVariant CEditModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const res_t x = static_cast<res_t>(index.column()), y = static_cast<res_t>(index.row());
    if (role == Qt::DisplayRole) return QString::fromStdString(table_.Text(x, y));
    if (role == Qt::EditRole) return QString::fromStdString(table_.EditText(x, y));
    if (role == Qt::TextAlignmentRole) return int(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

bool CEditModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || role != Qt::EditRole) return false;
    if (!table_.SetText(static_cast<res_t>(index.column()), static_cast<res_t>(index.row()),
                        value.toString().toStdString()))
        return false;
    emit dataChanged(index, index);
    return true;
}

Qt::ItemFlags CEditModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
}

QVariant CEditModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole) return QAbstractTableModel::headerData(section, orientation, role);
    return section;  // x across, y down, from 0 as the language counts
}

void CEditModel::Refresh() {
    const int rows = Clip(table_.Rows()), columns = Clip(table_.Columns());
    if (rows != rows_ || columns != columns_) {
        beginResetModel();
        rows_ = rows;
        columns_ = columns;
        endResetModel();
    } else if (rows_ > 0 && columns_ > 0) {
        emit dataChanged(index(0, 0), index(rows_ - 1, columns_ - 1));
    }
}
