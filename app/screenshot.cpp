// quelmor_screenshot: starts the program as a user would, types a few equations into the
// bar, and writes a picture of the main window (under Xvfb: xvfb-run -a), and with a second
// file name one of the about dialog; with two more, the main window with the script manager
// on a folder of sample scripts, and the function browser on `ft`; with a fifth, a wave made
// by equations in a 2d display in "jet", the window/level pane showing its colour bar and a
// read-out in the status line; with a sixth, an ellipse drawn on that display with its
// statistics in the history; with eight more, the inversion sheet on each of its seven pages
// filled for the demo phantom, and the stiffness display its run opens; with one more, a 1d
// plot of two profiles of the wave with its legend and an x range.
#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "core/data_space.h"
#include "core/script_space.h"
#include "core/zrk_data.h"
#include "display/qt/display_ui.h"
#include "display/qt/form_wl.h"
#include "display/qt/mdi_doc.h"
#include "display/qt/mdi_frame.h"
#include "display/qt/view_1d.h"
#include "display/qt/view_2d.h"
#include "display/roi_edit.h"
#include "eval/qt/bar_equ.h"
#include "eval/qt/dialog_func.h"
#include "eval/qt/form_script.h"
#include "eval/qt/frame_script.h"
#include "mu/demo_phantom.h"
#include "mu/qt/form_mu.h"
#include "shell/qt/about_wave.h"
#include "shell/qt/main_frame.h"
#include "shell/qt/zarnik_app.h"

namespace {

std::string ScriptFolder() {
    return (std::filesystem::temp_directory_path() / "quelmor_screenshot_scripts").string();
}

// A folder of sample scripts, chosen in the manager as a user would browse to it.
void ShowScripts(CMainFrame* frame) {
    const std::string folder = ScriptFolder();
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/double_it") << "script (p) { p = p * 2; }\n";
    std::ofstream(folder + "/mask_clean") << "mask = thresh(magn, 2, 9, 0) > 0;\n";
    std::ofstream(folder + "/stiff_range") << "stiff = clip(stiff, 0, 20);\n";
    std::ofstream(folder + "/wave.prep") << "// phase to complex wave\nwave = cexp(ph);\n";
    CFormScript* form = frame->Scripts()->Form();
    form->choose_folder = [folder] { return QString::fromStdString(folder); };
    frame->Scripts()->show();
    frame->resizeDocks({frame->Scripts()}, {400}, Qt::Horizontal);
    form->OnFolder(form->findChild<QComboBox*>("script_folders")->count() - 2);
}

// A damped circular wave in a 2d display, zoomed, in "jet", with the vertical colour bar of
// the window/level pane and the read-out of a point under the mouse.
void ShowWave(CZarnikApp& app, CBarEqu* bar) {
    for (const char* line : {"x = rampx(-6.3, 6.3, 160)", "y = rampy(-6.3, 6.3, 160)",
                             "r = sqrt(x*x + y*y)", "ripple = cos(r * 3) * exp(r * -0.15)"}) {
        bar->Edit()->setText(line);
        bar->OnEquEval();
    }
    CNew2d& n = app.DisplayModules().new_2d;
    n.names[0] = "ripple";
    n.iqmp = 0;
    if (!n.OnViewNew(GlobalDataSpace()) || n.opened.empty()) return;
    auto* doc = static_cast<CMdiDoc*>(n.opened[0]);
    auto* view = qobject_cast<CView2d*>(doc->Frame()->View());
    view->SetPalette("jet");
    view->OnZoom200();
    doc->Frame()->resize(360, 420);
    doc->Frame()->move(10, 10);
    GlobalWinLev().wl_plot = 4;
    CFormWL* form = app.DisplayUi()->FormWL();
    form->SetTarget(view);
    CMainFrame* frame = app.Frame();
    frame->resizeDocks({form}, {440}, Qt::Horizontal);
    if (auto* history = frame->findChild<QDockWidget*>("history_dock"))
        frame->resizeDocks({history}, {110}, Qt::Vertical);
    const QPointF at(200, 120);
    QMouseEvent move(QEvent::MouseMove, at, view->mapToGlobal(at), Qt::NoButton, Qt::NoButton, {});
    QApplication::sendEvent(view, &move);
}

// An ellipse dragged on the wave's display, and its statistics.
void ShowRoi(CZarnikApp& app) {
    CNew2d& n = app.DisplayModules().new_2d;
    if (n.opened.empty()) return;
    auto* view = qobject_cast<CView2d*>(static_cast<CMdiDoc*>(n.opened[0])->Frame()->View());
    view->SetCursorMode(CRoiEdit::MODE_ELLIPSE);
    const auto send = [view](QEvent::Type type, QPointF at, Qt::MouseButton button,
                             Qt::MouseButtons held) {
        QMouseEvent e(type, at, view->mapToGlobal(at), button, held, {});
        QApplication::sendEvent(view, &e);
    };
    send(QEvent::MouseButtonPress, {90, 70}, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, {230, 190}, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, {230, 190}, Qt::LeftButton, Qt::NoButton);
    view->CalcRoi();
}

// Two profiles across the wave's display, one plot with a legend and an x range; the plot's
// window alone goes into `path`. Returns 0 when it was written.
int ShowPlot(CZarnikApp& app, const char* path) {
    CNew2d& n = app.DisplayModules().new_2d;
    if (n.opened.empty()) return 1;
    auto* image = qobject_cast<CView2d*>(static_cast<CMdiDoc*>(n.opened[0])->Frame()->View());
    CDataSpace& space = GlobalDataSpace();
    image->SetProfile(space, 0, 80, 159, 80);
    if (!image->PlotProfile(space)) return 1;
    image->SetProfile(space, 0, 120, 159, 120);
    if (!image->AppendLastProfile(space)) return 1;
    CView1d* plot = nullptr;
    QMdiSubWindow* sub = nullptr;
    for (QMdiSubWindow* w : app.Frame()->Mdi()->subWindowList())
        if (auto* f = qobject_cast<CMdiFrame*>(w))
            if (auto* v = qobject_cast<CView1d*>(f->View())) plot = v, sub = w;
    if (!plot) return 1;
    CLook& look = plot->Look();
    look.legend.legend = 1;
    look.legend.pos[0] = 0.62f;
    look.legend.llen = 30;
    plot->Draw();
    plot->Picture();  // the rows read: a line record each
    if (look.lines.size() < 2) return 1;
    std::snprintf(look.lines[0].text, sizeof look.lines[0].text, "y = 80");
    std::snprintf(look.lines[1].text, sizeof look.lines[1].text, "y = 120");
    for (GAxis& a : look.axes) a.grid = 1;
    SetRoiRecord("roi_x", {40, 70});
    sub->setGeometry(380, 10, 640, 400);
    plot->Draw();
    QApplication::processEvents();
    return sub->grab().save(path) ? 0 : 1;
}

// The demo phantom (one slice, one encoding) as arrays on the desktop.
void PutPhantom(CDataSpace& space, const CDemoPhantom& ph) {
    const CDemoPhantomSpec& s = ph.spec;
    const struct {
        const char* name;
        const std::vector<float>& values;
        res_t t;
    } arrays[] = {{"demo_mag", ph.magnitude, 1}, {"demo_phase", ph.phase, res_t(s.noff)}};
    for (const auto& a : arrays) {
        CZrkData* d = space.NewData(TYPE_R4, s.nx, s.ny, s.nz, a.t, 1, 1, a.name);
        if (d) std::copy(a.values.begin(), a.values.end(), static_cast<float*>(d->data));
    }
}

// The inversion sheet filled for the phantom, page by page into `pages[0..6]`, then its run;
// the stiffness display goes into `stiffness`. Returns 0 when every picture was written.
int ShowInversion(CMainFrame* frame, char** pages, const char* stiffness) {
    CDemoPhantom ph = MakeDemoPhantom({.nz = 1, .ncomp = 1});
    PutPhantom(GlobalDataSpace(), ph);
    frame->RefreshAll();
    CFormMu* form = frame->OnWaveInversion();
    form->parentWidget()->setGeometry(10, 10, 460, 700);
    CMuForm& model = form->Model();
    model.Data()->c.magnitude = "demo_mag";
    model.Data()->c.phase[0] = "demo_phase";
    model.base_name = "demo";
    form->Sync();
    int status = 0;
    for (int page = 0; page < CMuForm::PAGE_COUNT; ++page) {
        if (page == CMuForm::PAGE_PARAMS) {
            CPageMuParams* params = model.Params();
            params->c.param_default = 0;
            params->c.mech_freq = float(ph.spec.freq);
            params->c.fov[0] = float(ph.spec.voxel * ph.spec.nx);
            params->c.fov[1] = float(ph.spec.voxel * ph.spec.ny);
            params->c.fov[2] = float(ph.spec.voxel * ph.spec.nz);
            params->SetPhasePreset(3);  // radians
            form->Sync();
        }
        if (page == CMuForm::PAGE_OUTPUT) {
            model.Output()->c.r1i1_out = 1;
            form->Sync();
        }
        QApplication::processEvents();
        if (!form->parentWidget()->grab().save(pages[page])) status = 1;
        form->OnContinue();
    }
    // The run opened the stiffness display (and the harmonic's).
    for (QMdiSubWindow* sub : frame->Mdi()->subWindowList())
        if (sub->windowTitle().startsWith("lfe_stiff")) {
            if (auto* frame2d = qobject_cast<CMdiFrame*>(sub))
                if (auto* view = qobject_cast<CView2d*>(frame2d->View())) view->OnZoom200();
            sub->resize(300, 250);
            QApplication::processEvents();
            if (!sub->grab().save(stiffness)) status = 1;
            return status;
        }
    std::fprintf(stderr, "no stiffness display: %s\n", model.status.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(
            stderr,
            "usage: quelmor_screenshot main.png [about.png [scripts.png functions.png "
            "[image.png [roi.png [mu_data.png ... mu_lfe.png stiffness.png [plot.png]]]]]]\n");
        return 2;
    }
    QApplication qt(argc, argv);
    CZarnikApp app(GlobalDataSpace());
    CStartOptions start;
    start.show_about = false;
    start.preferences = "/dev/null";
    if (!app.InitInstance(start)) return 1;
    CMainFrame* frame = app.Frame();
    frame->setGeometry(0, 0, 1180, 760);
    CBarEqu* bar = frame->EquationBar();
    // Names of their own: "mag" and "phase" are functions, not names for data.
    for (const char* line : {"magn = {3, 1, 4, 1, 5, 9, 2, 6}", "ph = magn * 0.25 - 1",
                             "wave = (complex r4) ph", "mask = magn > 2"}) {
        bar->Edit()->setText(line);
        bar->OnEquEval();
    }
    bar->Edit()->setText("stiff = magn * magn * 1.2");
    CAboutWave about(frame);
    int status = 0;
    const auto finish = [&] {
        frame->SetClosingForScript(true);  // no exit question in a picture run
        qt.quit();
    };
    QTimer::singleShot(500, [&] {
        const QPixmap shot = frame->screen()->grabWindow(frame->winId());
        status = shot.save(argv[1]) ? 0 : 1;
        if (argc < 3) return finish();
        about.show();
        // A few frames on, so the picture shows the wave under way.
        QTimer::singleShot(400, [&] {
            if (!about.grab().save(argv[2])) status = 1;
            about.hide();
            if (argc < 5) return finish();
            ShowScripts(frame);
            QTimer::singleShot(300, [&] {
                if (!frame->screen()->grabWindow(frame->winId()).save(argv[3])) status = 1;
                CDialogFunc functions(frame);
                functions.Select("ft");
                functions.show();
                if (!functions.grab().save(argv[4])) status = 1;
                std::filesystem::remove_all(ScriptFolder());
                if (argc < 6) return finish();
                frame->Scripts()->hide();
                frame->setGeometry(0, 0, 1180, 760);
                ShowWave(app, bar);
                QTimer::singleShot(400, [&] {
                    if (!frame->screen()->grabWindow(frame->winId()).save(argv[5])) status = 1;
                    if (argc < 7) return finish();
                    ShowRoi(app);
                    QTimer::singleShot(300, [&] {
                        if (!frame->screen()->grabWindow(frame->winId()).save(argv[6])) status = 1;
                        if (argc < 15) return finish();
                        // The ellipse belongs to the region picture, not to the stiffness map.
                        bar->Edit()->setText("free(roi_ellip)");
                        bar->OnEquEval();
                        if (ShowInversion(frame, argv + 7, argv[14])) status = 1;
                        if (argc >= 16 && ShowPlot(app, argv[15])) status = 1;
                        finish();
                    });
                });
            });
        });
    });
    qt.exec();
    return status;
}
