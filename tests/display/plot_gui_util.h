// Plots for the option form tests: arrays made here and plots opened through the holders,
// as the new-display forms open them.
#pragma once

#include <QMdiArea>
#include <QMdiSubWindow>
#include <cstring>
#include <vector>

#include "display/new_display.h"
#include "display/qt/frame_1d.h"
#include "display/qt/view_1d.h"
#include "tests/display/gui_fixture.h"

class PlotFormTest : public DisplayGuiTest {
  protected:
    CZrkData* Row(const char* name, const std::vector<float>& v) {
        CZrkData* a = space_.NewData(TYPE_R4, v.size(), 1, 1, 1, 1, 1, name);
        std::memcpy(a->Data(), v.data(), v.size() * sizeof(float));
        return a;
    }
    // The view of the plot `holder` opens over its names, laid out at 400 x 300.
    CView1d* OpenThrough(CNewPlot& holder) {
        if (!holder.OnViewNew(space_) || holder.opened.empty()) return nullptr;
        auto* doc = static_cast<CMdiDoc*>(holder.opened.back());
        auto* view = qobject_cast<CView1d*>(doc->Frame()->View());
        view->resize(400, 300);
        view->Picture();
        return view;
    }
    // The axis of `kind` (1 bottom, 2 left) as the view draws it.
    static CAxisMarks Marks(const CView1d* view, int kind) {
        CTextMetrics metrics;
        metrics.width = [](const std::string& s) { return 7 * static_cast<int>(s.size()); };
        for (const CAxisMarks& m : view->AxisMarks(metrics))
            if (m.axis->kind == kind) return m;
        return {};
    }
};
