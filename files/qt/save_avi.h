// CSaveAvi: the movie dialog of the save dialog's AVI row, a thin binding of CSaveAviModel.
// Widgets by objectName: "avi_encoder" (combo, in AviEncoder order), "avi_fps", "avi_ppt",
// "avi_z_first", "avi_z_last" and so on for t, u, v, "avi_frames" (frame count),
// "avi_status", "avi_ok", "avi_cancel".
#pragma once

#include <QDialog>

class CSaveAviModel;
class QComboBox;
class QLabel;
class QSpinBox;

class CSaveAvi : public QDialog {
    Q_OBJECT
  public:
    explicit CSaveAvi(CSaveAviModel& model, QWidget* parent = nullptr);

    // Applies the model and accepts, or shows why not.
    void OnOk();

  private:
    void Refresh();

    CSaveAviModel& model_;
    QComboBox* encoder_;
    QSpinBox* fps_;
    QSpinBox* ppt_;
    QSpinBox* first_[4];
    QSpinBox* last_[4];
    QLabel* frames_;
    QLabel* status_;
};
