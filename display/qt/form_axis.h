// CFormAxis: the "1d axis etc .." and "xy axis etc .." options, a column for the x axes and
// one for the y axes of CAxisOptions. Numbers are typed through validators, so letters never
// reach a field; OK ("axis1d_ok", "axisxy_ok") stores the fields, new plots of the kind start
// with them, and the caller gives them to the plot at hand.
#pragma once

#include <QDialog>

#include "display/axis_options.h"

class QCheckBox;
class QLineEdit;
class QSpinBox;

class CFormAxis : public QDialog {
    Q_OBJECT
  public:
    CFormAxis(CAxisOptions& options, QWidget* parent = nullptr);

    void OnOk();

  private:
    struct Column {
        QLineEdit *tick, *minortick, *tickscale, *tickoff, *tickformat;
        QSpinBox *ticklen, *mticklen, *skipinter, *thick;
        QCheckBox* grid;
    };

    CAxisOptions& options_;
    Column column_[2];  // x, y
};
