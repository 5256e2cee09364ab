// quelmor: the workstation's executable.
#include <QApplication>

#include "core/data_space.h"
#include "shell/qt/zarnik_app.h"

int main(int argc, char** argv) {
    QApplication qt(argc, argv);
    CZarnikApp app(GlobalDataSpace());
    if (!app.InitInstance()) return 1;
    return qt.exec();
}
