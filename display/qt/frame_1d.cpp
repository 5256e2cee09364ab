#include "display/qt/frame_1d.h"

#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>

#include "display/qt/view_1d.h"

CFrame1d::CFrame1d(CMdiDoc* doc, CView1d* view) : CMdiFrame(doc, view) {
    view->SetStatusLine(StatusLine());
    BuildMenus(view);
}

void CFrame1d::BuildMenus(CView1d* view) {
    auto add = [this](QMenu* menu, const QString& text, const QString& name, auto slot) {
        QAction* a = menu->addAction(text);
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    const bool xy = view->IsXy();

    QMenu* cursor = Menus()->addMenu("cursor");
    auto* modes = new QActionGroup(this);
    for (int m = 0; m < CPlotView::kCursorModes; ++m) {
        if (xy && m == CPlotView::CURSOR_XROI) continue;
        QAction* a = add(cursor, CPlotView::kCursorNames[m], QString("cursor_%1").arg(m),
                         [view, m] { view->OnCursorMode(m); });
        // Zoom out, rezoom and refresh act at once; the others are modes.
        if (m <= CPlotView::CURSOR_ZOOM) {
            a->setCheckable(true);
            a->setChecked(m == 0);
            modes->addAction(a);
        }
    }
    if (!xy) {
        QAction* pan = add(cursor, "pan", "cursor_pan", [view] { view->OnPanMode(); });
        pan->setCheckable(true);
        modes->addAction(pan);
    }
    cursor->addSeparator();
    add(cursor, "edit x range...", "cursor_edit_xrange", [view] { view->OnEditXrange(); });

    QMenu* plot = Menus()->addMenu("plot");
    add(plot, "phase", "plot_phase", [view] { view->OnPhase(); });
    add(plot, "mag", "plot_mag", [view] { view->OnMag(); });
    add(plot, "i", "plot_i", [view] { view->OnI(); });
    add(plot, "q", "plot_q", [view] { view->OnQ(); });
    plot->addSeparator();
    QAction* lock = add(plot, "axis lock", "plot_axis_lock", [view] { view->OnAxisLockToggle(); });
    lock->setCheckable(true);
    lock->setChecked(view->axis_lock != 0);
    add(plot, "background...", "plot_background", [view] { view->OnBackground(); });
    add(plot, "roi color...", "plot_roi_color", [view] { view->OnRoiColor(); });
    plot->addSeparator();
    add(plot, "copy", "plot_copy", [view] { view->OnCopy(); });
    add(plot, "duplicate", "plot_duplicate", [view] { view->OnDuplicate(); });

    if (!xy) {
        QMenu* roi = Menus()->addMenu("roi");
        add(roi, "min/max", "roi_minmax", [view] { view->OnMinMax(); });
        add(roi, "min/max all planes", "roi_minmax_all", [view] { view->OnMinMaxAll(); });
        add(roi, "min/max each y", "roi_minmax_y", [view] { view->OnMinMaxY(); });
        add(roi, "min/max each y all planes", "roi_minmax_y_all", [view] { view->OnMinMaxYAll(); });
        roi->addSeparator();
        add(roi, "std", "roi_std", [view] { view->OnRoiStd(); });
        add(roi, "std all planes", "roi_std_all", [view] { view->OnRoiStdAll(); });
        add(roi, "std each y", "roi_std_y", [view] { view->OnRoiStdY(); });
        add(roi, "std each y all planes", "roi_std_y_all", [view] { view->OnRoiStdYAll(); });
        roi->addSeparator();
        add(roi, "select all", "roi_select_all", [view] {
            view->OnRoiSelectAll();
            view->Draw();
        });
        add(roi, "reselect roi", "roi_reselect", [view] { view->OnReselectRoi(); });
    }

    QMenu* scroll = Menus()->addMenu("scroll");
    add(scroll, "z", "scroll_z", [view] { view->OnScrollZ(); });
    add(scroll, "t", "scroll_t", [view] { view->OnScrollT(); });
    add(scroll, "u", "scroll_u", [view] { view->OnScrollU(); });
    add(scroll, "v", "scroll_v", [view] { view->OnScrollV(); });
    add(scroll, "all", "scroll_all", [view] { view->OnScrollAll(); });
    scroll->addSeparator();
    add(scroll, "next", "scroll_next", [view] { view->OnScrollNext(); });
    add(scroll, "prior", "scroll_prior", [view] { view->OnScrollPrior(); });
    static const char* kPeriods[8] = {"50 ms", "100 ms", "200 ms", "500 ms",
                                      "1 s",   "2 s",    "5 s",    "10 s"};
    for (int k = 0; k < 8; ++k) {
        const int period = CMdiView::kPeriods[k];
        add(scroll, kPeriods[k], QString("scroll_%1ms").arg(period),
            [view, period] { view->StartScroll(period); });
    }
    add(scroll, "stop", "scroll_stop", [view] { view->OnStopScroll(); });

    QMenu* data = Menus()->addMenu("data");
    if (!xy) add(data, "crop", "data_crop", [view] { view->OnCrop(); });
    static const char* kCats[6] = {"cat right",  "cat left",  "cat top",
                                   "cat bottom", "cat front", "cat back"};
    for (int k = 0; k < 6; ++k)
        add(data, kCats[k], QString("data_cat_%1").arg(k),
            [view, k] { view->OnCatAsk(k / 2, k == 1 || k == 2 || k == 4, kCats[k]); });
    add(data, "transpose xy", "data_transpose_xy", [view] { view->OnTranspose("xy"); });
    add(data, "transpose xz", "data_transpose_xz", [view] { view->OnTranspose("xz"); });
    add(data, "transpose yz", "data_transpose_yz", [view] { view->OnTranspose("yz"); });
    data->addSeparator();
    add(data, "save...", "data_save", [view] { view->OnFileSave(); });
    // The pipe tool is not part of the program yet: its entry stands, disabled.
    QAction* pipe = data->addAction("pipe now");
    pipe->setObjectName("data_pipe_now");
    pipe->setEnabled(false);
}
