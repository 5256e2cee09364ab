// CDialogOpen: the open dialog over COpenModel. A folder and its files (several may be
// selected), the type list, the fields of the binary and text layouts, the baselines of raw
// scanner files, and the info line and (with "preview" on) the first plane that the header
// step of the current file gives on every change. OK loads the selection;
// for kinds that go through the load dialog it shows CDialogLoad.
#pragma once

#include <QDialog>

class COpenModel;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QRadioButton;

class CDialogOpen : public QDialog {
    Q_OBJECT
  public:
    CDialogOpen(COpenModel& model, QWidget* parent = nullptr);

    // Lists the files of the folder field.
    void ShowFolder();
    void OnOk();

  signals:
    void opened(const QString& status);

  private:
    void StoreFields();
    void OnSelection();
    void ShowPreview();

    COpenModel& model_;
    QLineEdit* folder_;
    QListWidget* files_;
    QComboBox* type_;
    QLineEdit* res_[6];
    QLineEdit* skip_[6];
    QLineEdit* offset_;
    QComboBox* datatype_;
    QCheckBox* swap_;
    QComboBox* perline_;
    QCheckBox* dicom_scale_;
    QCheckBox* stay_;
    QCheckBox* preview_;
    QRadioButton* baselines_[3];
    QLabel* picture_;
    QLabel* title_;
    QLabel* info_;
};
