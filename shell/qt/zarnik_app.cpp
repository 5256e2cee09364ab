#include "shell/qt/zarnik_app.h"

#include <cstdlib>

#include "core/data_space.h"
#include "core/host.h"
#include "core/script_space.h"
#include "core/window_space.h"
#include "ops/function_rows.h"
#include "shell/crash_hooks.h"
#include "shell/qt/about_wave.h"
#include "shell/qt/form_history.h"
#include "shell/qt/main_frame.h"
#include "shell/qt/qt_host.h"

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
