// CViewXy: one array against another; the plot view with its x from the first array. The
// logic tells the two apart by the look's kind: box zooms, no x range, no line overlay.
#pragma once

#include "display/qt/view_1d.h"

class CViewXy : public CView1d {
    Q_OBJECT
  public:
    CViewXy(CMdiDoc& doc, CDataSpace& space, const C1d& options, const CNewPlot* defaults,
            QWidget* parent = nullptr);
};
