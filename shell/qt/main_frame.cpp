#include "shell/qt/main_frame.h"

#include <QCloseEvent>
#include <QDesktopServices>
#include <QDockWidget>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPageSetupDialog>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QStatusBar>
#include <QToolBar>
#include <QUrl>
#include <algorithm>
#include <tuple>

#include "core/data_space.h"
#include "core/host.h"
#include "core/number_format.h"
#include "core/script_space.h"
#include "core/window_space.h"
#include "display/display_update.h"
#include "display/look.h"
#include "display/qt/mdi_doc.h"
#include "display/qt/mdi_frame.h"
#include "display/qt/view_2d.h"
#include "display/view_state.h"
#include "eval/qt/bar_equ.h"
#include "eval/qt/form_equ.h"
#include "eval/qt/form_script.h"
#include "eval/qt/frame_script.h"
#include "files/guess_code.h"
#include "files/load_model.h"
#include "files/open_model.h"
#include "files/qt/dialog_open.h"
#include "files/qt/dialog_save_as.h"
#include "files/save_model.h"
#include "files/zrk_file.h"
#include "mu/qt/form_mu.h"
#include "shell/group_edit.h"
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
    connect(mdi_, &QMdiArea::subWindowActivated, this, &CMainFrame::AddGroupMenu);
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
    QAction* open = action(file, "&open...\tctrl+o", "action_open", [this] {
        COpenModel model(modules_.open, space_, modules_.main_frame.open_directory);
        CDialogOpen dialog(model, this);
        connect(&dialog, &CDialogOpen::opened, this, [this, &model](const QString& status) {
            SetStatus(0, status.toStdString());
            for (const std::string& path : model.opened) modules_.main_frame.AddRecent(path);
            RefreshAll();
        });
        dialog.exec();
    });
    open->setShortcut(QKeySequence::Open);
    QAction* save = action(file, "&save...\tctrl_s", "action_save", [this] {
        CSaveModel model(modules_.save, space_, GlobalWindowSpace());
        model.tick_mask = kDesktopSelect;
        CDialogSaveAs dialog(model, this);
        connect(&dialog, &CDialogSaveAs::saved, this,
                [this](const QString& status) { SetStatus(0, status.toStdString()); });
        dialog.exec();
    });
    save->setShortcut(QKeySequence::Save);
    file->addSeparator();
    action(file, "print setup", "action_print_setup", [this] {
        QPageSetupDialog dialog(&Printer(), this);
        dialog.exec();
    });
    action(file, "&print...\tctrl+p", "action_print", [this] {
        OnPrint();
    })->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_P));
    file->addSeparator();
    recent_ = file->addMenu("recent files");
    recent_->setObjectName("menu_recent");
    connect(recent_, &QMenu::aboutToShow, this, &CMainFrame::FillRecent);
    FillRecent();
    file->addSeparator();
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
    data->addSeparator();
    struct Kind {
        const char *text, *name;
        uint32_t kind;
        QKeyCombination key;
    };
    for (const Kind& k :
         {Kind{"select all 1d\tctrl 1", "action_select_all_1d", LOOK_1D, Qt::CTRL | Qt::Key_1},
          Kind{"select all 2d\tctrl 2", "action_select_all_2d", LOOK_2D, Qt::CTRL | Qt::Key_2},
          Kind{"select all xy\tctrl y", "action_select_all_xy", LOOK_XY, Qt::CTRL | Qt::Key_Y},
          Kind{"select all rgb\tctrl b", "action_select_all_rgb", LOOK_RGB,
               Qt::CTRL | Qt::Key_B}}) {
        const uint32_t kind = k.kind;
        action(data, k.text, k.name, [this, kind] {
            SelectAll(kind);
        })->setShortcut(QKeySequence(k.key));
    }
    data->addSeparator();
    // The new-display forms belong to the display layer, which names its actions.
    for (auto [text, name, form] : {std::tuple{"view 1d", "action_view_1d", "action_new_1d"},
                                    std::tuple{"view 2d", "action_view_2d", "action_new_2d"},
                                    std::tuple{"view rgb", "action_view_rgb", "action_new_rgb"},
                                    std::tuple{"view xy", "action_view_xy", "action_new_xy"}}) {
        const QString target = form;
        action(data, text, name, [this, target] {
            if (QAction* a = findChild<QAction*>(target)) a->trigger();
        });
    }

    QMenu* functions = menuBar()->addMenu("f&unctions");
    action(functions, "equation", "action_equation", [this] {
        auto* form = new CFormEqu(space_);
        form->setAttribute(Qt::WA_DeleteOnClose);
        connect(form, &CFormEqu::evaluated, this, &CMainFrame::RefreshAll);
        QMdiSubWindow* sub = mdi_->addSubWindow(form);
        sub->setWindowTitle("equation");
        sub->show();
    });
    QAction* inversion = action(functions, "wave inversion...", "action_wave_inversion",
                                [this] { OnWaveInversion(); });

    // The display option entries stand disabled; the display layer enables those it has a
    // form for.
    QMenu* options = menuBar()->addMenu("&options");
    for (auto [text, name] : {std::pair{"1d display...", "action_options_1d"},
                              {"1d axis etc ..", "action_axis_1d"},
                              {"2d display...", "action_options_2d"},
                              {"rgb display...", "action_options_rgb"},
                              {"xy display...", "action_options_xy"},
                              {"xy axis etc ..", "action_axis_xy"}}) {
        QAction* a = options->addAction(text);
        a->setObjectName(name);
        a->setEnabled(false);
    }

    QMenu* window = menuBar()->addMenu("&window");
    action(window, "arrange icons", "action_arrange_icons", [this] { ArrangeIcons(); });
    QAction* cascade =
        action(window, "cascade", "action_cascade", [this] { mdi_->cascadeSubWindows(); });
    QAction* tile = action(window, "tile", "action_tile", [this] { mdi_->tileSubWindows(); });
    QAction* refresh = action(window, "&refresh", "action_refresh", [this] { RefreshAll(); });

    QMenu* help = menuBar()->addMenu("&help");
    action(help, "help", "action_help", [this] { OnHelp(help_folder_ + "/zarnik.htm"); });
    action(help, "quelmor help", "action_help_quelmor", [this] { OnHelp(help_page_); });

    for (QAction* a : {allocate, inversion, refresh, cascade, tile}) tools_->addAction(a);
}

CMainFrame::~CMainFrame() = default;

QPrinter& CMainFrame::Printer() {
    if (!printer_) printer_ = std::make_unique<QPrinter>();
    return *printer_;
}

void CMainFrame::OnPrint() {
    if (!ActiveView()) {
        SetStatus(0, "no display to print");
        return;
    }
    QPrintDialog dialog(&Printer(), this);
    if (dialog.exec() == QDialog::Accepted) PrintActive(Printer());
}

QWidget* CMainFrame::ActiveView() const {
    // The current subwindow stays when the main window loses the focus, as under a dialog.
    auto* frame = qobject_cast<CMdiFrame*>(mdi_->currentSubWindow());
    QWidget* view = frame ? frame->View() : nullptr;
    return view && !view->size().isEmpty() ? view : nullptr;
}

bool CMainFrame::PrintActive(QPrinter& printer) {
    Host().Trace("CMainFrame::PrintActive");
    QWidget* view = ActiveView();
    if (!view) {
        SetStatus(0, "no display to print");
        return false;
    }
    QPainter painter;
    if (!painter.begin(&printer)) {
        SetStatus(0, "print failed");
        return false;
    }
    // The display's title on top, then the view as it paints itself, scaled to the page: a
    // plot stays lines, an image keeps its pixels.
    const QRect page = painter.viewport();
    const QString title = mdi_->currentSubWindow()->windowTitle();
    const QRect line = painter.boundingRect(page, Qt::AlignLeft | Qt::AlignTop, title);
    painter.drawText(line, Qt::AlignLeft | Qt::AlignTop, title);
    const QRect room = page.adjusted(0, line.height() * 2, 0, 0);
    const QSize size = view->size();
    const double scale =
        std::min(room.width() / double(size.width()), room.height() / double(size.height()));
    painter.translate(room.topLeft());
    painter.scale(scale, scale);
    view->render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
    painter.end();
    SetStatus(0, "print complete");
    return true;
}

void CMainFrame::OpenRecent(const std::string& path) {
    // the kind as the file shows it, not the open dialog's last choice
    COpenOptions& options = modules_.open;
    const int kind = options.filetype;
    options.filetype = GuessOpenCode(path);
    COpenModel model(options, space_, modules_.main_frame.open_directory);
    model.Ok({path});
    options.filetype = kind;
    SetStatus(0, model.status);
    if (!model.opened.empty()) modules_.main_frame.AddRecent(path);
    FillRecent();
    RefreshAll();
}

void CMainFrame::FillRecent() {
    recent_->clear();
    const CMainFrameOptions& main = modules_.main_frame;
    for (int i = 0; i < CMainFrameOptions::kRecentFiles; ++i) {
        const std::string& path = main.recent_file[i];
        if (path.empty()) continue;
        QAction* a =
            recent_->addAction(QString("&%1 %2").arg(i + 1).arg(QString::fromStdString(path)));
        a->setObjectName(QString("action_recent_file%1").arg(i));
        connect(a, &QAction::triggered, this, [this, path] { OpenRecent(path); });
    }
    recent_->setEnabled(!recent_->isEmpty());
}

void CMainFrame::SelectAll(uint32_t kind) {
    CWindowSpace& windows = GlobalWindowSpace();
    int n = 0;
    for (int i = 0; i < windows.Count(); ++i)
        if (CWindowEntry* w = windows.Get(i); w && (w->kind & kind)) {
            w->select |= 1;
            ++n;
        }
    SetStatus(0, std::to_string(n) + (n == 1 ? " display selected" : " displays selected"));
}

void CMainFrame::ArrangeIcons() {
    // Minimised subwindows go in a row along the bottom of the area, left to right.
    int x = 0;
    for (QMdiSubWindow* w : mdi_->subWindowList()) {
        if (!w->isMinimized()) continue;
        const QSize size = w->size();
        w->move(x, mdi_->viewport()->height() - size.height());
        x += size.width();
    }
}

void CMainFrame::AddGroupMenu(QMdiSubWindow* sub) {
    if (!qobject_cast<CMdiFrame*>(sub) || !sub->systemMenu() ||
        sub->systemMenu()->findChild<QMenu*>("menu_group"))
        return;
    QMenu* group = sub->systemMenu()->addMenu("group");
    group->setObjectName("menu_group");
    for (int i = 0; i < kGroupCommands; ++i) {
        QAction* a = group->addAction(kGroupCommandTexts[i]);
        a->setObjectName(QString("group_%1").arg(i));
        connect(a, &QAction::triggered, this, [this, i] { OnGroupCommand(i); });
    }
    group->addSeparator();
    group->addAction("align top", this, &CMainFrame::OnAlignTop)->setObjectName("group_align_top");
    group->addAction("align left", this, &CMainFrame::OnAlignLeft)
        ->setObjectName("group_align_left");
}

void CMainFrame::OnGroupCommand(int command) {
    Host().Trace("CMainFrame::OnGroupCommand");
    const std::string status =
        GroupEdit(space_, GlobalWindowSpace(), command, [](CWindowEntry& entry) {
            CGroupView group;
            auto* doc = dynamic_cast<CMdiDoc*>(&entry);
            QWidget* widget = doc && doc->Frame() ? doc->Frame()->View() : nullptr;
            group.view = dynamic_cast<CMdiView*>(widget);
            if (auto* view = qobject_cast<CView2d*>(widget)) {
                group.roi_kind = view->RoiKind();
                group.plane = view->CurrentPlane();
            }
            return group;
        });
    RefreshAll();
    SetStatus(0, status);
}

std::vector<QMdiSubWindow*> CMainFrame::SelectedDisplays() const {
    std::vector<QMdiSubWindow*> frames;
    CWindowSpace& windows = GlobalWindowSpace();
    for (int i = 0; i < windows.Count(); ++i)
        if (auto* doc = dynamic_cast<CMdiDoc*>(windows.Get(i)); doc && (doc->select & 1))
            if (doc->Frame()) frames.push_back(doc->Frame());
    return frames;
}

void CMainFrame::OnAlignTop() {
    int x = 0;
    for (QMdiSubWindow* w : SelectedDisplays()) {
        w->move(x, 0);
        x += w->width();
    }
}

void CMainFrame::OnAlignLeft() {
    int y = 0;
    for (QMdiSubWindow* w : SelectedDisplays()) {
        w->move(0, y);
        y += w->height();
    }
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
    if (pane < 0 || pane >= 3) return;
    // Progress lines are written for a terminal: a pane shows what that line would show,
    // the text after the last carriage return, without line ends.
    QString line = QString::fromStdString(text);
    while (line.endsWith('\n') || line.endsWith('\r')) line.chop(1);
    line = line.mid(line.lastIndexOf('\r') + 1);
    panes_[pane]->setText(line);
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
