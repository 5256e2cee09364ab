// CFormRename: old and new name; "rename" runs CRename on the global data space and shows
// its answer in the form.
#pragma once

#include <QDialog>

class CRename;
class QLabel;
class QLineEdit;

class CFormRename : public QDialog {
    Q_OBJECT
  public:
    explicit CFormRename(CRename& rename, QWidget* parent = nullptr);

    void OnRename();

  signals:
    void renamed(const QString& status);

  private:
    CRename& rename_;
    QLineEdit* old_name_;
    QLineEdit* new_name_;
    QLabel* status_;
};
