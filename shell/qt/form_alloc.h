// CFormAlloc: five rows of name, x, y, z, t sizes and type; "allocate" runs them through
// CAlloc on the data space the form is given and shows the outcome in the form.
#pragma once

#include <QDialog>

#include "shell/alloc.h"

class CDataSpace;
class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;

class CFormAlloc : public QDialog {
    Q_OBJECT
  public:
    explicit CFormAlloc(CDataSpace& space, QWidget* parent = nullptr);

    // Reads the rows into the form's record and runs it.
    void OnAllocate();

  signals:
    void allocated(const QString& status);

  private:
    CDataSpace& space_;
    struct Row {
        QLineEdit* name;
        QSpinBox* size[4];
        QComboBox* type;
    };
    Row rows_[CAlloc::kRows];
    QLabel* status_;
};
