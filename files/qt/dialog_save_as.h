// CDialogSaveAs: the save dialog over CSaveModel. The type list, the ticked list of arrays
// or displays, the file name, the fields of the binary and text writers, and the status
// line. OK saves once; the dialog stays while the list has names left or "stay open" is on.
#pragma once

#include <QDialog>

class CSaveModel;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;

class CDialogSaveAs : public QDialog {
    Q_OBJECT
  public:
    CDialogSaveAs(CSaveModel& model, QWidget* parent = nullptr);

    void OnOk();

  signals:
    void saved(const QString& status);

  private:
    void Fill();
    void StoreFields();

    CSaveModel& model_;
    QComboBox* type_;
    QListWidget* list_;
    QLineEdit* file_;
    QComboBox* dtype_;
    QComboBox* iqmp_;
    QCheckBox* swap_;
    QLineEdit* format_;
    QLineEdit* separator_;
    QLineEdit* eol_;
    QComboBox* perline_;
    QCheckBox* stay_;
    QLabel* names_;
    QLabel* status_;
};
