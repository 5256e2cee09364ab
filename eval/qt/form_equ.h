// CFormEqu: the equation as a form. Several lines of equations, the option "update range",
// a name whose record the equations see as "this", and its own field for the report
// ("..calculating.." while it runs). It evaluates on the data space it is given.
#pragma once

#include <QWidget>

class CDataSpace;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

class CFormEqu : public QWidget {
    Q_OBJECT
  public:
    explicit CFormEqu(CDataSpace& space, QWidget* parent = nullptr);

    void OnEval();
    QPlainTextEdit* Edit() const { return edit_; }

  signals:
    void evaluated();

  private:
    CDataSpace& space_;
    QPlainTextEdit* edit_;
    QCheckBox* update_range_;
    QLineEdit* this_name_;
    QLabel* report_;
};
