#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTreeWidget>

#include "core/data_space.h"
#include "core/host.h"
#include "core/zrk_data.h"
#include "eval/qt/form_equ.h"
#include "shell/desktop.h"
#include "shell/qt/about_wave.h"
#include "shell/qt/form_alloc.h"
#include "shell/qt/form_desktop.h"
#include "shell/qt/form_rename.h"
#include "shell/rename.h"
#include "tests/shell/gui_test_app.h"

namespace {

class FormsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        TestApp();
        space_.SetUnique();
        scope_ = std::make_unique<CScopedHost>(host_);
    }
    // The forms work on the space they are handed, never on the desktop's.
    void TearDown() override { EXPECT_EQ(GlobalDataSpace().Count(), 0); }
    template <class T>
    static T* Find(QWidget* root, const QString& name) {
        T* child = root->findChild<T*>(name);
        EXPECT_NE(child, nullptr) << name.toStdString();
        return child;
    }

    CDataSpace space_;
    CHeadlessHost host_;
    std::unique_ptr<CScopedHost> scope_;
};

TEST_F(FormsTest, AllocateFormMakesTheRowsItIsGiven) {
    CFormAlloc form(space_);
    QString status;
    QObject::connect(&form, &CFormAlloc::allocated, [&](const QString& s) { status = s; });
    Find<QLineEdit>(&form, "alloc_name0")->setText("mag");
    Find<QSpinBox>(&form, "alloc_nx0")->setValue(16);
    Find<QSpinBox>(&form, "alloc_ny0")->setValue(8);
    Find<QSpinBox>(&form, "alloc_nt0")->setValue(4);
    Find<QComboBox>(&form, "alloc_type0")->setCurrentIndex(TYPE_N2);
    Find<QLineEdit>(&form, "alloc_name2")->setText("wave");
    Find<QComboBox>(&form, "alloc_type2")->setCurrentIndex(TYPE_CR4);
    QTest::mouseClick(Find<QPushButton>(&form, "alloc_run"), Qt::LeftButton);
    EXPECT_EQ(status, "allocate successful");
    EXPECT_EQ(Find<QLabel>(&form, "alloc_status")->text(), "allocate successful");
    const CZrkData* mag = space_.FindData("mag");
    ASSERT_NE(mag, nullptr);
    EXPECT_EQ(mag->Type(), TYPE_N2);
    EXPECT_EQ(mag->nx * mag->ny * mag->nz * mag->nt, 16u * 8u * 4u);
    const CZrkData* wave = space_.FindData("wave");
    ASSERT_NE(wave, nullptr);
    EXPECT_EQ(wave->Type(), TYPE_CR4);
    EXPECT_EQ(space_.Count(), 2);
}

TEST_F(FormsTest, RenameFormReportsInItsOwnField) {
    space_.NewData(TYPE_R4, 2, 1, 1, 1, 1, 1, "old");
    CRename rename;
    rename.old_name = "old";
    CFormRename form(space_, rename);
    EXPECT_EQ(Find<QLineEdit>(&form, "rename_old")->text(), "old");
    Find<QLineEdit>(&form, "rename_new")->setText("9lives");
    QTest::mouseClick(Find<QPushButton>(&form, "rename_run"), Qt::LeftButton);
    EXPECT_EQ(Find<QLabel>(&form, "rename_status")->text(), "invalid name");
    Find<QLineEdit>(&form, "rename_new")->setText("fresh");
    QTest::mouseClick(Find<QPushButton>(&form, "rename_run"), Qt::LeftButton);
    EXPECT_EQ(Find<QLabel>(&form, "rename_status")->text(), "rename successful");
    EXPECT_NE(space_.FindData("fresh"), nullptr);
    EXPECT_EQ(space_.FindData("old"), nullptr);
}

TEST_F(FormsTest, EquationFormSeesThisAndShowsItsReport) {
    CZrkData* a = space_.NewData(TYPE_R4, 3, 1, 1, 1, 1, 1, "a");
    float* v = static_cast<float*>(a->Data());
    v[0] = 1, v[1] = 2, v[2] = 3;
    CFormEqu form(space_);
    Find<QLineEdit>(&form, "form_equ_this")->setText("a");
    Find<QCheckBox>(&form, "form_equ_update_range")->setChecked(true);
    Find<QPlainTextEdit>(&form, "form_equ_edit")->setPlainText("d = this * 2");
    QTest::mouseClick(Find<QPushButton>(&form, "form_equ_eval"), Qt::LeftButton);
    EXPECT_EQ(Find<QLabel>(&form, "form_equ_report")->text(), "");
    const CZrkData* d = space_.FindData("d");
    ASSERT_NE(d, nullptr);
    ASSERT_EQ(d->Count(), 3u);
    EXPECT_FLOAT_EQ(static_cast<const float*>(d->Data())[2], 6.0f);
    EXPECT_TRUE(d->update_range);
    // The alias lived for the one run only.
    EXPECT_EQ(space_.FindData("this"), nullptr);
    ASSERT_FALSE(host_.history.empty());
    EXPECT_EQ(host_.history.back(), "d = this * 2\r\n");

    Find<QPlainTextEdit>(&form, "form_equ_edit")->setPlainText("d = (");
    QTest::mouseClick(Find<QPushButton>(&form, "form_equ_eval"), Qt::LeftButton);
    EXPECT_TRUE(Find<QLabel>(&form, "form_equ_report")->text().contains("returned '"));
    EXPECT_EQ(Find<QPlainTextEdit>(&form, "form_equ_edit")->toPlainText(), "d = (");
}

// The desktop keeps its rows from one refresh to the next and rewrites what changed: names
// that move up a row, a reserved row's grey that must not stay behind on the row taking its
// place, the picks, the sizes, and the columns of the details mode.
TEST_F(FormsTest, DesktopRowsFollowEveryChange) {
    CDesktop desk;
    CRename rename;
    CFormDesktop form(space_, desk, rename);
    auto* list = Find<QTreeWidget>(&form, "desktop_list");
    const auto rows = [&] {
        QStringList names;
        for (int i = 0; i < list->topLevelItemCount(); ++i) names << list->topLevelItem(i)->text(0);
        return names;
    };
    space_.NewData(TYPE_R4, 2, 1, 1, 1, 1, 1, "a");
    space_.NewData(TYPE_R4, 3, 1, 1, 1, 1, 1, "b");
    space_.NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, "pi");
    space_.NewData(TYPE_R4, 2, 1, 1, 1, 1, 1, "roi_x");  // hidden
    form.Refresh();
    ASSERT_EQ(rows(), (QStringList{"a", "b", "pi"}));
    EXPECT_TRUE(list->topLevelItem(2)->data(0, Qt::ForegroundRole).isValid());
    EXPECT_FALSE(list->topLevelItem(0)->data(0, Qt::ForegroundRole).isValid());

    space_.DelData("a");
    space_.DelData("pi");
    space_.FindData("b")->select |= kDesktopSelect;
    space_.NewData(TYPE_CR4, 4, 5, 1, 1, 1, 1, "q");
    form.Refresh();
    ASSERT_EQ(rows(), (QStringList{"b", "q"}));
    EXPECT_EQ(list->topLevelItem(0)->text(1), "3x1x1x1");
    EXPECT_EQ(list->topLevelItem(1)->text(1), "4x5x1x1");
    EXPECT_TRUE(list->topLevelItem(0)->isSelected());
    EXPECT_FALSE(list->topLevelItem(1)->isSelected());
    EXPECT_FALSE(list->topLevelItem(1)->data(0, Qt::ForegroundRole).isValid());
    // The pick is taken back on the list when the record loses it.
    space_.FindData("b")->select = 0;
    form.Refresh();
    EXPECT_TRUE(list->selectedItems().isEmpty());

    desk.desktop_details = 0;
    form.Refresh();
    EXPECT_EQ(list->columnCount(), 1);
    EXPECT_EQ(list->topLevelItem(1)->text(1), "");
    EXPECT_EQ(Find<QLabel>(&form, "desktop_bytes")->text(),
              QString::fromStdString(desk.ByteLine(space_)));
    for (const char* name : {"b", "q", "roi_x"}) space_.DelData(name);
}

TEST_F(FormsTest, AboutDialogAnimatesThirtyTwoFrames) {
    const QImage first = CAboutWave::DrawFrame(0, 64, 48);
    EXPECT_NE(first, CAboutWave::DrawFrame(1, 64, 48));
    EXPECT_NE(first, CAboutWave::DrawFrame(16, 64, 48));
    CAboutWave about;
    EXPECT_EQ(about.Timer().interval(), 75);
    EXPECT_TRUE(about.Timer().isActive());
    QTest::qWait(260);
    EXPECT_GE(about.Frame(), 2);
    EXPECT_LT(about.Frame(), CAboutWave::kFrames);
}

}  // namespace
