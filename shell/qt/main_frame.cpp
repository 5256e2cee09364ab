#include "shell/qt/main_frame.h"

#include <QCloseEvent>
#include <QDesktopServices>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <QUrl>

#include "core/data_space.h"
#include "core/host.h"
#include "core/script_space.h"
#include "core/window_space.h"
#include "display/display_update.h"
#include "eval/qt/bar_equ.h"
#include "eval/qt/form_script.h"
#include "eval/qt/frame_script.h"
#include "files/zrk_file.h"
#include "mu/qt/form_mu.h"
#include "shell/number_format.h"
#include "shell/qt/form_alloc.h"
#include "shell/qt/form_desktop.h"
#include "shell/qt/form_history.h"

namespace {

QRect ToRect(const CRectOption& r) {
    return QRect(QPoint(r.left, r.top), QPoint(r.right, r.bottom));
}

CRectOption FromRect(const QRect& r) { return {r.left(), r.top(), r.right(), r.bottom()}; }

}  // namespace

CMainFrame::CMainFrame(CDataSpace& space, CShellModules& modules, QWidget* parent)
    : QMainWindow(parent),
      space_(space),
      modules_(modules),
      mdi_(new QMdiArea(this)),
      bar_(new CBarEqu(space, this)),
      desktop_(new CFormDesktop(space, modules.desktop, modules.rename)),
      history_(new CFormHistory(modules.history)),
      tools_(new QToolBar("tool bar", this)) {
    setObjectName("main_frame");
    setWindowTitle("Quelmor");
    mdi_->setObjectName("mdi_area");
    mdi_->setBackground(QColor(96, 104, 120));
    setCentralWidget(mdi_);

    tools_->setObjectName("tool_bar");
    addToolBar(Qt::TopToolBarArea, tools_);
    addToolBarBreak(Qt::TopToolBarArea);
    addDockWidget(Qt::TopDockWidgetArea, bar_);
    desktop_dock_ = Dock("data desktop", "desktop_dock", desktop_, Qt::LeftDockWidgetArea);
    history_dock_ = Dock("history", "history_dock", history_, Qt::BottomDockWidgetArea);
    scripts_ = new CFrameScript(modules.script, GlobalScriptSpace(), this);
    addDockWidget(Qt::RightDockWidgetArea, scripts_);

    for (int i = 0; i < 3; ++i) {
        panes_[i] = new QLabel(this);
        panes_[i]->setObjectName(QString("status_pane%1").arg(i));
        statusBar()->addWidget(panes_[i], i == 0 ? 1 : 0);
    }
    panes_[1]->setMinimumWidth(140);
    panes_[2]->setMinimumWidth(120);

    BuildMenus();
    connect(bar_, &CBarEqu::evaluated, this, &CMainFrame::RefreshAll);
    connect(desktop_, &CFormDesktop::commandDone, this, [this](const QString& status) {
        SetStatus(0, status.toStdString());
        RefreshAll();
    });
    connect(history_, &CFormHistory::linePicked, bar_, &CBarEqu::SetText);
    connect(scripts_->Form(), &CFormScript::statusChanged, this,
            [this](const QString& text) { SetStatus(0, text.toStdString()); });
}

QDockWidget* CMainFrame::Dock(const char* title, const char* name, QWidget* body,
                              Qt::DockWidgetArea area) {
    auto* dock = new QDockWidget(title, this);
    dock->setObjectName(name);
    dock->setWidget(body);
    addDockWidget(area, dock);
    return dock;
}

void CMainFrame::BuildMenus() {
    auto action = [this](QMenu* menu, const char* text, const char* name, auto slot) {
        QAction* a = menu->addAction(text);
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    QMenu* file = menuBar()->addMenu("&file");
    // Workspaces straight from the menu until the open and save dialogs take them over.
    action(file, "open workspace...", "action_open_workspace", [this] {
        const QString path =
            QFileDialog::getOpenFileName(this, "open workspace", QString(), "workspace (*.zrk)");
        if (path.isEmpty()) return;
        CZrkFile workspace(path.toStdString());
        workspace.Read();
        SetStatus(0, workspace.status);
        RefreshAll();
    });
    action(file, "save workspace...", "action_save_workspace", [this] {
        QString path =
            QFileDialog::getSaveFileName(this, "save workspace", QString(), "workspace (*.zrk)");
        if (path.isEmpty()) return;
        if (QFileInfo(path).suffix().isEmpty()) path += ".zrk";
        CZrkFile workspace(path.toStdString());
        workspace.Write();
        SetStatus(0, workspace.status);
    });
    action(file, "e&xit", "action_exit", [this] { close(); });

    QMenu* view = menuBar()->addMenu("&view");
    QAction* bar = bar_->toggleViewAction();
    bar->setText("equation bar");
    view->addAction(bar);
    view->addAction(desktop_dock_->toggleViewAction());
    view->addAction(history_dock_->toggleViewAction());
    QAction* script = scripts_->toggleViewAction();
    script->setText("script");
    script->setObjectName("action_view_script");
    view->addAction(script);
    QAction* status = view->addAction("status bar");
    status->setCheckable(true);
    status->setChecked(true);
    connect(status, &QAction::toggled, statusBar(), &QWidget::setVisible);
    view->addAction(tools_->toggleViewAction());

    QMenu* data = menuBar()->addMenu("&data");
    QAction* allocate = action(data, "allocate", "action_allocate", [this] {
        CFormAlloc form(space_, this);
        connect(&form, &CFormAlloc::allocated, this, [this](const QString& s) {
            SetStatus(0, s.toStdString());
            RefreshAll();
        });
        form.exec();
    });

    QMenu* functions = menuBar()->addMenu("f&unctions");
    QAction* inversion = action(functions, "wave inversion...", "action_wave_inversion",
                                [this] { OnWaveInversion(); });

    QMenu* window = menuBar()->addMenu("&window");
    QAction* cascade =
        action(window, "cascade", "action_cascade", [this] { mdi_->cascadeSubWindows(); });
    QAction* tile = action(window, "tile", "action_tile", [this] { mdi_->tileSubWindows(); });
    QAction* refresh = action(window, "&refresh", "action_refresh", [this] { RefreshAll(); });

    QMenu* help = menuBar()->addMenu("&help");
    action(help, "help", "action_help", [this] { OnHelp(help_folder_ + "/zarnik.htm"); });
    action(help, "quelmor help", "action_help_quelmor", [this] { OnHelp(help_page_); });

    for (QAction* a : {allocate, inversion, refresh, cascade, tile}) tools_->addAction(a);
}

CFormMu* CMainFrame::OnWaveInversion() {
    auto* form = new CFormMu(space_, modules_.mu_options);
    connect(form, &CFormMu::dataChanged, this, &CMainFrame::RefreshAll);
    connect(form, &CFormMu::helpRequested, this,
            [this](const QString& page) { OnHelp(help_folder_ + "/" + page.toStdString()); });
    QMdiSubWindow* sub = mdi_->addSubWindow(form);
    sub->setObjectName("mu_window");
    sub->show();
    return form;
}

void CMainFrame::OnHelp(const std::string& page) {
    Host().Trace("CMainFrame::OnHelp");
    SetStatus(0, "starting browser");
    const QString path = QString::fromStdString(page);
    if (help_folder_.empty() || !QFileInfo::exists(path) ||
        !QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        SetStatus(0, "could not open html help");
}

void CMainFrame::RefreshAll() {
    Host().Trace("CMainFrame::RefreshAll");
    desktop_->Refresh();
    UpdateDisplays(space_, GlobalWindowSpace());
    const uint64_t bytes = space_.GetBytes();
    SetStatus(2, FormatLong(static_cast<int64_t>(bytes), "long_default") + " bytes");
}

void CMainFrame::SetStatus(int pane, const std::string& text) {
    if (pane >= 0 && pane < 3) panes_[pane]->setText(QString::fromStdString(text));
}

QString CMainFrame::StatusText(int pane) const {
    return pane >= 0 && pane < 3 ? panes_[pane]->text() : QString();
}

void CMainFrame::RestorePanes() {
    const CMainFrameOptions& main = modules_.main_frame;
    if (!main.main_loc.IsEmpty()) setGeometry(ToRect(main.main_loc));
    if (main.main_full) setWindowState(windowState() | Qt::WindowMaximized);
    bar_->setVisible(main.view_equation_bar);
    const CDesktop& desk = modules_.desktop;
    desktop_dock_->setVisible(desk.view_desktop && !desk.desktop_minimized);
    if (!desk.desktop_loc.IsEmpty()) desktop_dock_->resize(ToRect(desk.desktop_loc).size());
    const CHistory& hist = modules_.history;
    history_dock_->setVisible(hist.view_history && !hist.history_minimized);
    if (!hist.history_loc.IsEmpty()) history_dock_->resize(ToRect(hist.history_loc).size());
    scripts_->RestorePlace();
    RefreshAll();
}

void CMainFrame::KeepPlaces() {
    CMainFrameOptions& main = modules_.main_frame;
    main.main_full = isMaximized();
    if (!isMaximized()) main.main_loc = FromRect(geometry());
    main.view_equation_bar = bar_->isVisible();
    modules_.desktop.view_desktop = desktop_dock_->isVisible();
    modules_.desktop.desktop_loc = FromRect(desktop_dock_->geometry());
    modules_.history.view_history = history_dock_->isVisible();
    modules_.history.history_loc = FromRect(history_dock_->geometry());
    scripts_->KeepPlace();
}

void CMainFrame::closeEvent(QCloseEvent* event) {
    if (!closing_for_script_ && !Host().AskYesNo("Exit Quelmor?")) {
        event->ignore();
        return;
    }
    KeepPlaces();
    if (on_exit_) on_exit_();
    event->accept();
}

void CMainFrame::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) bar_->Edit()->setFocus();
    QMainWindow::changeEvent(event);
}
