// CFormWL: the docked window/level panel over GWinLev. It shows the working values of the
// current target, writes every edit back through Apply, and draws the picture chosen by
// `wl_plot`: the spatial ramp, the lookup curve, or a colour bar labelled with the ends of
// the window. Widgets carry objectNames "wl_window", "wl_level", "wl_scale", ...
#pragma once

#include <QDockWidget>
#include <QImage>
#include <functional>
#include <vector>

#include "display/win_lev.h"

class CDataSpace;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QSlider;
class QSpinBox;

class CFormWL : public QDockWidget {
    Q_OBJECT
  public:
    CFormWL(GWinLev& wl, CDataSpace& space, QWidget* parent = nullptr);

    // Takes the values of `target` (null: none; edits then only change the working set).
    void SetTarget(CWinLevTarget* target);
    // The other displays an edit reaches when window and level are locked.
    void SetLockedTargets(std::function<std::vector<CWinLevTarget*>()> locked) {
        locked_ = std::move(locked);
    }
    CWinLevTarget* Target() const { return target_; }
    // Fields from the working values, and the picture.
    void Load();
    // The wl_plot picture for the current values.
    QImage PlotPicture(int width, int height) const;

  private:
    void Store();
    void ApplyNow();

    GWinLev& wl_;
    CDataSpace& space_;
    CWinLevTarget* target_ = nullptr;
    std::function<std::vector<CWinLevTarget*>()> locked_;
    bool loading_ = false;
    QLineEdit *window_, *level_, *nonlin_;
    QLabel *range_, *picture_;
    QSlider *window_slider_, *level_slider_;
    QComboBox *scale_, *mouse_, *plot_, *ramp_dir_, *ramp_end_;
    QSpinBox* cycles_;
    QCheckBox *inv_, *ramp_, *channels_[3];
};
