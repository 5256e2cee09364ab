// CZarnikApp: the application. InitInstance starts the program in this order: the module
// table is filled, the preferences read, the main frame built, the data space initialised,
// the Qt host installed, the frame shown with its panes, a crash file of the last run
// offered, the about dialog shown and "compiled <date>" written to the history. On a
// confirmed close the preferences are written in the same module order.
//
//   QApplication qt(argc, argv);
//   CZarnikApp app(GlobalDataSpace());
//   if (!app.InitInstance()) return 1;
//   return qt.exec();
#pragma once

#include <memory>
#include <string>

#include "display/qt/display_ui.h"
#include "shell/option_table.h"
#include "shell/paths.h"
#include "shell/shell_modules.h"
#include "shell/trace.h"

class CDataSpace;
class CMainFrame;
class CHost;
class CQtHost;

struct CStartOptions {
    bool show_about = true;
    // Empty: the preferences file of the program folder.
    std::string preferences;
};

class CZarnikApp {
  public:
    // `space` is the data space the program shows and works on; it outlives the application.
    explicit CZarnikApp(CDataSpace& space);
    ~CZarnikApp();
    CZarnikApp(const CZarnikApp&) = delete;
    CZarnikApp& operator=(const CZarnikApp&) = delete;

    bool InitInstance(const CStartOptions& start = {});
    int ReadOptions() { return table_.ReadOptions(preferences_); }
    int WriteOptions() const { return table_.WriteOptions(preferences_); }

    CMainFrame* Frame() const { return frame_.get(); }
    CQtHost* QtHost() const { return host_.get(); }
    CShellModules& Modules() { return modules_; }
    CDisplayModules& DisplayModules() { return display_modules_; }
    CDisplayUi* DisplayUi() const { return display_ui_.get(); }
    COptionTable& Table() { return table_; }
    const CPaths& Paths() const { return paths_; }

  private:
    CDataSpace& space_;
    CTrace trace_;
    CPaths paths_;
    std::string preferences_;
    CShellModules modules_;
    COptionTable table_;
    CDisplayModules display_modules_;
    std::unique_ptr<CMainFrame> frame_;
    std::unique_ptr<CDisplayUi> display_ui_;
    std::unique_ptr<CQtHost> host_;
    CHost* previous_host_ = nullptr;
};
