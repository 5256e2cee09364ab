// The one QApplication of the widget tests, made on first use and never destroyed: a static
// one would be torn down after Qt's own statics at exit and crash there.
#pragma once

#include <QApplication>

inline QApplication& TestApp() {
    static int argc = 1;
    static char name[] = "shell_gui_tests";
    static char* argv[] = {name, nullptr};
    static QApplication* app = new QApplication(argc, argv);
    return *app;
}
