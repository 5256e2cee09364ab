// CFormRename: old and new name; "rename" runs CRename on the data space the form is given
// and shows its answer in the form.
#pragma once

#include <QDialog>

class CDataSpace;
class CRename;
class QLabel;
class QLineEdit;

class CFormRename : public QDialog {
    Q_OBJECT
  public:
    CFormRename(CDataSpace& space, CRename& rename, QWidget* parent = nullptr);

    void OnRename();

  signals:
    void renamed(const QString& status);

  private:
    CDataSpace& space_;
    CRename& rename_;
    QLineEdit* old_name_;
    QLineEdit* new_name_;
    QLabel* status_;
};
