// CFormAlloc: five rows of name, x, y, z, t sizes and type; "allocate" runs them through
// CAlloc on the global data space and shows the outcome in the form.
#pragma once

#include <QDialog>

#include "shell/alloc.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;

class CFormAlloc : public QDialog {
    Q_OBJECT
  public:
    explicit CFormAlloc(QWidget* parent = nullptr);

    // Reads the rows into the form's record and runs it.
    void OnAllocate();

  signals:
    void allocated(const QString& status);

  private:
    struct Row {
        QLineEdit* name;
        QSpinBox* size[4];
        QComboBox* type;
    };
    Row rows_[CAlloc::kRows];
    QLabel* status_;
};
