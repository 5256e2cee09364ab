// quelmor_screenshot: starts the program as a user would, types a few equations into the
// bar, and writes a picture of the main window (under Xvfb: xvfb-run -a), with a second file
// name one of the about dialog, and with a third one of a wave made by equations in a 2d
// display in "jet", the window/level panel showing its colour bar and a read-out in the
// status line, and with a fourth one of an ellipse drawn on that display with its statistics
// in the history and the status line.
#include <QApplication>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <cstdio>

#include "core/data_space.h"
#include "display/qt/display_ui.h"
#include "display/qt/form_wl.h"
#include "display/qt/mdi_doc.h"
#include "display/qt/view_2d.h"
#include "eval/qt/bar_equ.h"
#include "shell/qt/about_wave.h"
#include "shell/qt/main_frame.h"
#include "shell/qt/zarnik_app.h"

namespace {

// A damped circular wave in a 2d display, zoomed, in "jet", with the vertical colour bar of
// the window/level panel and the read-out of a point under the mouse.
void ShowWave(CZarnikApp& app, CBarEqu* bar) {
    for (const char* line : {"x = rampx(-6.3, 6.3, 160)", "y = rampy(-6.3, 6.3, 160)",
                             "r = sqrt(x*x + y*y)", "wave = cos(r * 3) * exp(r * -0.15)"}) {
        bar->Edit()->setText(line);
        bar->OnEquEval();
    }
    CNew2d& n = app.DisplayModules().new_2d;
    n.names[0] = "wave";
    n.iqmp = 0;
    if (!n.OnViewNew(GlobalDataSpace()) || n.opened.empty()) return;
    auto* doc = static_cast<CMdiDoc*>(n.opened[0]);
    auto* view = qobject_cast<CView2d*>(doc->Frame()->View());
    view->SetPalette("jet");
    view->OnZoom200();
    doc->Frame()->resize(360, 420);
    doc->Frame()->move(10, 10);
    GlobalWinLev().wl_plot = 4;
    app.DisplayUi()->FormWL()->SetTarget(view);
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

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr,
                     "usage: quelmor_screenshot main.png [about.png [image.png [roi.png]]]\n");
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
    // "mag" and "phase" are names of functions, so the arrays get names of their own.
    for (const char* line : {"amp = {3, 1, 4, 1, 5, 9, 2, 6}", "ph = amp * 0.25 - 1",
                             "cw = (complex r4) ph", "mask = amp > 2"}) {
        bar->Edit()->setText(line);
        bar->OnEquEval();
    }
    bar->Edit()->setText("stiff = amp * amp * 1.2");
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
            if (argc < 4) return finish();
            ShowWave(app, bar);
            QTimer::singleShot(400, [&] {
                const QPixmap image = frame->screen()->grabWindow(frame->winId());
                if (!image.save(argv[3])) status = 1;
                if (argc < 5) return finish();
                ShowRoi(app);
                QTimer::singleShot(300, [&] {
                    const QPixmap roi = frame->screen()->grabWindow(frame->winId());
                    if (!roi.save(argv[4])) status = 1;
                    finish();
                });
            });
        });
    });
    qt.exec();
    return status;
}
