// The new-display forms, one per kind, over their option holders: CFormNew1d and CFormNew2d
// (one array), CFormNewXy (x and y arrays), CFormNewRgb (r, g, b arrays). Fields: the names
// ("new_name0" ...), the channel ("new_iqmp"), the Fourier preview ("new_ft_x", "new_ft_y"),
// append ("new_append") and the status line ("new_status"); "new_display" runs OnViewNew and
// closes the form when a display opened, "new_cancel" closes it without one.
#pragma once

#include <QDialog>

#include "display/new_display.h"

class CDataSpace;
class QCheckBox;
class QComboBox;
class QLabel;

class CFormNew : public QDialog {
    Q_OBJECT
  public:
    CFormNew(CNewDisplay& holder, CDataSpace& space, const QStringList& labels, const char* title,
             QWidget* parent = nullptr);

    void OnViewNew();
    void OnViewCancel() { reject(); }
    void UpdateStatus();

  private:
    void Store();

    CNewDisplay& holder_;
    CDataSpace& space_;
    QList<QComboBox*> names_;
    QComboBox* iqmp_;
    QCheckBox *ft_x_, *ft_y_, *append_;
    QLabel* status_;
};

class CFormNew1d : public CFormNew {
  public:
    CFormNew1d(CNew1d& holder, CDataSpace& space, QWidget* parent = nullptr)
        : CFormNew(holder, space, {"data"}, "display 1d", parent) {}
};

class CFormNew2d : public CFormNew {
  public:
    CFormNew2d(CNew2d& holder, CDataSpace& space, QWidget* parent = nullptr)
        : CFormNew(holder, space, {"data"}, "display 2d", parent) {}
};

class CFormNewRgb : public CFormNew {
  public:
    CFormNewRgb(CNewRgb& holder, CDataSpace& space, QWidget* parent = nullptr)
        : CFormNew(holder, space, {"r", "g", "b"}, "display rgb", parent) {}
};

class CFormNewXy : public CFormNew {
  public:
    CFormNewXy(CNewXy& holder, CDataSpace& space, QWidget* parent = nullptr)
        : CFormNew(holder, space, {"x axis", "y axis"}, "scatter xy", parent) {}
};
