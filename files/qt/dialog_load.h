// CDialogLoad: the load dialog over CLoadModel. It shows the current file and its status,
// the naming rule with its format and typed name, the report and display choices, and the
// five buttons; it closes once the list has ended or the user quits.
#pragma once

#include <QDialog>

class CLoadModel;
class QCheckBox;
class QLabel;
class QLineEdit;
class QRadioButton;

class CDialogLoad : public QDialog {
    Q_OBJECT
  public:
    CDialogLoad(CLoadModel& model, QWidget* parent = nullptr);

  private:
    void Run(int (CLoadModel::*action)());
    void StoreFields();
    void ShowCurrent();

    CLoadModel& model_;
    QLabel* file_;
    QLabel* status_;
    QRadioButton* rule_[4];
    QLineEdit* format_;
    QLineEdit* name_;
    QCheckBox* report_;
    QRadioButton* display_[3];
};
