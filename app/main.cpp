// quelmor: the workstation's executable.
#include "shell/qt/zarnik_app.h"

int main(int argc, char** argv) {
    CZarnikApp app(argc, argv);
    if (!app.InitInstance()) return 1;
    return app.Run();
}
