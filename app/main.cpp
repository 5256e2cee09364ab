// quelmor: the workstation's executable.
#include <QApplication>
#include <QLocale>
#include <clocale>

#include "core/data_space.h"
#include "shell/qt/zarnik_app.h"

int main(int argc, char** argv) {
    QApplication qt(argc, argv);
    // Qt takes the user's locale; option files, history, the number format and the fields'
    // validators all read and write "1.5".
    std::setlocale(LC_NUMERIC, "C");
    QLocale::setDefault(QLocale::c());
    CZarnikApp app(GlobalDataSpace());
    if (!app.InitInstance()) return 1;
    return qt.exec();
}
