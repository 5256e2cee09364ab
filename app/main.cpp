// quelmor: the workstation's executable.
#include <QApplication>

#include "shell/qt/zarnik_app.h"

int main(int argc, char** argv) {
    QApplication qt(argc, argv);
    CZarnikApp app;
    if (!app.InitInstance()) return 1;
    return qt.exec();
}
