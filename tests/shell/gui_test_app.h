// The one QApplication of the widget tests, made on first use.
#pragma once

#include <QApplication>

inline QApplication& TestApp() {
    static int argc = 1;
    static char name[] = "shell_gui_tests";
    static char* argv[] = {name, nullptr};
    static QApplication app(argc, argv);
    return app;
}
