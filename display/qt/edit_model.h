// CEditModel: the Qt table model over a CEditTable: one cell per sample of the current plane,
// columns x and rows y counted from 0. Display text in the number format, edit text exact;
// setData hands the typed text to the table, which refuses what is not a value.
#pragma once

#include <QAbstractTableModel>

class CEditTable;

class CEditModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    explicit CEditModel(CEditTable& table, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // The array or the page changed: new texts, and a new shape when the plane's changed.
    void Refresh();

  private:
    CEditTable& table_;
    int rows_ = 0, columns_ = 0;
};
