#include <gtest/gtest.h>

#include <QClipboard>
#include <QComboBox>
#include <QDockWidget>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPrinter>
#include <QTest>
#include <QTextBlock>
#include <QTimer>
#include <QTreeWidget>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "core/data_cursor.h"
#include "core/data_space.h"
#include "core/script_space.h"
#include "core/window_space.h"
#include "core/zrk_data.h"
#include "display/display_entry.h"
#include "display/new_display.h"
#include "display/qt/display_ui.h"
#include "display/qt/view_2d.h"
#include "eval/qt/bar_equ.h"
#include "eval/qt/form_script.h"
#include "eval/qt/frame_script.h"
#include "files/zrk_file.h"
#include "shell/crash_hooks.h"
#include "shell/desktop.h"
#include "shell/group_edit.h"
#include "shell/qt/form_desktop.h"
#include "shell/qt/form_history.h"
#include "shell/qt/main_frame.h"
#include "shell/qt/qt_host.h"
#include "shell/qt/zarnik_app.h"
#include "tests/peer.h"
#include "tests/shell/gui_test_app.h"

namespace {

class MainFrameTest : public ::testing::Test {
  protected:
    void SetUp() override {
        TestApp();
        prefs_ = ::testing::TempDir() + "quelmor_gui_" +
                 ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".txt";
        std::remove(prefs_.c_str());
    }
    void TearDown() override {
        std::remove(prefs_.c_str());
        // The frame, its bar, desktop and forms work on the space they are handed.
        EXPECT_EQ(GlobalDataSpace().Count(), 0);
    }

    std::unique_ptr<CZarnikApp> Start() {
        auto app = std::make_unique<CZarnikApp>(space_);
        CStartOptions start;
        start.show_about = false;
        start.preferences = prefs_;
        EXPECT_TRUE(app->InitInstance(start));
        app->QtHost()->SetAutoAnswer(true);
        return app;
    }
    template <class T>
    static T* Find(QWidget* root, const char* name) {
        T* child = root->findChild<T*>(name);
        EXPECT_NE(child, nullptr) << name;
        return child;
    }
    static QStringList Rows(QWidget* root) {
        QStringList names;
        auto* list = root->findChild<QTreeWidget*>("desktop_list");
        for (int i = 0; i < list->topLevelItemCount(); ++i) names << list->topLevelItem(i)->text(0);
        return names;
    }
    static void Trigger(QWidget* root, const char* action) {
        QAction* a = root->findChild<QAction*>(action);
        ASSERT_NE(a, nullptr) << action;
        a->trigger();
    }
    static void Type(QLineEdit* edit, const char* text) {
        edit->clear();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Return);
    }

    CDataSpace space_;
    std::string prefs_;
};

TEST_F(MainFrameTest, EquationBarEvaluatesIntoHistoryDesktopAndRecord) {
    auto app = Start();
    CMainFrame* frame = app->Frame();
    auto* edit = Find<QLineEdit>(frame, "equation_edit");
    auto* history = Find<QPlainTextEdit>(frame, "history_text");
    EXPECT_TRUE(history->toPlainText().startsWith("compiled " __DATE__));

    Type(edit, "a = {1,2,3}");
    EXPECT_TRUE(history->toPlainText().contains("a = {1,2,3}\n"));
    EXPECT_EQ(edit->text(), "");
    EXPECT_EQ(frame->StatusText(0), "");
    auto* list = Find<QTreeWidget>(frame, "desktop_list");
    ASSERT_EQ(Rows(frame), QStringList{"a"});
    EXPECT_EQ(list->topLevelItem(0)->text(1), "3x1x1x1");
    const CZrkData* a = space_.FindData("a");
    ASSERT_NE(a, nullptr);
    ASSERT_EQ(a->Count(), 3u);
    // Marked changed by the evaluation, then consumed by the walk over the displays.
    EXPECT_FALSE(a->changed);
    EXPECT_EQ(Find<QLabel>(frame, "desktop_bytes")->text(),
              QString("data space %1; undo space 0; total bytes %1").arg(a->Bytes()));

    Type(edit, "b = a +* 2");
    EXPECT_EQ(edit->text(), "b = a +* 2");
    EXPECT_TRUE(frame->StatusText(0).contains("returned 'syntax error'"))
        << frame->StatusText(0).toStdString();
    EXPECT_FALSE(history->toPlainText().contains("b = a"));
    EXPECT_EQ(Rows(frame), QStringList{"a"});
}

TEST_F(MainFrameTest, PickingAHistoryLinePutsItBackIntoTheBar) {
    auto app = Start();
    CMainFrame* frame = app->Frame();
    frame->History()->Append("x = 4 * 5\r\n");
    frame->History()->Append("y = 7\r\n");
    QPlainTextEdit* history = frame->History()->Edit();
    QTextCursor at(history->document()->findBlockByNumber(1));
    ASSERT_EQ(at.block().text(), "x = 4 * 5");
    QTest::mouseDClick(history->viewport(), Qt::LeftButton, {}, history->cursorRect(at).center());
    EXPECT_EQ(Find<QLineEdit>(frame, "equation_edit")->text(), "x = 4 * 5");
}

TEST_F(MainFrameTest, FullHistoryIsCopiedToTheClipboard) {
    auto app = Start();
    CMainFrame* frame = app->Frame();
    app->Modules().history.SetLimit(60);
    frame->History()->Append("first line of the report\r\n");
    frame->History()->Append("second line that fills it up\r\n");
    ASSERT_EQ(app->QtHost()->messages.size(), 1u);
    EXPECT_EQ(app->QtHost()->messages[0],
              "the history window has filled up\nit's contents wil be copied to the clipboard");
    EXPECT_TRUE(QApplication::clipboard()->text().contains("first line of the report"));
    EXPECT_EQ(frame->History()->Edit()->toPlainText(), "second line that fills it up\n");
}

TEST_F(MainFrameTest, DesktopContextEntriesChangeTheListAndTheStatus) {
    auto app = Start();
    CMainFrame* frame = app->Frame();
    Type(Find<QLineEdit>(frame, "equation_edit"), "a = {1,2,3}");
    Trigger(frame, "desktop_declare_pi");
    EXPECT_EQ(frame->StatusText(0), "pi declared");
    EXPECT_EQ(Rows(frame), (QStringList{"a", "pi"}));

    auto* list = Find<QTreeWidget>(frame, "desktop_list");
    list->topLevelItem(0)->setSelected(true);
    EXPECT_TRUE(space_.FindData("a")->select & kDesktopSelect);
    Trigger(frame, "desktop_duplicate");
    EXPECT_EQ(Rows(frame), (QStringList{"a", "a.", "pi"}));

    Trigger(frame, "desktop_no_detail");
    EXPECT_EQ(list->columnCount(), 1);
    Trigger(frame, "desktop_details");
    EXPECT_EQ(list->columnCount(), 4);

    // "a" is still picked; pi is reserved and stays when picked too.
    list->topLevelItem(2)->setSelected(true);
    Trigger(frame, "desktop_free_data");
    EXPECT_EQ(Rows(frame), (QStringList{"a.", "pi"}));
    EXPECT_EQ(frame->StatusText(0), "1 freed");
}

TEST_F(MainFrameTest, ExitAsksAndWritesPreferencesThatComeBack) {
    {
        auto app = Start();
        CMainFrame* frame = app->Frame();
        Trigger(frame, "desktop_no_detail");
        Find<QDockWidget>(frame, "history_dock")->hide();

        app->QtHost()->SetAutoAnswer(false);
        EXPECT_FALSE(frame->close());
        EXPECT_EQ(app->QtHost()->questions.back(), "Exit Quelmor?");
        EXPECT_FALSE(std::ifstream(prefs_).good());

        app->QtHost()->SetAutoAnswer(true);
        EXPECT_TRUE(frame->close());
        EXPECT_TRUE(std::ifstream(prefs_).good());
    }
    auto app = Start();
    EXPECT_EQ(app->Modules().desktop.desktop_details, 0);
    EXPECT_EQ(app->Modules().history.view_history, 0);
    EXPECT_FALSE(Find<QDockWidget>(app->Frame(), "history_dock")->isVisibleTo(app->Frame()));
    EXPECT_EQ(Find<QTreeWidget>(app->Frame(), "desktop_list")->columnCount(), 1);
}

TEST_F(MainFrameTest, ScriptFolderChosenInTheManagerServesTheBarAndComesBack) {
    const std::string folder = ::testing::TempDir() + "quelmor_gui_scripts";
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/inc") << "script (p) { p = p + 1; }";
    {
        auto app = Start();
        CMainFrame* frame = app->Frame();
        Trigger(frame, "action_view_script");
        CFormScript* form = frame->Scripts()->Form();
        form->choose_folder = [&] { return QString::fromStdString(folder); };
        const int browse = static_cast<int>(app->Modules().script.FolderEntries().size()) - 2;
        form->OnFolder(browse);
        EXPECT_EQ(GlobalScriptSpace().Directory(), folder);
        Type(frame->EquationBar()->Edit(), "v = 1");
        Type(frame->EquationBar()->Edit(), "inc(v)");
        ASSERT_NE(space_.FindData("v"), nullptr);
        double v = 0;
        CDataCursor<double>(space_.FindData("v")).GetI(v, 0);
        EXPECT_EQ(v, 2);
        EXPECT_TRUE(frame->close());
    }
    GlobalScriptSpace().SetDirectory("");
    std::string written;
    std::getline(std::ifstream(prefs_), written, '\0');
    EXPECT_NE(written.find("\n// script options\nview_script= 1\n"), std::string::npos);
    EXPECT_NE(written.find("script_path0= " + folder + "\n"), std::string::npos);
    {
        auto app = Start();
        EXPECT_EQ(GlobalScriptSpace().Directory(), folder);
        EXPECT_NE(GlobalScriptSpace().FindByName("inc"), nullptr);
        EXPECT_TRUE(app->Frame()->Scripts()->isVisibleTo(app->Frame()));
        while (space_.Count() > 0) space_.DelData(0);
    }
    GlobalScriptSpace().SetDirectory("");
    GlobalScriptSpace().DelAllImages();
    std::filesystem::remove_all(folder);
}

TEST_F(MainFrameTest, MalformedPreferencesStillStart) {
    std::ofstream out(prefs_, std::ios::binary);
    out << "view_desktop= 1\nsome_future_key= 3 4 5\n";
    for (int i = 0; i < 2000; ++i) out.put(static_cast<char>((i * 97 + 13) % 256));
    out << "\ndesktop_loc= 10 20";
    out.close();
    auto app = Start();
    EXPECT_TRUE(app->Frame()->isVisible());
    EXPECT_EQ(app->Modules().desktop.view_desktop, 1);
}

TEST_F(MainFrameTest, StartOffersTheCrashFileThroughTheHook) {
    static std::string offered;
    CrashHooks().offer = [](const char* path) { offered = path; };
    auto app = Start();
    CrashHooks().offer = nullptr;
    EXPECT_EQ(offered, app->Paths().crash_workspace);
    EXPECT_NE(offered.find("/quelmor_crash.zrk"), std::string::npos);
}

TEST_F(MainFrameTest, MenuTableTextsShortcutsAndSelectAll) {
    auto app = Start();
    CMainFrame* frame = app->Frame();
    struct Entry {
        const char *name, *text;
        QKeySequence key;
    };
    for (const Entry& e :
         {Entry{"action_print", "&print...\tctrl+p", QKeySequence("Ctrl+P")},
          {"action_print_setup", "print setup", {}},
          {"action_select_all_1d", "select all 1d\tctrl 1", QKeySequence("Ctrl+1")},
          {"action_select_all_2d", "select all 2d\tctrl 2", QKeySequence("Ctrl+2")},
          {"action_select_all_xy", "select all xy\tctrl y", QKeySequence("Ctrl+Y")},
          {"action_select_all_rgb", "select all rgb\tctrl b", QKeySequence("Ctrl+B")},
          {"action_view_1d", "view 1d", {}},
          {"action_view_xy", "view xy", {}},
          {"action_equation", "equation", {}},
          {"action_wave_inversion", "wave inversion...", {}},
          {"action_options_1d", "1d display...", {}},
          {"action_axis_1d", "1d axis etc ..", {}},
          {"action_options_2d", "2d display...", {}},
          {"action_options_rgb", "rgb display...", {}},
          {"action_options_xy", "xy display...", {}},
          {"action_axis_xy", "xy axis etc ..", {}},
          {"action_arrange_icons", "arrange icons", {}},
          {"action_refresh", "&refresh", {}}}) {
        auto* a = Find<QAction>(frame, e.name);
        if (!a) continue;
        EXPECT_EQ(a->text(), e.text) << e.name;
        EXPECT_EQ(a->shortcut(), e.key) << e.name;
    }
    // Entries without a form stand disabled.
    EXPECT_FALSE(Find<QAction>(frame, "action_options_2d")->isEnabled());
    // The tool bar carries the inversion.
    EXPECT_TRUE(Find<QWidget>(frame, "tool_bar")
                    ->actions()
                    .contains(Find<QAction>(frame, "action_wave_inversion")));

    // Select all 2d marks the 2d displays only.
    space_.NewData(TYPE_R4, 8, 6, 1, 1, 1, 1, "img");
    CNew2d& n = app->DisplayModules().new_2d;
    n.names[0] = "img";
    ASSERT_TRUE(n.OnViewNew(space_));
    ASSERT_EQ(GlobalWindowSpace().Count(), 1);
    CWindowEntry* display = GlobalWindowSpace().Get(0);
    display->select = 0;
    Trigger(frame, "action_select_all_1d");
    EXPECT_EQ(display->select & 1, 0u);
    EXPECT_EQ(frame->StatusText(0), "0 displays selected");
    Trigger(frame, "action_select_all_2d");
    EXPECT_EQ(display->select & 1, 1u);
    EXPECT_EQ(frame->StatusText(0), "1 display selected");
    // "view 2d" opens the display layer's form (modal; it closes itself here).
    QTimer::singleShot(0, [] {
        if (QWidget* modal = QApplication::activeModalWidget()) modal->close();
    });
    Trigger(frame, "action_view_2d");
    space_.DelData("img");
    frame->SetClosingForScript(true);
}

TEST_F(MainFrameTest, DesktopKindsChannelsAndDoubleClick) {
    auto app = Start();
    CMainFrame* frame = app->Frame();
    for (auto [name, text] : {std::pair{"desktop_display_1d", "display as 1d plot"},
                              {"desktop_display_2d", "display as 2d image"},
                              {"desktop_edit_data", "edit data"},
                              {"desktop_list_all_types", "list all display types"},
                              {"desktop_list_one_type", "list 1 display type"},
                              {"desktop_toggle_type", "toggle 1 display type"},
                              {"desktop_iqmp_i", "display I channel on open"},
                              {"desktop_iqmp_q", "display Q channel on open"},
                              {"desktop_iqmp_m", "display magnitude on open"},
                              {"desktop_iqmp_p", "display phase on open"}})
        if (auto* a = Find<QAction>(frame, name)) {
            EXPECT_EQ(a->text(), text) << name;
        } else {
            ADD_FAILURE() << "no action " << name;
        }
    // "edit data" opens the picked array in a spreadsheet of its own.
    Trigger(frame, "desktop_edit_data");
    EXPECT_EQ(frame->StatusText(0), "no data selected");
    CZrkData* sheet = space_.NewData(TYPE_R4, 5, 4, 1, 1, 1, 1, "sheet");
    std::memset(sheet->Data(), 0, sheet->Bytes());
    frame->RefreshAll();
    auto* desk = Find<QTreeWidget>(frame, "desktop_list");
    desk->findItems("sheet", Qt::MatchExactly).value(0)->setSelected(true);
    Trigger(frame, "desktop_edit_data");
    EXPECT_EQ(frame->StatusText(0), "edit data");
    ASSERT_EQ(GlobalWindowSpace().Count(), 1);
    EXPECT_EQ(GlobalWindowSpace().Get(0)->kind, 0x100000u);
    EXPECT_EQ(GlobalWindowSpace().Get(0)->data[0], sheet);
    auto* table = Find<QAbstractItemView>(frame, "view_edit");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->model()->columnCount(), 5);
    EXPECT_EQ(table->model()->rowCount(), 4);
    space_.DelData("sheet");
    frame->RefreshAll();
    EXPECT_EQ(GlobalWindowSpace().Count(), 0);

    auto* kinds = Find<QComboBox>(frame, "desktop_kind");
    auto items = [kinds] {
        QStringList list;
        for (int i = 0; i < kinds->count(); ++i) list << kinds->itemText(i);
        return list;
    };
    EXPECT_EQ(items(), (QStringList{"1d", "2d", "rgb", "xy"}));
    EXPECT_EQ(kinds->currentText(), "2d");
    Trigger(frame, "desktop_list_one_type");
    EXPECT_EQ(items(), QStringList{"2d"});
    Trigger(frame, "desktop_toggle_type");
    EXPECT_EQ(items(), QStringList{"rgb"});
    Trigger(frame, "desktop_list_all_types");
    EXPECT_EQ(items(), (QStringList{"1d", "2d", "rgb", "xy"}));
    EXPECT_EQ(kinds->currentText(), "rgb");
    kinds->setCurrentIndex(1);
    emit kinds->activated(1);
    EXPECT_EQ(app->Modules().desktop.KindBit(), 0x20000u);

    // The channel is a checked entry kept in desktop_iqmp=.
    Trigger(frame, "desktop_iqmp_p");
    EXPECT_EQ(app->Modules().desktop.desktop_iqmp, 3);
    EXPECT_TRUE(Find<QAction>(frame, "desktop_iqmp_p")->isChecked());
    EXPECT_FALSE(Find<QAction>(frame, "desktop_iqmp_m")->isChecked());

    // A double click opens the array in the chosen kind through the chosen channel.
    space_.NewData(TYPE_CR4, 8, 6, 1, 1, 1, 1, "wave");
    frame->RefreshAll();
    auto* list = Find<QTreeWidget>(frame, "desktop_list");
    QTreeWidgetItem* row = list->findItems("wave", Qt::MatchExactly).value(0);
    ASSERT_NE(row, nullptr);
    emit list->itemDoubleClicked(row, 0);
    ASSERT_EQ(GlobalWindowSpace().Count(), 1);
    auto* display = dynamic_cast<CDisplayEntry*>(GlobalWindowSpace().Get(0));
    ASSERT_NE(display, nullptr);
    EXPECT_EQ(display->kind, 0x20000u);
    EXPECT_EQ(display->look.palplane.iqmp, 3);
    EXPECT_EQ(frame->StatusText(0), "display 2d");
    // The desktop's choice leaves the 2d form's own fields alone.
    EXPECT_EQ(app->DisplayModules().new_2d.names[0], "");
    // The plot of the same array opens beside the picture.
    row->setSelected(true);
    Trigger(frame, "desktop_display_1d");
    ASSERT_EQ(GlobalWindowSpace().Count(), 2);
    EXPECT_EQ(GlobalWindowSpace().Get(1)->kind, 0x10000u);
    EXPECT_EQ(frame->StatusText(0), "display 1d");
    space_.DelData("wave");
    frame->SetClosingForScript(true);
}

TEST_F(MainFrameTest, GroupCommandsEditEverySelectedDisplayWithUndo) {
    auto app = Start();
    CMainFrame* frame = app->Frame();
    // Two 3 x 2 arrays, x fastest, and a single plane for the chop of t.
    for (const char* name : {"ga", "gb"}) {
        CZrkData* a = space_.NewData(TYPE_R4, 3, 2, 1, 1, 1, 1, name);
        auto* f = static_cast<float*>(a->Data());
        for (int i = 0; i < 6; ++i) f[i] = float(i + (name[1] == 'b' ? 10 : 0));
        CNew2d& n = app->DisplayModules().new_2d;
        n.names[0] = name;
        ASSERT_TRUE(n.OnViewNew(space_));
    }
    ASSERT_EQ(GlobalWindowSpace().Count(), 2);
    // Each display's subwindow carries the group menu with the 25 texts.
    QMdiSubWindow* sub = frame->Mdi()->subWindowList().value(0);
    ASSERT_NE(sub, nullptr);
    frame->Mdi()->setActiveSubWindow(sub);
    auto* group = sub->systemMenu()->findChild<QMenu*>("menu_group");
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->actions().value(0)->text(), "scroll z");
    EXPECT_EQ(group->actions().value(5)->text(), "transpose xy");
    EXPECT_EQ(group->actions().value(24)->text(), "rot -90");
    for (QAction* a : group->actions()) EXPECT_TRUE(a->isEnabled()) << a->text().toStdString();

    for (int i = 0; i < 2; ++i) GlobalWindowSpace().Get(i)->select |= 1;
    group->actions().value(5)->trigger();  // transpose xy
    EXPECT_EQ(frame->StatusText(0), "transpose xy: 2 displays");
    for (const char* name : {"ga", "gb"}) {
        CZrkData* a = space_.FindData(name);
        EXPECT_EQ(a->Res(0), 2u) << name;
        EXPECT_EQ(a->Res(1), 3u) << name;
        // (x, y) = (1, 0) of the source is now at (0, 1).
        EXPECT_FLOAT_EQ(static_cast<float*>(a->Data())[2], name[1] == 'b' ? 11.0f : 1.0f);
        a->Undo();
        EXPECT_EQ(a->Res(0), 3u) << name;
        EXPECT_FLOAT_EQ(static_cast<float*>(a->Data())[1], name[1] == 'b' ? 11.0f : 1.0f);
    }
    // Only the selected display changes.
    GlobalWindowSpace().Get(1)->select = 0;
    frame->OnGroupCommand(GroupCommandIndex("flip x"));
    EXPECT_EQ(frame->StatusText(0), "flip x: 1 display");
    // Align: the selected displays in a row, then in a column.
    for (int i = 0; i < 2; ++i) GlobalWindowSpace().Get(i)->select |= 1;
    QList<QMdiSubWindow*> subs = frame->Mdi()->subWindowList();
    subs[0]->move(40, 50);
    subs[1]->move(70, 90);
    frame->OnAlignTop();
    EXPECT_EQ(subs[0]->y(), 0);
    EXPECT_EQ(subs[1]->y(), 0);
    EXPECT_EQ(std::abs(subs[1]->x() - subs[0]->x()), subs[0]->width());
    frame->OnAlignLeft();
    EXPECT_EQ(subs[0]->x(), 0);
    EXPECT_EQ(subs[1]->x(), 0);
    EXPECT_EQ(std::abs(subs[1]->y() - subs[0]->y()), subs[0]->height());
    for (const char* name : {"ga", "gb"}) space_.DelData(name);
    frame->SetClosingForScript(true);
}

// Scrolls move every selected view; crops and zeros go through the regions of the global
// space, and an array the region does not fit keeps its samples while the others change.
TEST_F(MainFrameTest, GroupScrollsCropsAndZerosOnEverySelectedDisplay) {
    auto app = Start();
    CMainFrame* frame = app->Frame();
    CDataSpace& global = GlobalDataSpace();
    auto set = [&](const char* name, std::vector<float> v) {
        global.DelData(name);
        CZrkData* r = global.NewData(TYPE_R4, v.size(), 1, 1, 1, 1, 1, name);
        std::copy(v.begin(), v.end(), static_cast<float*>(r->Data()));
    };
    // sa is 4 wide, sb 8; both 4 high with 3 z planes, sample k holding k.
    for (auto [name, nx] : {std::pair{"sa", 4}, std::pair{"sb", 8}}) {
        CZrkData* a = space_.NewData(TYPE_R4, nx, 4, 3, 1, 1, 1, name);
        auto* f = static_cast<float*>(a->Data());
        for (size_t k = 0; k < a->Count(); ++k) f[k] = float(k);
        CNew2d& n = app->DisplayModules().new_2d;
        n.names[0] = name;
        ASSERT_TRUE(n.OnViewNew(space_));
    }
    QList<QMdiSubWindow*> subs = frame->Mdi()->subWindowList();
    ASSERT_EQ(subs.size(), 2);
    frame->Mdi()->setActiveSubWindow(subs[0]);
    auto* group = subs[0]->systemMenu()->findChild<QMenu*>("menu_group");
    ASSERT_NE(group, nullptr);
    auto run = [&](const char* text) {
        const int i = GroupCommandIndex(text);
        auto* a = group->findChild<QAction*>(QString("group_%1").arg(i));
        ASSERT_NE(a, nullptr) << text;
        ASSERT_EQ(a->text(), text);
        a->trigger();
    };
    CView2d* views[2];
    for (int i = 0; i < 2; ++i) {
        views[i] = subs[i]->findChild<CView2d*>("view_2d");
        ASSERT_NE(views[i], nullptr);
        GlobalWindowSpace().Get(i)->select |= 1;
    }

    run("scroll z");
    EXPECT_EQ(frame->StatusText(0), "scroll z: 2 displays");
    for (CView2d* v : views) {
        EXPECT_EQ(v->scroll_mode, 2);
        EXPECT_EQ(v->page[0], 1u);
    }
    run("scroll all");
    for (CView2d* v : views) {
        EXPECT_EQ(v->scroll_mode, 6);
        EXPECT_EQ(v->page[0], 2u);
    }
    run("scroll t");  // a single t plane: the mode changes, the page stays
    for (CView2d* v : views) {
        EXPECT_EQ(v->scroll_mode, 3);
        EXPECT_EQ(v->CurrentPlane(), 2u);
    }

    // roi_x 5 ... 6 lies outside sa: its text, sa as it was, sb cut to those two columns.
    set("roi_x", {5, 6});
    run("crop 1d");
    EXPECT_EQ(frame->StatusText(0), "1d roi is invalid");
    CZrkData* sa = space_.FindData("sa");
    CZrkData* sb = space_.FindData("sb");
    EXPECT_EQ(sa->Res(0), 4u);
    EXPECT_FALSE(sa->HasUndo());
    ASSERT_EQ(sb->Res(0), 2u);
    EXPECT_EQ(sb->Res(2), 3u);
    EXPECT_FLOAT_EQ(static_cast<float*>(sb->Data())[0], 5.0f);
    EXPECT_FLOAT_EQ(static_cast<float*>(sb->Data())[3], 8 + 6.0f);  // (x, y) = (1, 1)
    sb->Undo();
    ASSERT_EQ(sb->Res(0), 8u);

    // The views draw rectangles until told otherwise; there is none.
    run("crop 2d");
    EXPECT_EQ(frame->StatusText(0), "invalid 2d roi");
    run("zero 2d");
    EXPECT_EQ(frame->StatusText(0), "invalid 2d roi");
    EXPECT_EQ(sa->Res(0), 4u);
    EXPECT_EQ(sb->Res(0), 8u);

    // Zero inside the rectangle (1, 1) ... (2, 2): the plane each view shows, nothing else.
    set("roi_rect", {1, 1, 2, 2});
    run("zero 2d");
    EXPECT_EQ(frame->StatusText(0), "zero 2d: 2 displays");
    for (CZrkData* a : {sa, sb}) {
        const auto* f = static_cast<const float*>(a->Data());
        const size_t nx = a->Res(0), plane = nx * 4;
        for (size_t k = 0; k < a->Count(); ++k) {
            const size_t x = k % nx, y = k / nx % 4;
            const bool inside = k / plane == 2 && x >= 1 && x <= 2 && y >= 1 && y <= 2;
            ASSERT_FLOAT_EQ(f[k], inside ? 0.0f : float(k)) << a->name << " " << k;
        }
        a->Undo();
    }
    // The rectangle crops both; zero 1d without roi_x says so.
    run("crop 2d");
    EXPECT_EQ(sa->Res(0), 2u);
    EXPECT_EQ(sb->Res(1), 2u);
    global.DelData("roi_x");
    run("zero 1d");
    EXPECT_EQ(frame->StatusText(0), "1d roi does not exist");

    for (const char* name : {"sa", "sb"}) space_.DelData(name);
    while (global.Count() > 0) global.DelData(0);
    frame->SetClosingForScript(true);
}

// The current display goes to a PDF file through the printer, read back by pypdf: one page
// with the display's picture on it and its title as text.
TEST_F(MainFrameTest, PrintPutsTheCurrentDisplayOnAPage) {
    auto app = Start();
    CMainFrame* frame = app->Frame();
    QAction* print = Find<QAction>(frame, "action_print");
    ASSERT_NE(print, nullptr);
    EXPECT_EQ(print->text(), "&print...\tctrl+p");
    EXPECT_EQ(print->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_P));
    Find<QAction>(frame, "action_print_setup");

    peer::Peer peer;
    const QString pdf = QString::fromStdString((peer.Dir() / "print.pdf").string());
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(pdf);
    EXPECT_FALSE(frame->PrintActive(printer));
    EXPECT_EQ(frame->StatusText(0), "no display to print");
    EXPECT_FALSE(QFileInfo::exists(pdf));

    CZrkData* a = space_.NewData(TYPE_R4, 24, 16, 1, 1, 1, 1, "printed");
    auto* f = static_cast<float*>(a->Data());
    for (size_t k = 0; k < a->Count(); ++k) f[k] = float(k % 24);
    CNew2d& n = app->DisplayModules().new_2d;
    n.names[0] = "printed";
    ASSERT_TRUE(n.OnViewNew(space_));
    frame->show();
    QApplication::processEvents();
    ASSERT_TRUE(frame->PrintActive(printer));
    EXPECT_EQ(frame->StatusText(0), "print complete");
    std::ifstream file(pdf.toStdString(), std::ios::binary);
    std::string head(5, '\0');
    file.read(head.data(), 5);
    EXPECT_EQ(head, "%PDF-");
    ASSERT_TRUE(peer.RunText(R"(
import pypdf
reader = pypdf.PdfReader(FOLDER + "/print.pdf")
page = reader.pages[0]
xobjects = page["/Resources"].get("/XObject", {})
images = [x for x in xobjects.values() if x.get_object()["/Subtype"] == "/Image"]
print(len(reader.pages), len(images), "printed" in page.extract_text())
)"));
    EXPECT_EQ(peer.Output(), "1 1 True\n");
    space_.DelData("printed");
    frame->SetClosingForScript(true);
}

TEST_F(MainFrameTest, RecentFilesAreKeptAndComeBack) {
    const std::string workspace = ::testing::TempDir() + "quelmor_recent.zrk";
    {
        auto app = Start();
        CMainFrame* frame = app->Frame();
        EXPECT_FALSE(Find<QMenu>(frame, "menu_recent")->isEnabled());
        space_.NewData(TYPE_R4, 4, 1, 1, 1, 1, 1, "kept");
        CZrkFile file(workspace);
        file.space = &space_;
        file.Write();
        space_.DelData("kept");
        frame->OpenRecent(workspace);
        EXPECT_NE(space_.FindData("kept"), nullptr);
        // A file that is not there is not kept.
        frame->OpenRecent(workspace + ".gone");
        EXPECT_EQ(app->Modules().main_frame.recent_file[1], "");
        auto* recent = Find<QAction>(frame, "action_recent_file0");
        ASSERT_NE(recent, nullptr);
        EXPECT_TRUE(recent->text().endsWith(QString::fromStdString(workspace)));
        space_.DelData("kept");
        EXPECT_TRUE(frame->close());
    }
    auto app = Start();
    EXPECT_EQ(app->Modules().main_frame.recent_file[0], workspace);
    Trigger(app->Frame(), "action_recent_file0");
    EXPECT_NE(space_.FindData("kept"), nullptr);
    space_.DelData("kept");
    std::remove(workspace.c_str());
    app->Frame()->SetClosingForScript(true);
}

TEST_F(MainFrameTest, StatusBarHasThreePanes) {
    auto app = Start();
    for (const char* pane : {"status_pane0", "status_pane1", "status_pane2"})
        Find<QLabel>(app->Frame(), pane);
    Host().UndoTip("undo equation");
    EXPECT_EQ(app->Frame()->StatusText(1), "undo equation");
    // Progress lines written for a terminal show their current line only.
    Host().Status("\runwrap 3 out of 8");
    EXPECT_EQ(app->Frame()->StatusText(0), "unwrap 3 out of 8");
    Host().Status("step 1\rstep 2\r\n");
    EXPECT_EQ(app->Frame()->StatusText(0), "step 2");
    // The build folder has no help pages.
    Trigger(app->Frame(), "action_help_quelmor");
    EXPECT_EQ(app->Frame()->StatusText(0), "could not open html help");
}

}  // namespace
