// CFrame1d: the child frame of a 1d or xy plot, with the view's menus: cursor, plot, roi,
// scroll and data. Every action carries an objectName ("cursor_2", "plot_phase",
// "roi_minmax", "data_crop" ...).
#pragma once

#include "display/qt/mdi_frame.h"

class CView1d;

class CFrame1d : public CMdiFrame {
    Q_OBJECT
  public:
    CFrame1d(CMdiDoc* doc, CView1d* view);

  private:
    void BuildMenus(CView1d* view);
};
