// CMainFrame: the main window over one data space. A multiple-document area for the
// displays, the equation bar on top, the data desktop and the history as docked panes, a
// tool bar and a status bar of three panes; the bar, the desktop and the forms are handed the
// frame's data space. RefreshAll, run after every command, brings the desktop, its byte line
// and the displays up to date.
//
// Closing asks "Exit Quelmor?" (unless a script closes the program); on yes the panes'
// places go into the options and the exit callback writes the preferences.
#pragma once

#include <QMainWindow>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "shell/shell_modules.h"

class CBarEqu;
class CDataSpace;
class CFormDesktop;
class CFormMu;
class CFrameScript;
class CFormHistory;
class QDockWidget;
class QLabel;
class QMdiSubWindow;
class QMenu;
class QPrinter;
class QMdiArea;
class QToolBar;

class CMainFrame : public QMainWindow {
    Q_OBJECT
  public:
    CMainFrame(CDataSpace& space, CShellModules& modules, QWidget* parent = nullptr);
    ~CMainFrame() override;

    void RefreshAll();
    // Puts the panes where the options say and shows or hides them.
    void RestorePanes();
    void SetStatus(int pane, const std::string& text);
    QString StatusText(int pane) const;

    CFormHistory* History() const { return history_; }
    CFormDesktop* Desktop() const { return desktop_; }
    CBarEqu* EquationBar() const { return bar_; }
    CFrameScript* Scripts() const { return scripts_; }
    QMdiArea* Mdi() const { return mdi_; }

    // "wave inversion...": the inversion form in a subwindow of its own.
    CFormMu* OnWaveInversion();

    // Opens a file of the recent list, its kind told by its content, and keeps it first there.
    void OpenRecent(const std::string& path);
    // "select all ..": the select bit of every display of a LOOK_ kind.
    void SelectAll(uint32_t kind);
    void ArrangeIcons();
    // "&print...": the print dialog, then PrintActive on the frame's printer.
    void OnPrint();
    // Draws the current display on `printer` under its title, scaled to the page; false, with
    // the reason in the status, without a display or when the printer can't start.
    bool PrintActive(QPrinter& printer);
    // A display's group command (an index of kGroupCommandTexts) on the selected displays.
    void OnGroupCommand(int command);
    // The selected displays in a row along the top, or a column down the left.
    void OnAlignTop();
    void OnAlignLeft();

    void SetOnExit(std::function<void()> on_exit) { on_exit_ = std::move(on_exit); }
    void SetClosingForScript(bool closing) { closing_for_script_ = closing; }
    // The help folder and the program's own help page, from the program's paths.
    void SetHelp(const std::string& folder, const std::string& page) {
        help_folder_ = folder;
        help_page_ = page;
    }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void BuildMenus();
    void OnHelp(const std::string& page);
    void KeepPlaces();
    void FillRecent();
    // The group commands in the context menu of a display's subwindow.
    void AddGroupMenu(QMdiSubWindow* sub);
    std::vector<QMdiSubWindow*> SelectedDisplays() const;
    QPrinter& Printer();
    // The view of the current display subwindow; null for none or one not laid out yet.
    QWidget* ActiveView() const;
    QDockWidget* Dock(const char* title, const char* name, QWidget* body, Qt::DockWidgetArea area);

    CDataSpace& space_;
    CShellModules& modules_;
    QMdiArea* mdi_;
    CBarEqu* bar_;
    CFormDesktop* desktop_;
    CFormHistory* history_;
    QDockWidget* desktop_dock_;
    QDockWidget* history_dock_;
    CFrameScript* scripts_;
    QToolBar* tools_;
    QLabel* panes_[3];
    QMenu* recent_ = nullptr;
    std::unique_ptr<QPrinter> printer_;
    std::function<void()> on_exit_;
    bool closing_for_script_ = false;
    std::string help_folder_;
    std::string help_page_;
};
