#include "shell/qt/zarnik_app.h"

#include <cstdlib>

#include "core/data_space.h"
#include "core/host.h"
#include "core/script_space.h"
#include "core/window_space.h"
#include "display/edit_table.h"
#include "display/qt/display_ui.h"
#include "files/file_kinds.h"
#include "ops/function_rows.h"
#include "shell/crash_hooks.h"
#include "shell/qt/about_wave.h"
#include "shell/qt/form_desktop.h"
#include "shell/qt/form_history.h"
#include "shell/qt/main_frame.h"
#include "shell/qt/qt_host.h"

namespace {

// One array in a display of `kind` through `iqmp`, with the new-display options of that kind
// but without touching the fields its form keeps; the status text of the try.
std::string OpenAs(CDisplayModules& modules, CDataSpace& space, const std::string& name,
                   unsigned kind, int iqmp) {
    auto open = [&](auto holder, int slot) {
        holder.names[0] = holder.names[1] = holder.names[2] = "";
        holder.names[slot] = name;
        holder.iqmp = iqmp;
        holder.append = 0;
        holder.OnViewNew(space);
        return holder.status;
    };
    switch (kind) {
        case 0x100000:
            return OpenEditDisplay(space, name);
        case 0x10000:
            return open(modules.new_1d, 0);
        case 0x40000:
            return open(modules.new_xy, 1);  // the array against its index
        case 0x80000:
            return open(modules.new_rgb, 0);
        default:
            return open(modules.new_2d, 0);
    }
}

}  // namespace

CZarnikApp::CZarnikApp(CDataSpace& space)
    : space_(space), paths_(CPaths::FromExecutable(ExecutablePath())) {
    paths_.UseConfigFolderIfReadOnly(std::getenv("HOME"));
    trace_.SetCrashFile(paths_.crash_workspace.c_str());
    InstallWorkspaceHooks(paths_.crash_workspace.c_str());
}

CZarnikApp::~CZarnikApp() {
    display_ui_.reset();
    if (host_) SetHost(previous_host_);
    frame_.reset();
}

bool CZarnikApp::InitInstance(const CStartOptions& start) {
    trace_.Set("CZarnikApp::InitInstance");
    InstallFunctions();
    InstallFileKinds();
    modules_.Register(table_, space_);
    display_modules_.Register(table_);
    preferences_ = start.preferences.empty() ? paths_.preferences : start.preferences;
    ReadOptions();
    // Scripts are callable from the first equation on.
    modules_.script.StartFolder(GlobalScriptSpace(), paths_.script);

    frame_ = std::make_unique<CMainFrame>(space_, modules_);
    frame_->SetOnExit([this] { WriteOptions(); });
    frame_->SetHelp(paths_.help, paths_.help_page);
    display_ui_ = std::make_unique<CDisplayUi>(*frame_, *frame_->Mdi(), space_, display_modules_);
    QObject::connect(frame_->Desktop(), &CFormDesktop::openRequested, frame_.get(),
                     [this](const QStringList& names, unsigned kind, int iqmp) {
                         std::string status;
                         for (const QString& name : names)
                             status =
                                 OpenAs(display_modules_, space_, name.toStdString(), kind, iqmp);
                         frame_->SetStatus(0, status);
                         frame_->RefreshAll();
                     });

    space_.InitReservedData();
    space_.SetUnique();
    GlobalWindowSpace();

    host_ = std::make_unique<CQtHost>(trace_, frame_.get());
    previous_host_ = SetHost(host_.get());
    host_->SetHistory(&frame_->History()->Record());

    frame_->RestorePanes();
    frame_->show();
    if (CrashHooks().offer && !paths_.crash_workspace.empty())
        CrashHooks().offer(paths_.crash_workspace.c_str());
    if (start.show_about) CAboutWave(frame_.get()).exec();
    frame_->History()->Append("compiled " __DATE__ "\r\n");
    return true;
}
