// CViewRgb: three arrays as the red, green and blue of one picture, each through its own
// plane (window, level and channel mask); otherwise the 2d view.
#pragma once

#include "display/qt/view_2d.h"

class CViewRgb : public CView2d {
    Q_OBJECT
  public:
    using CView2d::CView2d;

  protected:
    int Render(CFrame& frame) override;
};
