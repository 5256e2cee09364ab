#include "display/qt/view_xy.h"

CViewXy::CViewXy(CMdiDoc& doc, CDataSpace& space, const C1d& options, const CNewPlot* defaults,
                 QWidget* parent)
    : CView1d(doc, space, options, defaults, parent) {
    setObjectName("view_xy");
}
