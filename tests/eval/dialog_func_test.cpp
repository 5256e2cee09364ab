// The function browser dialog and the equation bar's button that opens it, offscreen.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

#include "core/data_space.h"
#include "eval/function_browser.h"
#include "eval/qt/bar_equ.h"
#include "eval/qt/dialog_func.h"
#include "ops/function_rows.h"
#include "tests/shell/gui_test_app.h"

namespace {

class DialogFuncTest : public ::testing::Test {
  protected:
    void SetUp() override {
        TestApp();
        InstallFunctions();
    }
    template <class T>
    static T* Find(QWidget* root, const char* name) {
        T* child = root->findChild<T*>(name);
        EXPECT_NE(child, nullptr) << name;
        return child;
    }
};

TEST_F(DialogFuncTest, ListsRowsWithTitlesAndShowsHelpOnSelection) {
    CDialogFunc dialog;
    QTreeWidget* list = Find<QTreeWidget>(&dialog, "func_list");
    EXPECT_EQ(list->headerItem()->text(0), "function");
    EXPECT_EQ(list->headerItem()->text(1), "description");
    const CFunctionBrowser browser;
    ASSERT_EQ(list->topLevelItemCount(), static_cast<int>(browser.Rows().size()));
    EXPECT_EQ(list->topLevelItem(0)->text(0), "=");
    ASSERT_TRUE(dialog.Select("tile"));
    EXPECT_EQ(list->currentItem()->text(1), "tile: resize data set");
    const QString help = Find<QPlainTextEdit>(&dialog, "func_help")->toPlainText();
    EXPECT_TRUE(help.startsWith("tile: resize data set\n"));
    EXPECT_TRUE(help.contains("data\tinput data array"));
    EXPECT_TRUE(help.contains("SEE ALSO: pad, padsim"));
    EXPECT_EQ(Find<QListWidget>(&dialog, "func_variants")->count(), 0);
    EXPECT_FALSE(dialog.Select("ftz"));  // variants are not rows of the list
}

TEST_F(DialogFuncTest, InsertGivesTheGeneralNameOrThePickedVariant) {
    {
        CDialogFunc dialog;
        ASSERT_TRUE(dialog.Select("ft"));
        QListWidget* variants = Find<QListWidget>(&dialog, "func_variants");
        ASSERT_EQ(variants->count(), 5);
        EXPECT_EQ(variants->item(3)->text(), "z direction");
        variants->setCurrentRow(3);
        QTest::mouseClick(Find<QPushButton>(&dialog, "func_insert"), Qt::LeftButton);
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        EXPECT_EQ(dialog.Chosen(), "ftz");
    }
    {
        CDialogFunc dialog;
        ASSERT_TRUE(dialog.Select("clip"));
        QTreeWidget* list = Find<QTreeWidget>(&dialog, "func_list");
        emit list->itemDoubleClicked(list->currentItem(), 0);
        EXPECT_EQ(dialog.Chosen(), "clip");
    }
    {
        CDialogFunc dialog;
        QTest::mouseClick(Find<QPushButton>(&dialog, "func_close"), Qt::LeftButton);
        EXPECT_EQ(dialog.result(), QDialog::Rejected);
        EXPECT_TRUE(dialog.Chosen().isEmpty());
    }
}

TEST_F(DialogFuncTest, BarButtonPutsTheChosenNameAtTheCursor) {
    CDataSpace space;
    CBarEqu bar(space);
    QLineEdit* edit = bar.Edit();
    edit->setText("b = (a)");
    edit->setCursorPosition(4);
    bool seen = false;
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<CDialogFunc*>(QApplication::activeModalWidget());
        seen = dialog != nullptr;
        if (!dialog) return;
        dialog->Select("thresh");
        QTest::mouseClick(Find<QPushButton>(dialog, "func_insert"), Qt::LeftButton);
    });
    QTest::mouseClick(Find<QToolButton>(&bar, "equation_functions"), Qt::LeftButton);
    EXPECT_TRUE(seen);
    EXPECT_EQ(edit->text(), "b = thresh(a)");
}

}  // namespace
