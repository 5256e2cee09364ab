#include "display/qt/display_ui.h"

#include <QDockWidget>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QScrollBar>

#include "core/data_space.h"
#include "core/window_space.h"
#include "display/image_options.h"
#include "display/plot_options.h"
#include "display/qt/doc_1d.h"
#include "display/qt/doc_2d.h"
#include "display/qt/form_axis.h"
#include "display/qt/form_new.h"
#include "display/qt/form_opt_plot.h"
#include "display/qt/form_wl.h"
#include "display/qt/frame_1d.h"
#include "display/qt/frame_2d.h"
#include "display/qt/frame_edit.h"
#include "display/qt/view_edit.h"
#include "display/qt/view_rgb.h"
#include "display/qt/view_xy.h"
#include "shell/option_table.h"

namespace {

// The factories are plain functions: they reach the one display layer of the program.
CDisplayUi* g_ui = nullptr;

CDisplayEntry* OpenImage(const CDisplayRequest& request) {
    return g_ui ? g_ui->Open(request) : nullptr;
}

CDisplayEntry* OpenPlotWindow(const CDisplayRequest& request) {
    return g_ui ? g_ui->OpenPlot(request) : nullptr;
}

CDisplayEntry* OpenTable(const CDisplayRequest& request) {
    return g_ui ? g_ui->OpenEdit(request) : nullptr;
}

}  // namespace

void CDisplayModules::Register(COptionTable& table) {
    table.Set(
        OPT_WIN_LEV, [](FILE* f) { GlobalWinLev().PrintfOptions(f); },
        [](CKeyReader& r) { return GlobalWinLev().ScanfOptions(r); });
    table.Set(
        OPT_2D, [](FILE* f) { Global2d().PrintfOptions(f); },
        [](CKeyReader& r) { return Global2d().ScanfOptions(r); });
    table.Set(
        OPT_1D, [](FILE* f) { Global1d().PrintfOptions(f); },
        [](CKeyReader& r) { return Global1d().ScanfOptions(r); });
    table.Set(
        OPT_NEW_1D, [this](FILE* f) { new_1d.PrintfOptions(f); },
        [this](CKeyReader& r) { return new_1d.ScanfOptions(r); });
    table.Set(
        OPT_NEW_2D, [this](FILE* f) { new_2d.PrintfOptions(f); },
        [this](CKeyReader& r) { return new_2d.ScanfOptions(r); });
    table.Set(
        OPT_NEW_RGB, [this](FILE* f) { new_rgb.PrintfOptions(f); },
        [this](CKeyReader& r) { return new_rgb.ScanfOptions(r); });
    table.Set(
        OPT_NEW_XY, [this](FILE* f) { new_xy.PrintfOptions(f); },
        [this](CKeyReader& r) { return new_xy.ScanfOptions(r); });
}

CDisplayUi::CDisplayUi(QMainWindow& frame, QMdiArea& mdi, CDataSpace& space,
                       CDisplayModules& modules)
    : frame_(frame),
      mdi_(mdi),
      space_(space),
      modules_(modules),
      form_(new CFormWL(GlobalWinLev(), space, &frame)) {
    g_ui = this;
    previous_[0] = SetDisplayWindow(LOOK_2D, OpenImage);
    previous_[1] = SetDisplayWindow(LOOK_RGB, OpenImage);
    previous_[2] = SetDisplayWindow(LOOK_1D, OpenPlotWindow);
    previous_[3] = SetDisplayWindow(LOOK_XY, OpenPlotWindow);
    previous_edit_ = SetDisplayWindow(LOOK_SPREADSHEET, OpenTable);
    frame.addDockWidget(Qt::RightDockWidgetArea, form_);
    // Locked window and level reach the images chosen in the window list.
    form_->SetLockedTargets([this] {
        std::vector<CWinLevTarget*> targets;
        for (QMdiSubWindow* w : mdi_.subWindowList())
            if (auto* f = qobject_cast<CFrame2d*>(w))
                if (auto* v = qobject_cast<CView2d*>(f->View()); v && (v->Doc().select & 1))
                    targets.push_back(v);
        return targets;
    });
    connect(&mdi, &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow* w) {
        auto* f = qobject_cast<CFrame2d*>(w);
        if (f) Activate(qobject_cast<CView2d*>(f->View()));
    });
    QMenu* menu = frame.menuBar()->addMenu("dis&play");
    menu->setObjectName("menu_display");
    auto add = [this, menu](const char* text, const char* name, auto make) {
        QAction* a = menu->addAction(text);
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, [this, make] {
            auto form = make();
            form->exec();
        });
    };
    add("new 1d display...", "action_new_1d",
        [this] { return std::make_unique<CFormNew1d>(modules_.new_1d, space_, &frame_); });
    add("new 2d display...", "action_new_2d",
        [this] { return std::make_unique<CFormNew2d>(modules_.new_2d, space_, &frame_); });
    add("new rgb display...", "action_new_rgb",
        [this] { return std::make_unique<CFormNewRgb>(modules_.new_rgb, space_, &frame_); });
    add("new xy display...", "action_new_xy",
        [this] { return std::make_unique<CFormNewXy>(modules_.new_xy, space_, &frame_); });
    menu->addAction(form_->toggleViewAction());
    // The main window's option entries stand disabled until a form is given to them.
    auto option = [&frame, this](const char* name, auto run) {
        if (QAction* a = frame.findChild<QAction*>(name)) {
            a->setEnabled(true);
            connect(a, &QAction::triggered, this, run);
        }
    };
    option("action_options_1d", [this] {
        CFormOptPlot form(modules_.new_1d, &Global1d(), &frame_);
        form.exec();
    });
    option("action_options_xy", [this] {
        CFormOptPlot form(modules_.new_xy, nullptr, &frame_);
        form.exec();
    });
    option("action_axis_1d", [this] { OnAxisOptions(Global1d().axes_1d); });
    option("action_axis_xy", [this] { OnAxisOptions(Global1d().axes_xy); });
}

void CDisplayUi::OnAxisOptions(CAxisOptions& options) {
    CFormAxis form(options, &frame_);
    if (form.exec() != QDialog::Accepted) return;
    // The plot at hand takes them too when it is of the kind, so the change shows at once.
    auto* f = qobject_cast<CFrame1d*>(mdi_.activeSubWindow());
    auto* view = f ? qobject_cast<CView1d*>(f->View()) : nullptr;
    if (!view || view->IsXy() != (options.kind == LOOK_XY)) return;
    options.Apply(view->Look());
    view->Draw();
}

CDisplayUi::~CDisplayUi() {
    form_->SetTarget(nullptr);
    CWindowSpace& windows = GlobalWindowSpace();
    for (int i = windows.Count() - 1; i >= 0; --i)
        if (auto* doc = dynamic_cast<CMdiDoc*>(windows.Get(i)); doc && &doc->Space() == &space_) {
            doc->Close();
            windows.DelData(doc);
        }
    SetDisplayWindow(LOOK_2D, previous_[0]);
    SetDisplayWindow(LOOK_RGB, previous_[1]);
    SetDisplayWindow(LOOK_1D, previous_[2]);
    SetDisplayWindow(LOOK_XY, previous_[3]);
    SetDisplayWindow(LOOK_SPREADSHEET, previous_edit_);
    if (g_ui == this) g_ui = nullptr;
}

void CDisplayUi::Activate(CView2d* view) {
    if (view && form_->Target() != view) form_->SetTarget(view);
}

CDisplayEntry* CDisplayUi::Open(const CDisplayRequest& request) {
    if (request.kind != LOOK_2D && request.kind != LOOK_RGB) return nullptr;
    const CLook look = request.look ? *request.look : CLook(request.kind);
    auto doc = std::make_unique<CDoc2d>(look, space_);
    doc->kind = request.kind;
    for (int k = 0; k < 3; ++k) doc->data[k] = request.data[k];
    doc->caption = request.caption;
    const std::string name = !request.name.empty() ? request.name
                             : request.data[0]     ? request.data[0]->name
                                                   : "image";
    std::snprintf(doc->name, sizeof doc->name, "%s", name.c_str());
    CDoc2d* raw = doc.get();
    CView2d* view = request.kind == LOOK_RGB ? new CViewRgb(*raw, space_, Global2d())
                                             : new CView2d(*raw, space_, Global2d());
    auto* frame = new CFrame2d(raw, view);
    if (!AddFrame(std::move(doc), frame)) return nullptr;
    connect(view, &CView2d::activated, this, &CDisplayUi::Activate);
    connect(view, &CView2d::detached, this, [this](CView2d* v) {
        if (form_->Target() == v) form_->SetTarget(nullptr);
    });
    // The client fits the plane at its zoom, within the area.
    const CPlane& p = view->ZoomPlane();
    const int w = std::clamp(static_cast<int>(view->Columns() * p.zoom[0] / 100), 64,
                             std::max(64, mdi_.width() - 40));
    const int h = std::clamp(static_cast<int>(view->Rows() * p.zoom[1] / 100), 64,
                             std::max(64, mdi_.height() - 80));
    frame->resize(w + 12, h + 60);
    frame->show();
    Activate(view);
    return raw;
}

bool CDisplayUi::AddFrame(std::unique_ptr<CMdiDoc> doc, CMdiFrame* frame) {
    CMdiDoc* raw = doc.get();
    if (!GlobalWindowSpace().NewData(std::move(doc))) {
        raw->SetFrame(nullptr);
        frame->ForgetDoc();
        delete frame;
        return false;
    }
    frame->setWindowTitle(
        QString::fromUtf8(raw->caption.empty() ? raw->name : raw->caption.c_str()));
    mdi_.addSubWindow(frame);
    return true;
}

CDisplayEntry* CDisplayUi::OpenPlot(const CDisplayRequest& request) {
    if (request.kind != LOOK_1D && request.kind != LOOK_XY) return nullptr;
    if (!request.data[0] || (request.kind == LOOK_XY && !request.data[1])) return nullptr;
    const CLook look = request.look ? *request.look : CLook(request.kind);
    auto doc = std::make_unique<CDoc1d>(look, space_);
    doc->kind = request.kind;
    for (int k = 0; k < 3; ++k) doc->data[k] = request.data[k];
    doc->caption = request.caption;
    const std::string name = !request.name.empty() ? request.name : request.data[0]->name;
    std::snprintf(doc->name, sizeof doc->name, "%s", name.c_str());
    CDoc1d* raw = doc.get();
    const bool xy = request.kind == LOOK_XY;
    const CNewPlot& holder = xy ? static_cast<const CNewPlot&>(modules_.new_xy) : modules_.new_1d;
    CView1d* view = xy ? new CViewXy(*raw, space_, Global1d(), &holder)
                       : new CView1d(*raw, space_, Global1d(), &holder);
    auto* frame = new CFrame1d(raw, view);
    if (!AddFrame(std::move(doc), frame)) return nullptr;
    connect(view, &CView1d::saveRequested, this, [this](CZrkData* a) {
        if (save_array) save_array(a);
    });
    const int* size = holder.plotsize;
    frame->resize(std::clamp(size[0], 64, std::max(64, mdi_.width() - 40)) + 12,
                  std::clamp(size[1], 48, std::max(48, mdi_.height() - 80)) + 60);
    frame->show();
    return raw;
}

CDisplayEntry* CDisplayUi::OpenEdit(const CDisplayRequest& request) {
    if (request.kind != LOOK_SPREADSHEET || !request.data[0]) return nullptr;
    const CLook look = request.look ? *request.look : CLook(LOOK_SPREADSHEET);
    auto doc = std::make_unique<CMdiDoc>(look, space_);
    doc->kind = LOOK_SPREADSHEET;
    doc->data[0] = request.data[0];
    doc->caption = request.caption;
    const std::string name = !request.name.empty() ? request.name : request.data[0]->name;
    std::snprintf(doc->name, sizeof doc->name, "%s", name.c_str());
    CMdiDoc* raw = doc.get();
    auto* view = new CViewEdit(*raw);
    auto* frame = new CFrameEdit(raw, view);
    if (!AddFrame(std::move(doc), frame)) return nullptr;
    frame->resize(std::clamp(mdi_.width() / 2, 240, 640), std::clamp(mdi_.height() / 2, 160, 480));
    frame->show();
    return raw;
}
