// CFormEqu: the equation as a form. Several lines of equations, the option "update range",
// a name whose record the equations see as "this", and its own field for the report
// ("..calculating.." while it runs).
#pragma once

#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

class CFormEqu : public QWidget {
    Q_OBJECT
  public:
    explicit CFormEqu(QWidget* parent = nullptr);

    void OnEval();
    QPlainTextEdit* Edit() const { return edit_; }

  signals:
    void evaluated();

  private:
    QPlainTextEdit* edit_;
    QCheckBox* update_range_;
    QLineEdit* this_name_;
    QLabel* report_;
};
