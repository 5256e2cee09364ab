// quelmor_screenshot: starts the program as a user would, types a few equations into the
// bar, and writes a picture of the main window (under Xvfb: xvfb-run -a), and with a second
// file name one of the about dialog.
#include <QApplication>
#include <QLineEdit>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <cstdio>

#include "core/data_space.h"
#include "eval/qt/bar_equ.h"
#include "shell/qt/about_wave.h"
#include "shell/qt/main_frame.h"
#include "shell/qt/zarnik_app.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: quelmor_screenshot main.png [about.png]\n");
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
    for (const char* line : {"mag = {3, 1, 4, 1, 5, 9, 2, 6}", "phase = mag * 0.25 - 1",
                             "wave = (complex r4) phase", "mask = mag > 2"}) {
        bar->Edit()->setText(line);
        bar->OnEquEval();
    }
    bar->Edit()->setText("stiff = mag * mag * 1.2");
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
            finish();
        });
    });
    qt.exec();
    return status;
}
