// The open, load and save dialogs driven through their widgets' object names on the
// offscreen platform, one test class each, and the two entries of the file menu.
#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

#include "files/qt/dialog_load.h"
#include "files/qt/dialog_open.h"
#include "files/qt/dialog_save_as.h"
#include "shell/qt/main_frame.h"
#include "tests/files/open_save_fixture.h"
#include "tests/shell/gui_test_app.h"

namespace files_test {
namespace {

class DialogTest : public OpenSaveTest {
  protected:
    void SetUp() override {
        TestApp();
        OpenSaveTest::SetUp();
    }
    template <class T>
    static T* Find(QWidget* root, const QString& name) {
        T* child = root->findChild<T*>(name);
        EXPECT_NE(child, nullptr) << name.toStdString();
        return child;
    }
    static void Click(QWidget* root, const QString& name) {
        QTest::mouseClick(Find<QPushButton>(root, name), Qt::LeftButton);
    }
    // Twelve i2 samples 0 ... 11 as a 4 x 3 binary file.
    void Raw(const std::string& name) {
        std::string bytes;
        for (int16_t k = 0; k < 12; ++k) bytes.append(reinterpret_cast<const char*>(&k), 2);
        Spit(Path(name), bytes);
    }
};

class DialogOpenTest : public DialogTest {};

TEST_F(DialogOpenTest, HeaderOnSelectionAndLoadThroughTheLoadDialog) {
    Raw("b.raw");
    Raw("a.raw");
    folder_ = dir_.string();
    open_.filetype = 9;  // clamped to 6 on opening
    COpenModel model(open_, space_, folder_);
    CDialogOpen dialog(model);
    EXPECT_EQ(Find<QComboBox>(&dialog, "open_type")->currentData().toInt(), 6);
    Find<QComboBox>(&dialog, "open_type")->setCurrentIndex(2);
    Find<QLineEdit>(&dialog, "open_res_x")->setText("4");
    Find<QLineEdit>(&dialog, "open_res_y")->setText("3");
    Find<QComboBox>(&dialog, "open_datatype")->setCurrentIndex(TYPE_I2);
    QListWidget* files = Find<QListWidget>(&dialog, "open_files");
    ASSERT_EQ(files->count(), 2);
    files->setCurrentRow(0);
    EXPECT_EQ(Find<QLabel>(&dialog, "open_title")->text(), "i2 (4,3,1,1)");
    EXPECT_EQ(Find<QLabel>(&dialog, "open_info")->text(),
              "file size:24  data size:24\n3 x lines; 1 xy planes; 1 xyz cubes");
    EXPECT_TRUE(Find<QLabel>(&dialog, "open_picture")->pixmap().isNull());
    Find<QCheckBox>(&dialog, "open_preview")->setChecked(true);
    EXPECT_FALSE(Find<QLabel>(&dialog, "open_picture")->pixmap().isNull());
    QTest::mouseClick(Find<QRadioButton>(&dialog, "open_baseline2"), Qt::LeftButton);

    files->selectAll();
    // The load dialog comes up modal: load both files from it.
    QTimer::singleShot(0, [] {
        for (QWidget* w : QApplication::topLevelWidgets())
            if (w->objectName() == "load_dialog" && w->isVisible())
                QTest::mouseClick(w->findChild<QPushButton*>("load_all"), Qt::LeftButton);
    });
    QString status;
    QObject::connect(&dialog, &CDialogOpen::opened, [&](const QString& s) { status = s; });
    Click(&dialog, "open_ok");
    EXPECT_EQ(status, "read success");
    ASSERT_NE(space_.FindData("a"), nullptr);
    ASSERT_NE(space_.FindData("b"), nullptr);
    EXPECT_EQ(space_.FindData("b")->ResText(), "[4][3]");
    EXPECT_EQ(open_.res4d[0], "4");
    EXPECT_EQ(open_.baselines[2], 1);
    EXPECT_EQ(open_.preview, 1);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

class DialogLoadTest : public DialogTest {};

TEST_F(DialogLoadTest, ButtonsWalkTheListAndNameTheArrays) {
    Raw("one.raw");
    Raw("two.raw");
    Raw("three.raw");
    open_.res4d[0] = "4";
    open_.res4d[1] = "3";
    open_.datatype = TYPE_I2;
    std::vector<FileEntry> entries(3);
    const char* names[3] = {"one.raw", "three.raw", "two.raw"};
    for (int k = 0; k < 3; ++k) {
        entries[k].path = Path(names[k]);
        entries[k].code = 3;
    }
    CLoadModel model(open_, space_, entries);
    CDialogLoad dialog(model);
    EXPECT_EQ(Find<QLabel>(&dialog, "load_file")->text().toStdString(), Path("one.raw"));
    QTest::mouseClick(Find<QRadioButton>(&dialog, "load_rule4"), Qt::LeftButton);
    Find<QLineEdit>(&dialog, "load_name")->setText("mine");
    Click(&dialog, "load_one");
    EXPECT_NE(space_.FindData("mine"), nullptr);
    EXPECT_EQ(Find<QLabel>(&dialog, "load_file")->text().toStdString(), Path("three.raw"));
    Click(&dialog, "load_skip");
    EXPECT_EQ(Find<QLabel>(&dialog, "load_file")->text().toStdString(), Path("two.raw"));
    QTest::mouseClick(Find<QRadioButton>(&dialog, "load_rule1"), Qt::LeftButton);
    Click(&dialog, "load_quit");
    EXPECT_TRUE(model.exited);
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_EQ(space_.Count(), 1);
    EXPECT_EQ(open_.name_is_file, 4);
}

class DialogSaveAsTest : public DialogTest {};

TEST_F(DialogSaveAsTest, TicksMakeASeriesSavedOneOkAtATime) {
    Ramp("a", TYPE_R4, 2, 2);
    Ramp("b", TYPE_R4, 3, 1);
    save_.dtype = TYPE_R4;
    CSaveModel model(save_, space_, windows_);
    CDialogSaveAs dialog(model);
    QListWidget* list = Find<QListWidget>(&dialog, "save_list");
    ASSERT_EQ(list->count(), 2);
    list->item(0)->setCheckState(Qt::Checked);
    list->item(1)->setCheckState(Qt::Checked);
    EXPECT_EQ(Find<QLabel>(&dialog, "save_names")->text(), "a ...");
    EXPECT_EQ(Find<QLineEdit>(&dialog, "save_file")->text(), "d%02d");
    Find<QLineEdit>(&dialog, "save_file")->setText(QString::fromStdString(Path("f%d.raw")));
    Click(&dialog, "save_ok");
    EXPECT_EQ(Find<QLabel>(&dialog, "save_status")->text(), "file saved");
    EXPECT_EQ(Find<QLabel>(&dialog, "save_names")->text(), "b");
    EXPECT_EQ(list->item(0)->checkState(), Qt::Unchecked);
    EXPECT_EQ(dialog.result(), 0);
    Click(&dialog, "save_ok");
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(std::filesystem::file_size(Path("f0.raw")), 16u);
    EXPECT_EQ(std::filesystem::file_size(Path("f1.raw")), 12u);

    // Text options reach the writer.
    Find<QComboBox>(&dialog, "save_type")->setCurrentIndex(1);
    list->item(0)->setCheckState(Qt::Checked);
    Find<QLineEdit>(&dialog, "save_file")->setText(QString::fromStdString(Path("a.txt")));
    Find<QLineEdit>(&dialog, "save_separator")->setText(";");
    Find<QLineEdit>(&dialog, "save_format")->setText("%g");
    Click(&dialog, "save_ok");
    EXPECT_EQ(Slurp(Path("a.txt")), "3;1.75\n0.5;-0.75\n\n");
}

TEST_F(DialogTest, FileMenuOpensAndSaves) {
    CShellModules modules;
    CMainFrame frame(space_, modules);
    const QAction* open = frame.findChild<QAction*>("action_open");
    const QAction* save = frame.findChild<QAction*>("action_save");
    ASSERT_NE(open, nullptr);
    ASSERT_NE(save, nullptr);
    EXPECT_EQ(open->text(), "&open...\tctrl+o");
    EXPECT_EQ(save->text(), "&save...\tctrl_s");
    EXPECT_EQ(open->shortcut(), QKeySequence(QKeySequence::Open));
}

}  // namespace
}  // namespace files_test
