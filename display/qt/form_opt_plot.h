// CFormOptPlot: the "1d display..." and "xy display..." options: how new plots look (name
// format, channel, line and axis colours, thickness, marks, size, the axes shown and
// labelled) and, for 1d, overlaid rows and the axis lock. OK ("opt1d_ok", "optxy_ok")
// stores the fields in the holder, and new plots take them; colours are typed as
// hexadecimal words BBGGRR, as the preferences file keeps them.
#pragma once

#include <QDialog>

#include "display/new_display.h"
#include "display/plot_options.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;

class CFormOptPlot : public QDialog {
    Q_OBJECT
  public:
    // `options` is the 1d form's axis lock; null for the xy form.
    CFormOptPlot(CNewPlot& holder, C1d* options, QWidget* parent = nullptr);

    void OnOk();

  private:
    CNewPlot& holder_;
    C1d* options_;
    QLineEdit* nameformat_;
    QComboBox* iqmp_;
    QLineEdit* colors_[4];  // line, second line, axes, background
    QSpinBox *thick_, *symbol_, *symsize_, *width_, *height_;
    QCheckBox* axis_[4];
    QCheckBox* axis_text_[4];
    QCheckBox* overlayed_ = nullptr;
    QCheckBox* lock_ = nullptr;
};
