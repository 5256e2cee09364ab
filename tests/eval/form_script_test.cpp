// The script manager's widget on the offscreen platform, driven through its objectNames.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QAction>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QTest>
#include <QTreeWidget>
#include <filesystem>
#include <fstream>

#include "core/host.h"
#include "core/script_space.h"
#include "eval/qt/form_script.h"
#include "eval/qt/frame_script.h"
#include "eval/script_manager.h"
#include "tests/shell/gui_test_app.h"

namespace fs = std::filesystem;

namespace {

class FormScriptTest : public ::testing::Test {
  protected:
    void SetUp() override {
        TestApp();
        dir_ = fs::temp_directory_path() / ("quelmor_form_script_" + std::to_string(::getpid()));
        other_ = dir_ / "other";
        dir_ /= "scripts";
        fs::create_directories(dir_);
        fs::create_directories(other_);
        std::ofstream(dir_ / "alpha") << "a = 1;\nb = 2;\n";
        std::ofstream(dir_ / "beta") << "script (p) { p = p + 1; }";
        ASSERT_EQ(script_.SetFolder(space_, dir_.string()), "");
        form_ = std::make_unique<CFormScript>(script_, space_);
        form_->start_editor = [this](const std::vector<std::string>& command) {
            started_ = command;
            return true;
        };
    }
    void TearDown() override {
        form_.reset();
        fs::remove_all(dir_.parent_path());
    }
    template <class T>
    T* Find(const char* name) {
        T* child = form_->findChild<T*>(name);
        EXPECT_NE(child, nullptr) << name;
        return child;
    }
    void Trigger(const char* action) { Find<QAction>(action)->trigger(); }
    QStringList Names() {
        QStringList names;
        QTreeWidget* list = Find<QTreeWidget>("script_list");
        for (int i = 0; i < list->topLevelItemCount(); ++i) names << list->topLevelItem(i)->text(0);
        return names;
    }
    void Pick(const char* name) {
        QTreeWidget* list = Find<QTreeWidget>("script_list");
        list->clearSelection();
        for (int i = 0; i < list->topLevelItemCount(); ++i)
            if (list->topLevelItem(i)->text(0) == name) {
                list->topLevelItem(i)->setSelected(true);
                list->setCurrentItem(list->topLevelItem(i));
            }
    }

    fs::path dir_, other_;
    CScript script_;
    CScriptSpace space_;
    std::unique_ptr<CFormScript> form_;
    std::vector<std::string> started_;
    CHeadlessHost host_;
    CScopedHost scope_{host_};
};

TEST_F(FormScriptTest, ListShowsColumnsAndStepsTheSizeUnit) {
    QTreeWidget* list = Find<QTreeWidget>("script_list");
    EXPECT_EQ(Names(), (QStringList{"alpha", "beta"}));
    ASSERT_EQ(list->columnCount(), 3);
    EXPECT_EQ(list->headerItem()->text(0), "script");
    EXPECT_EQ(list->headerItem()->text(1), "bytes");
    EXPECT_EQ(list->headerItem()->text(2), "1st line");
    EXPECT_EQ(list->topLevelItem(0)->text(1), "14");
    EXPECT_EQ(list->topLevelItem(0)->text(2), "a = 1;");
    emit list->header()->sectionClicked(1);
    EXPECT_EQ(list->headerItem()->text(1), "kbytes");
    EXPECT_EQ(script_.script_bytes, SCRIPT_KBYTES);
    Trigger("script_no_detail");
    EXPECT_EQ(list->columnCount(), 1);
    Trigger("script_details");
    EXPECT_EQ(list->columnCount(), 3);
}

TEST_F(FormScriptTest, CommandsChangeTheDiskAndTheList) {
    Trigger("script_new");
    EXPECT_EQ(Names(), (QStringList{".new", "alpha", "beta"}));
    EXPECT_EQ(Find<QLabel>("script_status")->text(), "new script .new");
    Pick("alpha");
    Trigger("script_duplicate");
    EXPECT_TRUE(fs::exists(dir_ / "alpha.dup"));
    EXPECT_TRUE(Names().contains("alpha.dup"));
    Pick("alpha.dup");
    host_.answer = false;
    Trigger("script_delete");
    EXPECT_TRUE(fs::exists(dir_ / "alpha.dup"));
    ASSERT_EQ(host_.questions.size(), 1u);
    EXPECT_EQ(host_.questions[0], "this deletes files from the disk\ndelete");
    host_.answer = true;
    Trigger("script_delete");
    EXPECT_FALSE(fs::exists(dir_ / "alpha.dup"));
    EXPECT_FALSE(Names().contains("alpha.dup"));
    // Edit and a double click start the editor on the file.
    Pick("beta");
    Trigger("script_edit");
    EXPECT_EQ(started_, (std::vector<std::string>{"xdg-open", (dir_ / "beta").string()}));
    started_.clear();
    QTreeWidget* list = Find<QTreeWidget>("script_list");
    emit list->itemDoubleClicked(list->currentItem(), 0);
    EXPECT_EQ(started_.size(), 2u);
    form_->start_editor = [](const std::vector<std::string>&) { return false; };
    Trigger("script_edit");
    EXPECT_EQ(form_->StatusText(), "could not start xdg-open");
    list->clearSelection();
    Trigger("script_edit");
    EXPECT_EQ(form_->StatusText(), "no script selected");
}

TEST_F(FormScriptTest, FolderComboBrowsesRemembersAndEmpties) {
    QComboBox* folders = Find<QComboBox>("script_folders");
    ASSERT_EQ(folders->count(), 3);
    EXPECT_EQ(folders->itemText(0).toStdString(), dir_.string());
    EXPECT_EQ(folders->itemText(1), "browse ...");
    EXPECT_EQ(folders->itemText(2), "---none---");
    EXPECT_EQ(folders->currentIndex(), 0);
    const QString other = QString::fromStdString(other_.string());
    form_->choose_folder = [&] { return other; };
    form_->OnFolder(1);
    EXPECT_EQ(space_.Directory(), other_.string());
    EXPECT_EQ(folders->count(), 4);
    EXPECT_EQ(folders->itemText(0), other);
    EXPECT_TRUE(Names().isEmpty());
    // Back to the first folder, then none: nothing callable.
    form_->OnFolder(1);
    EXPECT_EQ(Names(), (QStringList{"alpha", "beta"}));
    form_->OnFolder(3);
    EXPECT_EQ(space_.Directory(), "");
    EXPECT_EQ(space_.Count(), 0);
    EXPECT_EQ(folders->currentIndex(), 3);
    // A remembered folder that vanished gives a text and leaves things as they are.
    fs::remove_all(other_);
    form_->OnFolder(1);
    EXPECT_EQ(form_->StatusText().toStdString(), "script folder not found: " + other_.string());
    EXPECT_EQ(space_.Directory(), "");
}

TEST_F(FormScriptTest, AScriptSavedElsewhereIsListedAtOnce) {
    std::ofstream(dir_ / "gamma") << "g = 3;";
    EXPECT_TRUE(QTest::qWaitFor([&] { return Names().contains("gamma"); }, 3000));
    EXPECT_NE(space_.FindByName("gamma"), nullptr);
    // Written in place, as some editors save: the first line follows.
    std::ofstream(dir_ / "alpha") << "changed = 1;\n";
    QTreeWidget* list = Find<QTreeWidget>("script_list");
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return list->topLevelItem(0)->text(2) == "changed = 1;"; }, 3000));
}

TEST_F(FormScriptTest, FrameTakesAndKeepsItsPlace) {
    script_.view_script = 1;
    script_.script_loc[2] = 299;
    script_.script_loc[3] = 399;
    CFrameScript frame(script_, space_);
    EXPECT_EQ(frame.objectName(), "script_dock");
    frame.RestorePlace();
    EXPECT_TRUE(frame.isVisible());
    EXPECT_EQ(frame.size(), QSize(300, 400));
    frame.hide();
    frame.KeepPlace();
    EXPECT_EQ(script_.view_script, 0);
}

}  // namespace
